// SPDX-License-Identifier: GPL-3.0-or-later
#include "AtSpiAddress.h"

#include <QCoroLocalSocket>
#include <QLocalSocket>

#include <unistd.h>

namespace {

constexpr std::chrono::milliseconds answerDeadline{250};

struct SocketName
{
    QString name;
    bool isAbstract = false;
};

// "unix:path=/run/…,guid=…" or "unix:abstract=…"; the name is percent-encoded.
std::optional<SocketName> socketName(const QString &address)
{
    const QString transport = QStringLiteral("unix:");
    const QString first = address.section(u';', 0, 0);
    if (!first.startsWith(transport))
        return std::nullopt;
    const QStringList properties = first.sliced(transport.size()).split(u',');
    for (const QString &property : properties) {
        const QString key = property.section(u'=', 0, 0);
        const QString name =
            QString::fromUtf8(QByteArray::fromPercentEncoding(property.section(u'=', 1).toUtf8()));
        if (key == QLatin1String("path") || key == QLatin1String("abstract"))
            return SocketName{name, key == QLatin1String("abstract")};
    }
    return std::nullopt;
}

QByteArray firstLine()
{
    return QByteArray(1, '\0') + "AUTH EXTERNAL " + QByteArray::number(geteuid()).toHex() + "\r\n";
}

} // namespace

QCoro::Task<bool> isBusAnswering(QString address)
{
    const auto name = socketName(address);
    if (!name)
        co_return true;
    QLocalSocket socket;
    if (name->isAbstract)
        socket.setSocketOptions(QLocalSocket::AbstractNamespaceOption);
    socket.connectToServer(name->name);
    if (socket.state() != QLocalSocket::ConnectedState) {
        const bool isConnected = co_await qCoro(socket).waitForConnected(answerDeadline);
        if (!isConnected)
            co_return false;
    }
    socket.write(firstLine());
    if (socket.bytesAvailable() == 0) {
        const bool hasAnswer = co_await qCoro(socket).waitForReadyRead(answerDeadline);
        if (!hasAnswer)
            co_return false;
    }
    const QByteArray answer = socket.readAll();
    co_return answer.startsWith("OK") || answer.startsWith("DATA") || answer.startsWith("REJECTED");
}
