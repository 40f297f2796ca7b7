// SPDX-License-Identifier: GPL-3.0-or-later
#include "FuzzTarget.h"

#include "SkillFileReader.h"
#include "SkillImport.h"

#include "Foundation/Text.h"

#include <QFile>
#include <QMimeData>
#include <QTemporaryDir>

namespace {

const QString fallback = QStringLiteral("fallback");

SkillFileReader::Result stored(const QByteArray &bytes)
{
    static const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("skill.md"));
    QFile file(path);
    require(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size(),
            "the test can write its file");
    file.close();
    return SkillFileReader::readFile(path, std::atomic<bool>(false));
}

void requireTitle(const QString &title)
{
    require(!title.isEmpty(), "a title has characters");
    require(!title.contains(u'\n'), "a title is one line");
    require(title == Text::trimmed(title), "a title has no blanks at its ends");
}

} // namespace

/// Once as the content of a file, once as what another program drags along.
void readForeignBytes(const QByteArray &bytes)
{
    QMimeData dragged;
    dragged.setData(QStringLiteral("text/uri-list"), bytes);
    if (const auto path = SkillImport::localFile(dragged))
        require(!path->isEmpty(), "a dragged file has a path");

    const SkillFileReader::Result result = stored(bytes);
    const SkillFile &file = result.file;
    require(file.text.isEmpty() == !result.problem.isEmpty(), "a file is read or refused");
    if (!result.problem.isEmpty())
        return;
    require(!file.text.contains(u'\r') && !file.text.contains(QChar(u'\0')),
            "lines are divided by line feeds alone");
    require(file.words >= 0 && file.lines >= 0 && file.lines <= file.text.count(u'\n') + 1 &&
                file.words <= file.text.size(),
            "there are no more words and lines than the text can hold");
    requireTitle(SkillImport::suggestedTitle(file.text, fallback));
    // A second mark at the beginning is a character of the text and would go the second time.
    if (!file.text.startsWith(QChar::ByteOrderMark))
        require(stored(file.text.toUtf8()).file == file, "a text that was read reads the same when saved");
}
