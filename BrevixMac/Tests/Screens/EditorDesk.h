// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Support/AppBench.h"

/// The bench with a signed-in user and two categories: everything an editor needs.
class EditorDesk : public AppBench
{
public:
    EditorDesk();

    /// Makes the state and waits for the library when somebody is signed in. Starting again is starting the
    /// program again: what is on disk stays.
    void start();

    /// An account signs in.
    void signInAs(const QString &id);

    std::optional<QString> userID = QStringLiteral("user");

    QString draftFolder() const { return folder.filePath(QStringLiteral("drafts")); }
    QString write(const QString &name, const QByteArray &bytes) const;
};
