// SPDX-License-Identifier: GPL-3.0-or-later
#include "FuzzTarget.h"

#include "BrevixMac/AuthService.h"
#include "BrevixMac/EditorDraft.h"
#include "BrevixMac/RecentUsageStore.h"
#include "Foundation/UserDefaults.h"

#include <QTemporaryDir>

void readForeignBytes(const QByteArray &bytes)
{
    if (const auto session = StoredAuthSession::fromJson(bytes)) {
        const auto again = StoredAuthSession::fromJson(session->toJson());
        require(again.has_value(), "a stored session that was read can be written and read again");
        require(again->user() == session->user() && again->refreshToken == session->refreshToken,
                "writing a session changes nothing of it");
    }

    if (const auto draft = EditorDraft::fromJson(bytes))
        require(EditorDraft::fromJson(draft->toJson()) == draft, "writing a draft changes nothing of it");

    static const QTemporaryDir folder;
    UserDefaults defaults(folder.filePath(QStringLiteral("recents.plist")));
    defaults.setData(QStringLiteral("recentPromptRecords"), bytes);
    defaults.setData(QStringLiteral("recentSkillRecords"), bytes);
    const RecentUsageStore recents(defaults);
    require(recents.recentIDs().size() == recents.recents().size(), "every recent record has its identifier");
}
