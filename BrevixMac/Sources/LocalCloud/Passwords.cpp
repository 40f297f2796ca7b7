// SPDX-License-Identifier: GPL-3.0-or-later
#include "Passwords.h"

#include "SecureRandom.h"

#include "Foundation/PoolJob.h"

#include <QMetaObject>

#include <sodium.h>
#include <utility>

namespace Cloud {

namespace {

constexpr qsizetype shortestPassword = 10; // characters

/// The library's cost for sign-ins: 64 MiB and two passes.
constexpr auto passes = crypto_pwhash_OPSLIMIT_INTERACTIVE;
constexpr auto memory = crypto_pwhash_MEMLIMIT_INTERACTIVE;

bool prepareLibrary()
{
    static const bool isReady = sodium_init() >= 0;
    return isReady;
}

bool isPasswordOf(const QByteArray &hash, const QString &password)
{
    const QByteArray bytes = password.normalized(QString::NormalizationForm_C).toUtf8();
    return prepareLibrary() && hash.size() < qsizetype(crypto_pwhash_STRBYTES) &&
           crypto_pwhash_str_verify(hash.constData(), bytes.constData(),
                                    static_cast<unsigned long long>(bytes.size())) == 0;
}

} // namespace

QString passwordProblem(const QString &password)
{
    if (password.size() < shortestPassword || password.size() > longestPassword)
        return QStringLiteral("A password must have %1 to %2 characters.")
            .arg(shortestPassword)
            .arg(longestPassword);
    return {};
}

QByteArray passwordHash(const QString &password)
{
    const QByteArray bytes = password.normalized(QString::NormalizationForm_C).toUtf8();
    QByteArray hash(crypto_pwhash_STRBYTES, '\0');
    if (!prepareLibrary() ||
        crypto_pwhash_str(hash.data(), bytes.constData(), static_cast<unsigned long long>(bytes.size()),
                          passes, memory) != 0)
        return {};
    return QByteArray(hash.constData());
}

PasswordChecks::PasswordChecks()
    : m_nobodysHash(passwordHash(QString::fromLatin1(base64Url(secureRandomBytes(32)))))
{
    m_pool.setMaxThreadCount(1);
}

PasswordChecks::~PasswordChecks()
{
    m_pool.clear();
    waitForAll(m_pool);
}

bool PasswordChecks::start(const QByteArray &hash, const QString &password, std::function<void(bool)> done)
{
    if (m_waiting >= maximumWaiting)
        return false;
    ++m_waiting;
    const QByteArray compared = hash.isEmpty() ? m_nobodysHash : hash;
    startOn(m_pool, [this, compared, password, isSomebody = !hash.isEmpty(), done = std::move(done)] {
        const bool matches = isPasswordOf(compared, password) && isSomebody;
        QMetaObject::invokeMethod(
            this,
            [this, done, matches] {
                --m_waiting;
                done(matches);
            },
            Qt::QueuedConnection);
    });
    return true;
}

} // namespace Cloud
