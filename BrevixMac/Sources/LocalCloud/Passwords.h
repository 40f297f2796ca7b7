// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>
#include <QThreadPool>

#include <functional>

namespace Cloud {

constexpr qsizetype longestPassword = 200; // characters

/// Why @p password cannot be one, for the person who chose it; empty when it can.
QString passwordProblem(const QString &password);

/// What is kept of @p password: an argon2id hash with its salt and its cost. Takes some 100 ms. Any thread.
/// Empty when there is not enough memory for it.
QByteArray passwordHash(const QString &password);

/// Checks passwords on a thread of its own, one after the other, because each takes some 100 ms. Belongs to
/// the thread that made it.
class PasswordChecks : public QObject
{
public:
    PasswordChecks();
    ~PasswordChecks() override;

    /// Calls @p done on this thread with whether @p hash is of @p password. Nobody's hash is the empty one,
    /// which takes as long as any. False, and no call, when too many are waiting.
    bool start(const QByteArray &hash, const QString &password, std::function<void(bool)> done);

private:
    static constexpr int maximumWaiting = 8;

    QThreadPool m_pool;
    QByteArray m_nobodysHash;
    int m_waiting = 0;
};

} // namespace Cloud
