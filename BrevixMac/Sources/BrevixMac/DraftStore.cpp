// SPDX-License-Identifier: GPL-3.0-or-later
#include "DraftStore.h"

#include "Foundation/PrivateFile.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>

namespace {

Q_LOGGING_CATEGORY(lcDrafts, "brevix.drafts")

// JSON spends up to six bytes on a UTF-16 unit.
constexpr qint64 largestFile = 6 * DraftStore::maximumLength + 4096;

QString formName(DraftStore::Form form)
{
    switch (form) {
    case DraftStore::Form::menuBarPrompt:
        return QStringLiteral("menu-bar-prompt");
    case DraftStore::Form::promptWindow:
        return QStringLiteral("prompt-window");
    case DraftStore::Form::skill:
        return QStringLiteral("skill");
    }
    return {};
}

/// An account's part of a file name. A digest, because an identifier may hold any character.
QString accountName(const QString &userID)
{
    if (userID.isEmpty())
        return QStringLiteral("signed-out");
    const QByteArray digest = QCryptographicHash::hash(userID.toUtf8(), QCryptographicHash::Sha256);
    return QString::fromLatin1(digest.toHex().first(24));
}

void setAside(const QString &path)
{
    const QString aside = path + QStringLiteral(".damaged");
    QFile::remove(aside);
    if (QFile::rename(path, aside))
        qCWarning(lcDrafts, "the draft %ls cannot be read and is kept as %ls", qUtf16Printable(path),
                  qUtf16Printable(aside));
    else
        qCWarning(lcDrafts, "the draft %ls cannot be read, nor kept aside", qUtf16Printable(path));
}

void writeOrRemove(const QString &path, const std::optional<EditorDraft> &draft)
{
    if (!draft) {
        if (!QFile::remove(path) && QFileInfo::exists(path))
            qCWarning(lcDrafts, "the draft %ls cannot be removed", qUtf16Printable(path));
        return;
    }
    if (const auto problem = PrivateFile::write(path, draft->toJson()))
        qCWarning(lcDrafts, "the draft %ls cannot be written: %ls", qUtf16Printable(path),
                  qUtf16Printable(*problem));
}

} // namespace

DraftStore::DraftStore(QString folder)
    : m_folder(std::move(folder))
{
}

QString DraftStore::filePath(const Key &key) const
{
    const QString place = key.place == Place::current ? QString() : QStringLiteral("-cancelled");
    return m_folder + u'/' + formName(key.form) + place + u'-' + accountName(key.userID) + u".json";
}

std::optional<EditorDraft> DraftStore::draft(const Key &key)
{
    const QString path = filePath(key);
    const auto known = m_known.constFind(path);
    if (known != m_known.constEnd())
        return *known;
    Content content = read(path);
    m_known.insert(path, content);
    return content;
}

DraftStore::Content DraftStore::read(const QString &path) const
{
    // Anything but a plain file could make the main thread wait.
    const QFileInfo info(path);
    if (!info.isFile())
        return std::nullopt;
    QFile file(path);
    if (info.size() <= largestFile && file.open(QIODevice::ReadOnly)) {
        if (auto draft = EditorDraft::fromJson(file.read(largestFile)))
            return draft;
    }
    file.close();
    setAside(path);
    return std::nullopt;
}

bool DraftStore::store(const Key &key, const EditorDraft &draft)
{
    if (draft.length() > maximumLength)
        return false;
    keep(key, draft.isBlank() ? Content() : draft);
    return true;
}

void DraftStore::remove(const Key &key)
{
    keep(key, std::nullopt);
}

void DraftStore::keep(const Key &key, const Content &content)
{
    const QString path = filePath(key);
    const auto known = m_known.constFind(path);
    if (known != m_known.constEnd() && *known == content)
        return;
    m_known.insert(path, content);
    m_writer.schedule(path, [path, content] { writeOrRemove(path, content); });
}

void DraftStore::waitForWrites()
{
    m_writer.waitForWrites();
}
