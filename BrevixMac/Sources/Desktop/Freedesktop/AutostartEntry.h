// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/LoginItem.h"

#include <QStringList>

/// The login item as an autostart entry, which every free desktop starts at login. A user's own entry goes
/// before one of the system's; an entry that is marked as hidden, or that names a program that is gone,
/// starts nothing.
class AutostartEntry final : public LoginItem
{
public:
    struct Application
    {
        QString id; ///< the desktop entry's name without ".desktop"
        QString name;
        QString comment;
        QString program; ///< absolute path
        QStringList arguments;
    };

    /// Of the session's own folders.
    explicit AutostartEntry(Application application);

    /// @p userFolder is where entries are written; @p systemFolders are looked at behind it, in their order.
    AutostartEntry(Application application, const QString &userFolder, const QStringList &systemFolders);

    bool isEnabled() const override;
    std::optional<QString> setEnabled(bool enabled) override;

    QString filePath() const { return m_userFile; }

    /// One argument of an entry's Exec line, quoted and escaped by that line's rules.
    static QString quoted(const QString &argument);

private:
    QByteArray content() const;
    std::optional<QString> write(const QByteArray &content) const;
    std::optional<QString> disable() const;
    bool hasSystemEntry() const;

    Application m_application;
    QString m_userFile;
    QStringList m_systemFiles;
};
