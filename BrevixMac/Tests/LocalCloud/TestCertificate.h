// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFile>
#include <QProcess>

/// Writes a fresh self-signed certificate of localhost and its private key. False without the openssl
/// program.
inline bool makeTestCertificate(const QString &certificateFile, const QString &keyFile)
{
    QProcess process;
    process.start(QStringLiteral("openssl"),
                  {QStringLiteral("req"), QStringLiteral("-x509"), QStringLiteral("-newkey"),
                   QStringLiteral("ec"), QStringLiteral("-pkeyopt"),
                   QStringLiteral("ec_paramgen_curve:prime256v1"), QStringLiteral("-nodes"),
                   QStringLiteral("-subj"), QStringLiteral("/CN=localhost"), QStringLiteral("-keyout"),
                   keyFile, QStringLiteral("-out"), certificateFile});
    return process.waitForStarted() && process.waitForFinished() && process.exitCode() == 0 &&
           QFile::setPermissions(keyFile, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
}
