// SPDX-License-Identifier: GPL-3.0-or-later
#include "Certificate.h"

#include <QFile>
#include <QSslCertificate>
#include <QSslKey>
#include <QSslSocket>

namespace Cloud::Certificate {

namespace {

QSslKey readKey(const QByteArray &pem)
{
    for (const QSsl::KeyAlgorithm algorithm : {QSsl::Rsa, QSsl::Ec}) {
        QSslKey key(pem, algorithm, QSsl::Pem, QSsl::PrivateKey);
        if (!key.isNull())
            return key;
    }
    return {};
}

} // namespace

std::optional<QSslConfiguration> read(const QString &certificateFile, const QString &keyFile,
                                      QString &problem)
{
    const QList<QSslCertificate> chain = QSslCertificate::fromPath(certificateFile, QSsl::Pem);
    QFile file(keyFile);
    const bool isOpen = file.open(QIODevice::ReadOnly);
    const QSslKey key = isOpen ? readKey(file.readAll()) : QSslKey();
    if (chain.isEmpty())
        problem = QStringLiteral("\"%1\" holds no certificate in PEM form.").arg(certificateFile);
    else if (key.isNull())
        problem = QStringLiteral("\"%1\" holds no private key in PEM form that can be read.").arg(keyFile);
    else if (file.permissions() & (QFileDevice::ReadOther | QFileDevice::WriteOther))
        problem = QStringLiteral("The private key \"%1\" must not be readable by everybody.").arg(keyFile);
    if (!problem.isEmpty())
        return std::nullopt;
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificateChain(chain);
    configuration.setPrivateKey(key);
    configuration.setProtocol(QSsl::TlsV1_2OrLater);
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone); // clients show a password, not a certificate
    return configuration;
}

} // namespace Cloud::Certificate
