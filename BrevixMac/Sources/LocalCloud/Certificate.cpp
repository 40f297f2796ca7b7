// SPDX-License-Identifier: GPL-3.0-or-later
#include "Certificate.h"

#include <QFile>
#include <QSslCertificate>
#include <QSslKey>
#include <QSslSocket>

#include <memory>
#include <openssl/x509.h>

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

/// Whether @p key is the private half of the key in @p certificate.
bool belongTogether(const QSslCertificate &certificate, const QSslKey &key)
{
    const QByteArray certificateBytes = certificate.toDer();
    const QByteArray keyBytes = key.toDer();
    const auto *first = reinterpret_cast<const unsigned char *>(certificateBytes.constData());
    const std::unique_ptr<X509, decltype(&X509_free)> x509(
        d2i_X509(nullptr, &first, long(certificateBytes.size())), &X509_free);
    first = reinterpret_cast<const unsigned char *>(keyBytes.constData());
    const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> pkey(
        d2i_AutoPrivateKey(nullptr, &first, long(keyBytes.size())), &EVP_PKEY_free);
    return x509 && pkey && X509_check_private_key(x509.get(), pkey.get()) == 1;
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
    else if (!belongTogether(chain.constFirst(), key))
        problem = QStringLiteral("The private key \"%1\" does not belong to the first certificate in \"%2\".")
                      .arg(keyFile, certificateFile);
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
