// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

namespace Cloud {

/// The folder with the server's files, readable by its owner alone. Any thread.
class DataFolder
{
public:
    static constexpr qsizetype signingKeySize = 32;

    explicit DataFolder(QString path);

    /// Creates what is missing (folder 0700, key file 0600) and reads the key. False when the folder cannot
    /// be used, also because it holds something else, which is then left as it is; errorString() says why.
    bool prepare();

    QString databasePath() const;

    /// The key that signs ID tokens; lasts across restarts.
    const QByteArray &signingKey() const { return m_signingKey; }
    const QString &errorString() const { return m_errorString; }

private:
    QString signingKeyPath() const;
    bool createFolder();
    bool readSigningKey();
    bool createSigningKey();
    bool fail(const QString &reason);

    QString m_path;
    QByteArray m_signingKey;
    QString m_errorString;
};

} // namespace Cloud
