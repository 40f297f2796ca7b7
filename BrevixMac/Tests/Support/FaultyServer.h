// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <utility>

/// A cloud on loopback that can misbehave: it answers late, half, wrongly, hugely or never. Replies are
/// chosen by the request's path, else by its last piece, and may be changed between requests.
class FaultyServer
{
public:
    struct Reply
    {
        int status = 200;
        QByteArray body = "{}";
        std::chrono::milliseconds delay{0};
        enum class Fault {
            none,
            hold,
            stall,
            stallHalfway,
            truncate,
            close,
            garbage,
            huge
        } fault = Fault::none;
        QByteArray headers = {}; ///< further header lines, each with its line break
    };

    struct Request
    {
        QByteArray method;
        QByteArray target; ///< path and query as sent
        QByteArray head;   ///< headers
        QByteArray body;

        QByteArray path() const { return target.split('?').first(); }
        QByteArray lastPiece() const { return path().mid(path().lastIndexOf('/') + 1); }
    };

    FaultyServer()
    {
        m_server.listen(QHostAddress::LocalHost);
        QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] {
            while (QTcpSocket *socket = m_server.nextPendingConnection())
                serve(socket);
        });
    }

    virtual ~FaultyServer() = default;

    FaultyServer(const FaultyServer &) = delete;
    FaultyServer &operator=(const FaultyServer &) = delete;

    QUrl origin() const { return QUrl(QStringLiteral("http://127.0.0.1:%1").arg(m_server.serverPort())); }

    /// What requests whose path is, or ends in, @p path get from now on. Without one they get an empty
    /// object.
    void reply(const QByteArray &path, const Reply &reply) { m_replies.insert(path, reply); }

    /// Forgets that.
    void replyAsUsual(const QByteArray &path) { m_replies.remove(path); }

    /// What the next such request gets in place of that.
    void replyOnce(const QByteArray &path, const Reply &reply) { m_repliesOnce.insert(path, reply); }

    const QList<Request> &requests() const { return m_requests; }

    /// How many requests there were whose path ends in @p lastPiece.
    qsizetype count(const QByteArray &lastPiece) const
    {
        return std::count_if(m_requests.begin(), m_requests.end(),
                             [&](const Request &request) { return request.lastPiece() == lastPiece; });
    }

    /// Requests whose reply was to be held.
    qsizetype heldRequests() const { return m_held.size(); }

    /// Answers those, the oldest first, by the replies that hold now.
    void releaseHeldRequests()
    {
        for (const auto &[socket, request] : std::exchange(m_held, {})) {
            if (socket)
                answer(socket, request);
        }
    }

    void releaseOldestHeldRequest()
    {
        const auto [socket, request] = m_held.takeFirst();
        if (socket)
            answer(socket, request);
    }

    /// Is gone: nothing listens, and the connections that clients keep open end.
    void goAway()
    {
        m_server.close();
        const auto sockets = m_server.findChildren<QTcpSocket *>();
        for (QTcpSocket *socket : sockets)
            socket->abort();
    }

protected:
    /// Called once for each request, before it is answered or held.
    virtual void noteRequest(const Request &) {}

    /// What a request gets for which no reply was set.
    virtual Reply unscriptedReply(const Request &) { return {}; }

private:
    void serve(QTcpSocket *socket)
    {
        auto received = std::make_shared<QByteArray>();
        QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket, received] {
            received->append(socket->readAll());
            if (const auto request = takeRequest(*received)) {
                m_requests.append(*request);
                noteRequest(*request);
                answer(socket, *request);
            }
        });
    }

    void answer(QTcpSocket *socket, const Request &request)
    {
        const Reply reply = replyTo(request);
        if (reply.fault == Reply::Fault::hold)
            m_held.append({socket, request});
        else
            QTimer::singleShot(reply.delay, socket, [socket, reply] { send(socket, reply); });
    }

    Reply replyTo(const Request &request)
    {
        for (const QByteArray &key : {request.path(), request.lastPiece()}) {
            if (m_repliesOnce.contains(key))
                return m_repliesOnce.take(key);
        }
        for (const QByteArray &key : {request.path(), request.lastPiece()}) {
            if (m_replies.contains(key))
                return m_replies.value(key);
        }
        return unscriptedReply(request);
    }

    static std::optional<Request> takeRequest(QByteArray &bytes)
    {
        const qsizetype headEnd = bytes.indexOf("\r\n\r\n");
        if (headEnd < 0)
            return std::nullopt;
        const QByteArray head = bytes.first(headEnd);
        const qsizetype length = contentLength(head);
        if (bytes.size() < headEnd + 4 + length)
            return std::nullopt;
        const QList<QByteArray> words = head.first(head.indexOf("\r\n")).split(' ');
        const Request request{words.value(0), words.value(1), head, bytes.sliced(headEnd + 4, length)};
        bytes.remove(0, headEnd + 4 + length);
        return request;
    }

    static qsizetype contentLength(const QByteArray &head)
    {
        for (const QByteArray &line : head.split('\n')) {
            if (line.toLower().startsWith("content-length:"))
                return line.mid(15).trimmed().toLongLong();
        }
        return 0;
    }

    static void send(QTcpSocket *socket, const Reply &reply)
    {
        using Fault = Reply::Fault;
        switch (reply.fault) {
        case Fault::hold:
        case Fault::stall:
            return;
        case Fault::close:
            return socket->abort();
        case Fault::garbage:
            socket->write("this is not HTTP\n");
            return socket->disconnectFromHost();
        case Fault::none:
        case Fault::stallHalfway:
        case Fault::truncate:
        case Fault::huge:
            break;
        }
        const qsizetype size = reply.fault == Fault::huge ? qsizetype(1) << 40 : reply.body.size();
        socket->write("HTTP/1.1 " + QByteArray::number(reply.status) + " Reply\r\n" + reply.headers +
                      "Content-Length: " + QByteArray::number(size) + "\r\n\r\n");
        const bool isHalf = reply.fault == Fault::truncate || reply.fault == Fault::stallHalfway;
        socket->write(isHalf ? reply.body.first(reply.body.size() / 2) : reply.body);
        if (reply.fault == Fault::truncate)
            socket->disconnectFromHost();
    }

    QTcpServer m_server;
    QHash<QByteArray, Reply> m_replies;
    QHash<QByteArray, Reply> m_repliesOnce;
    QList<Request> m_requests;
    QList<std::pair<QPointer<QTcpSocket>, Request>> m_held;
};
