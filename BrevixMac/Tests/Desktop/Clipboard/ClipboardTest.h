// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/Pasteboard.h"
#include "Desktop/X11/X11Connection.h"
#include "Program.h"

#include <QList>
#include <QString>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>
#include <optional>

/// One type of a selection as another client sees it.
struct SeenType
{
    QString name;
    QString type;
    int format = 8;
    QByteArray bytes;

    bool operator==(const SeenType &) const = default;
};
void PrintTo(const SeenType &seen, std::ostream *out);

/// A display whose selections are empty at the start of each test, with other programs to own and to read
/// them.
class ClipboardTest : public testing::Test
{
protected:
    void SetUp() override;

    /// A program that owns @p selection with @p types and serves them by the book.
    std::unique_ptr<Program> owner(const QString &selection, const QList<SeenType> &types,
                                   const QString &mode = {});
    static std::unique_ptr<Program> peer(const QStringList &arguments);
    static QString peerPath();
    static QString script(const QString &name);

    /// What another program gets when it asks for @p target; nothing when it is refused.
    std::optional<SeenType> seen(const QString &selection, const QString &target,
                                 const QStringList &options = {});
    /// The text that xclip reads; nothing when there is none.
    static QString pasted(const QString &selection = QStringLiteral("clipboard"));
    bool hasOwner(const char *selection = "CLIPBOARD") { return ownerWindow(selection) != XCB_WINDOW_NONE; }
    xcb_window_t ownerWindow(const char *selection);
    /// The data targets that are offered, in order.
    QStringList offered(const QString &selection = QStringLiteral("CLIPBOARD"));
    /// Copies @p text with xclip, which stays to serve it.
    static std::unique_ptr<Program> copy(const QString &text,
                                         const QString &selection = QStringLiteral("clipboard"));

    static QByteArray pattern(qsizetype size);
    static SeenType text(const QString &text);

    QTemporaryDir m_folder;
    X11Connection m_observer;
    int m_files = 0;
};
