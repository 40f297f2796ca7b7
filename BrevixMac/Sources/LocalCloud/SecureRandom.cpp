// SPDX-License-Identifier: GPL-3.0-or-later
#include "SecureRandom.h"

#include <QMessageAuthenticationCode>
#include <QRandomGenerator>

namespace Cloud {

QByteArray secureRandomBytes(qsizetype count)
{
    QByteArray bytes(count, Qt::Uninitialized);
    for (char &byte : bytes)
        byte = char(QRandomGenerator::system()->generate() & 0xff);
    return bytes;
}

QString randomIdentifier(qsizetype size)
{
    static constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    QString identifier(size, Qt::Uninitialized);
    for (QChar &character : identifier)
        character = QLatin1Char(alphabet[QRandomGenerator::system()->bounded(int(sizeof alphabet - 1))]);
    return identifier;
}

QByteArray derivedKey(const QByteArray &key, const QByteArray &purpose)
{
    return QMessageAuthenticationCode::hash(purpose, key, QCryptographicHash::Sha256);
}

QByteArray base64Url(const QByteArray &bytes)
{
    return bytes.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals);
}

bool equalInConstantTime(QByteArrayView left, QByteArrayView right)
{
    if (left.size() != right.size())
        return false;
    unsigned char difference = 0;
    for (qsizetype i = 0; i < left.size(); ++i)
        difference |= static_cast<unsigned char>(left[i] ^ right[i]);
    return difference == 0;
}

} // namespace Cloud
