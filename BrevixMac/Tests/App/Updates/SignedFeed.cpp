// SPDX-License-Identifier: GPL-3.0-or-later
#include "SignedFeed.h"

#include <sodium.h>

namespace {

unsigned char *bytes(QByteArray &array)
{
    return reinterpret_cast<unsigned char *>(array.data());
}

} // namespace

FeedSigner::FeedSigner(char seed)
    : m_publicKey(crypto_sign_PUBLICKEYBYTES, '\0')
    , m_secretKey(crypto_sign_SECRETKEYBYTES, '\0')
{
    if (sodium_init() < 0)
        qFatal("libsodium cannot be used");
    QByteArray seedBytes(crypto_sign_SEEDBYTES, seed);
    crypto_sign_seed_keypair(bytes(m_publicKey), bytes(m_secretKey), bytes(seedBytes));
}

QByteArray FeedSigner::sign(const QByteArray &content) const
{
    QByteArray signature(crypto_sign_BYTES, '\0');
    crypto_sign_detached(bytes(signature), nullptr,
                         reinterpret_cast<const unsigned char *>(content.constData()),
                         static_cast<unsigned long long>(content.size()),
                         reinterpret_cast<const unsigned char *>(m_secretKey.constData()));
    return "brevix-feed-1 " + signature.toBase64() + '\n' + content;
}

QByteArray FeedSigner::content(const QByteArray &version, const QByteArray &published)
{
    return "{\"format\":1,\"published\":\"" + published + "\",\"releases\":[{\"version\":\"" + version +
           "\",\"page\":\"https://brevix.example/releases/" + version + "\"}]}";
}

QByteArray FeedSigner::feed(const QByteArray &version, const QByteArray &published) const
{
    return sign(content(version, published));
}
