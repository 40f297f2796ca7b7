// SPDX-License-Identifier: GPL-3.0-or-later
#include "SkillImport.h"

#include "Foundation/Text.h"

#include <QMimeData>
#include <QMimeDatabase>
#include <QUrl>

namespace {

const QString plainText = QStringLiteral("text/plain");
const QString anyText = QStringLiteral("text/*");

bool isHeadingMark(QChar character)
{
    return character == u'#' || character == u' ';
}

QString heading(const QString &line)
{
    QStringView rest(line);
    while (!rest.isEmpty() && isHeadingMark(rest.front()))
        rest = rest.sliced(1);
    while (!rest.isEmpty() && isHeadingMark(rest.back()))
        rest.chop(1);
    return Text::trimmed(rest);
}

} // namespace

QStringList SkillImport::skillImportTypes()
{
    QStringList types{plainText, anyText};
    const QList<QMimeType> markdown = QMimeDatabase().mimeTypesForFileName(QStringLiteral("x.md"));
    if (!markdown.isEmpty())
        types.append(markdown.first().name());
    return types;
}

QStringList SkillImport::nameFilters()
{
    const QStringList types = skillImportTypes();
    QStringList patterns{QStringLiteral("*.txt"), QStringLiteral("*.md")};
    const QList<QMimeType> known = QMimeDatabase().allMimeTypes();
    for (const QMimeType &type : known) {
        if (types.contains(type.name()) || type.name().startsWith(u"text/"))
            patterns.append(type.globPatterns());
    }
    patterns.removeDuplicates();
    return {QStringLiteral("Text and Markdown files (%1)").arg(patterns.join(u' ')),
            QStringLiteral("All files (*)")};
}

QString SkillImport::suggestedTitle(const QString &text, const QString &fallback)
{
    qsizetype start = 0;
    while (start < text.size()) {
        qsizetype end = text.indexOf(u'\n', start);
        if (end < 0)
            end = text.size();
        const QString line = Text::trimmed(QStringView(text).sliced(start, end - start));
        if (line.startsWith(u'#')) {
            const QString title = heading(line);
            return title.isEmpty() ? fallback : title;
        }
        start = end + 1;
    }
    return fallback;
}

std::optional<QString> SkillImport::localFile(const QMimeData &data)
{
    if (!data.hasUrls())
        return std::nullopt;
    const QList<QUrl> urls = data.urls();
    for (const QUrl &url : urls) {
        const QString path = url.isLocalFile() ? url.toLocalFile() : QString();
        if (!path.isEmpty())
            return path;
    }
    return std::nullopt;
}
