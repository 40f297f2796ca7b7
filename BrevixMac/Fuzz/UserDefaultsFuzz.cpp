// SPDX-License-Identifier: GPL-3.0-or-later
#include "FuzzTarget.h"

#include "BrevixMac/PreferenceStore.h"
#include "BrevixMac/RecentUsageStore.h"
#include "Foundation/UserDefaults.h"

#include <QFile>
#include <QTemporaryDir>

namespace {

void store(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    require(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size(),
            "the test can write its file");
}

} // namespace

void readForeignBytes(const QByteArray &bytes)
{
    static const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("defaults.plist"));
    store(path, bytes);
    UserDefaults defaults(path);
    if (!defaults.damagedFilePath().isEmpty()) {
        QFile kept(defaults.damagedFilePath());
        require(kept.open(QIODevice::ReadOnly) && kept.readAll() == bytes,
                "a damaged file is kept aside as it was");
        kept.remove();
    }
    const PreferenceStore preferences(defaults);
    RecentUsageStore recents(defaults);
    PromptItem prompt;
    prompt.id = QStringLiteral("fuzz");
    recents.record(prompt, std::nullopt);
    require(recents.recents().size() <= RecentUsageStore::cap, "the list of recent prompts stays capped");

    defaults.waitForWrites();
    UserDefaults reread(path);
    const RecentUsageStore rereadRecents(reread);
    require(reread.damagedFilePath().isEmpty(), "a file that was written is sound");
    require(rereadRecents.recentIDs() == recents.recentIDs(), "recent prompts survive a restart");
}
