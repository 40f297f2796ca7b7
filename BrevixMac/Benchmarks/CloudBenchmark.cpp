// SPDX-License-Identifier: GPL-3.0-or-later
// How fast the library server answers over its socket, alone and with idle clients around it.
#include "LocalCloud/LocalCloud.h"

#include <QCoreApplication>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <ctime>
#include <memory>
#include <vector>

namespace {

constexpr int listedDocuments = 300;
constexpr int idleClients = 64; // beside the one that asks
constexpr int textSize = 500;

/// A server with a collection of 300 documents.
class Server
{
public:
    Server()
        : cloud(optionsIn(folder.path()))
    {
        if (!cloud.start())
            qFatal("The server does not start: %s", qPrintable(cloud.errorString()));
        token = cloud.issueLocalSession().idToken.toLatin1();
        const auto socket = connected();
        for (int i = 0; i < listedDocuments; ++i)
            exchange(*socket, request("POST", "items", documentJson(i)));
    }

    std::unique_ptr<QTcpSocket> connected() const
    {
        auto socket = std::make_unique<QTcpSocket>();
        socket->connectToHost(QStringLiteral("127.0.0.1"), quint16(cloud.origin().port()));
        if (!socket->waitForConnected())
            qFatal("The server does not take the connection");
        return socket;
    }

    QByteArray request(const QByteArray &method, const QByteArray &path, const QByteArray &body = {}) const
    {
        return method +
               " /v1/projects/brevix-local/databases/(default)/documents/artifacts/brevix-app-local/users/" +
               "local-user/" + path +
               " HTTP/1.1\r\nHost: 127.0.0.1:" + QByteArray::number(cloud.origin().port()) +
               "\r\nAuthorization: Bearer " + token +
               "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
    }

    /// Sends @p bytes and reads the whole answer; gives its size.
    static qsizetype exchange(QTcpSocket &socket, const QByteArray &bytes)
    {
        socket.write(bytes);
        QByteArray answer;
        qsizetype expected = -1;
        while (expected < 0 || answer.size() < expected) {
            if (socket.bytesAvailable() == 0 && !socket.waitForReadyRead())
                qFatal("The server does not answer");
            answer += socket.readAll();
            const qsizetype end = answer.indexOf("\r\n\r\n");
            const qsizetype length = answer.indexOf("Content-Length: ") + 16;
            if (expected < 0 && end > 0)
                expected = end + 4 + answer.mid(length, answer.indexOf('\r', length) - length).toLongLong();
        }
        if (!answer.startsWith("HTTP/1.1 200"))
            qFatal("The server refuses: %s", answer.left(300).constData());
        return answer.size();
    }

private:
    static LocalCloud::Options optionsIn(const QString &path)
    {
        LocalCloud::Options options;
        options.dataFolder = path;
        return options;
    }

    static QByteArray documentJson(int number)
    {
        return R"({"fields":{"title":{"stringValue":"Prompt )" + QByteArray::number(number) +
               R"("},"text":{"stringValue":")" + QByteArray(textSize, 'x') +
               R"("},"order":{"integerValue":"1"}}})";
    }

    QTemporaryDir folder;
    LocalCloud cloud;
    QByteArray token;
};

void lists(benchmark::State &state)
{
    const Server server;
    std::vector<std::unique_ptr<QTcpSocket>> idle;
    for (int i = 0; i < state.range(0); ++i) {
        idle.push_back(server.connected());
        Server::exchange(*idle.back(), server.request("GET", "categories"));
    }
    const auto socket = server.connected();
    const QByteArray request = server.request("GET", "items?pageSize=300");
    qsizetype size = 0;
    for (auto _ : state)
        size = Server::exchange(*socket, request);
    state.counters["answers/s"] = benchmark::Counter(double(state.iterations()), benchmark::Counter::kIsRate);
    state.counters["answer KiB"] = double(size) / 1024;
}
BENCHMARK(lists)
    ->Arg(0)
    ->Arg(idleClients)
    ->ArgName("idle clients")
    ->UseRealTime()
    ->Unit(benchmark::kMicrosecond);

void creates(benchmark::State &state)
{
    const Server server;
    const auto socket = server.connected();
    const QByteArray request =
        server.request("POST", "made", R"({"fields":{"title":{"stringValue":"A title"}}})");
    for (auto _ : state)
        Server::exchange(*socket, request);
    state.counters["creates/s"] = benchmark::Counter(double(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(creates)->UseRealTime()->Unit(benchmark::kMicrosecond);

/// Processor time of this process while clients are connected and say nothing for two seconds.
void idleCost(benchmark::State &state)
{
    const Server server;
    std::vector<std::unique_ptr<QTcpSocket>> idle;
    for (int i = 0; i < idleClients; ++i) {
        idle.push_back(server.connected());
        Server::exchange(*idle.back(), server.request("GET", "categories"));
    }
    for (auto _ : state) {
        const std::clock_t before = std::clock();
        idle.front()->waitForReadyRead(2000);
        state.counters["CPU ms in 2 s"] = 1000.0 * double(std::clock() - before) / CLOCKS_PER_SEC;
    }
}
BENCHMARK(idleCost)->UseRealTime()->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
