// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClipboardTest.h"

#include "Support/Waiting.h"

#include <QFile>

#include <ostream>

void PrintTo(const SeenType &seen, std::ostream *out)
{
    *out << qPrintable(seen.name) << " " << qPrintable(seen.type) << " " << seen.format << " "
         << seen.bytes.size() << " bytes: " << seen.bytes.left(40).toHex().constData();
}

void ClipboardTest::SetUp()
{
    ASSERT_TRUE(m_observer.isValid());
    for (const char *name : {"CLIPBOARD", "PRIMARY"}) {
        const auto time = m_observer.serverTime();
        xcb_set_selection_owner(m_observer.connection(), XCB_WINDOW_NONE, m_observer.atom(name), time);
    }
    m_observer.sync();
}

QString ClipboardTest::peerPath()
{
    return QStringLiteral(CLIPBOARD_PEER);
}

QString ClipboardTest::script(const QString &name)
{
    return QStringLiteral(CLIPBOARD_SCRIPTS "/") + name;
}

std::unique_ptr<Program> ClipboardTest::peer(const QStringList &arguments)
{
    return std::make_unique<Program>(peerPath(), arguments);
}

std::unique_ptr<Program> ClipboardTest::owner(const QString &selection, const QList<SeenType> &types,
                                              const QString &mode)
{
    QStringList arguments{QStringLiteral("own"), selection};
    if (!mode.isEmpty())
        arguments.append(mode);
    for (const SeenType &type : types) {
        QFile file(m_folder.filePath(QString::number(++m_files)));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(type.bytes);
        arguments.append({type.name, type.type, QString::number(type.format), file.fileName()});
    }
    auto program = peer(arguments);
    EXPECT_TRUE(program->says(QStringLiteral("owning")));
    return program;
}

std::optional<SeenType> ClipboardTest::seen(const QString &selection, const QString &target,
                                            const QStringList &options)
{
    QFile file(m_folder.filePath(QString::number(++m_files)));
    const auto answer = QString::fromUtf8(outputOf(
        peerPath(), QStringList{QStringLiteral("read"), selection, target, file.fileName()} + options));
    const QStringList words = answer.trimmed().split(u' ');
    if (words.size() < 3 || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return SeenType{target, words.mid(0, words.size() - 2).join(u' '), words.at(words.size() - 2).toInt(),
                    file.readAll()};
}

QString ClipboardTest::pasted(const QString &selection)
{
    return QString::fromUtf8(
        outputOf(QStringLiteral("xclip"), {QStringLiteral("-o"), QStringLiteral("-selection"), selection,
                                           QStringLiteral("-t"), QStringLiteral("UTF8_STRING")}));
}

xcb_window_t ClipboardTest::ownerWindow(const char *selection)
{
    auto *xcb = m_observer.connection();
    const auto cookie = xcb_get_selection_owner(xcb, m_observer.atom(selection));
    const XcbPointer<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(xcb, cookie, nullptr));
    return reply ? reply->owner : xcb_window_t(XCB_WINDOW_NONE);
}

QStringList ClipboardTest::offered(const QString &selection)
{
    const auto targets = seen(selection, QStringLiteral("TARGETS"));
    QStringList names;
    const QStringList protocol{QStringLiteral("TARGETS"), QStringLiteral("TIMESTAMP"),
                               QStringLiteral("MULTIPLE"), QStringLiteral("SAVE_TARGETS")};
    for (qsizetype offset = 0; targets && offset < targets->bytes.size(); offset += 4) {
        xcb_atom_t atom = 0;
        std::memcpy(&atom, targets->bytes.constData() + offset, sizeof atom);
        const QString name = QString::fromLatin1(m_observer.atomName(atom));
        if (!protocol.contains(name))
            names.append(name);
    }
    return names;
}

std::unique_ptr<Program> ClipboardTest::copy(const QString &text, const QString &selection)
{
    auto program = std::make_unique<Program>(
        QStringLiteral("xclip"),
        QStringList{QStringLiteral("-i"), QStringLiteral("-quiet"), QStringLiteral("-selection"), selection});
    program->write(text.toUtf8());
    EXPECT_TRUE(waitUntil([&] { return pasted(selection) == text; }));
    return program;
}

QByteArray ClipboardTest::pattern(qsizetype size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    quint32 state = 12345;
    for (char &byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = char(state >> 24);
    }
    return bytes;
}

SeenType ClipboardTest::text(const QString &text)
{
    return {QStringLiteral("UTF8_STRING"), QStringLiteral("UTF8_STRING"), 8, text.toUtf8()};
}
