// SPDX-License-Identifier: GPL-3.0-or-later
#include "LocalCloud/Database.h"
#include "LocalCloud/Documents.h"
#include "LocalCloud/LocalCloud.h"

#include "Support/AppBench.h"
#include "Support/Waiting.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QJsonObject>
#include <QRandomGenerator>

#include <benchmark/benchmark.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int documentCount = 500;
constexpr qsizetype textBytes = 2048;

/// The longest time that the main thread has not gone back to its event loop.
class MainThreadWatch : public QObject
{
public:
    MainThreadWatch()
    {
        const auto dispatcher = QAbstractEventDispatcher::instance();
        connect(dispatcher, &QAbstractEventDispatcher::awake, this, [this] { m_awake.start(); });
        connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, this, [this] {
            if (m_awake.isValid())
                m_longest = std::max(m_longest, m_awake.nsecsElapsed());
            m_awake.invalidate();
        });
    }

    double longestMilliseconds() const { return static_cast<double>(m_longest) / 1e6; }

private:
    QElapsedTimer m_awake;
    qint64 m_longest = 0;
};

QString randomText()
{
    static const QString letters = u"abcdefghijklmnopqrstuvwxyzABCDEFGHIJ     "_s;
    static QRandomGenerator random(1);
    QString text(textBytes, Qt::Uninitialized);
    for (QChar &unit : text)
        unit = letters.at(random.bounded(int(letters.size())));
    return text;
}

QJsonObject document(int index)
{
    const auto string = [](const QString &text) { return QJsonObject{{u"stringValue"_s, text}}; };
    const QString title = u"Title %1"_s.arg(index);
    return {{u"title"_s, string(title)},
            {u"name"_s, string(title)},
            {u"text"_s, string(randomText())},
            {u"categoryId"_s, string(u"c"_s)},
            {u"createdAt"_s, QJsonObject{{u"timestampValue"_s, u"2024-05-01T09:30:12.345Z"_s}}}};
}

void fill(const QString &databasePath, const QString &user)
{
    Cloud::Database database(databasePath);
    if (!database.open())
        qFatal("no database: %s", qPrintable(database.errorString()));
    Cloud::Transaction transaction(database);
    Cloud::Documents documents(database);
    for (const char *collection : {"categories", "prompts", "skills"}) {
        for (int index = 0; index < documentCount; ++index)
            documents.put(user + QString::fromLatin1(collection), u"d%1"_s.arg(index), document(index), {});
    }
    transaction.commit();
}

/// An application over a full local cloud, signed in there.
class FullBench : public AppBench
{
public:
    FullBench()
        : m_cloud({.dataFolder = folder.filePath(u"cloud"_s),
                   .projectID = configuration.firebase.projectID,
                   .apiKey = configuration.firebase.apiKey,
                   .libraryAppID = configuration.logicalLibraryAppID,
                   .clientID = {},
                   .redirectScheme = {}})
    {
        time = QDateTime::currentDateTimeUtc();
        if (!m_cloud.start())
            qFatal("no local cloud: %s", qPrintable(m_cloud.errorString()));
        const LocalCloud::Session session = m_cloud.issueLocalSession();
        m_userID = session.uid;
        fill(folder.filePath(u"cloud/library.sqlite"_s),
             u"artifacts/%1/users/%2/"_s.arg(configuration.logicalLibraryAppID, m_userID));
        endpoints = CloudEndpoints::local(m_cloud.origin());
        storeSession(m_userID, session.idToken);
        start();
        reload();
    }

    /// Forgets the library and fetches it anew.
    void reload()
    {
        appState->libraryStore().unbind();
        appState->libraryStore().bind(m_userID);
        if (!waitForLibrary() || appState->libraryPrompts().size() < documentCount)
            qFatal("no library: %s", qPrintable(appState->libraryStore().syncState().title()));
    }

private:
    LocalCloud m_cloud;
    QString m_userID;
};

/// A refresh of three full pages, from the request to the published lists.
void refresh(benchmark::State &state)
{
    FullBench bench;
    const MainThreadWatch watch;
    for (auto _ : state)
        bench.reload();
    state.counters["longest hold (ms)"] = watch.longestMilliseconds();
}

/// The first search after the library has changed, with the time that a hand takes to the keyboard in
/// between.
void firstKeystroke(benchmark::State &state)
{
    FullBench bench;
    for (auto _ : state) {
        bench.reload();
        waitUntil([] { return false; }, std::chrono::milliseconds(state.range(0)));
        bench.appState->setQuery(u"search"_s);
        QElapsedTimer timer;
        timer.start();
        benchmark::DoNotOptimize(bench.appState->resultSections());
        state.SetIterationTime(static_cast<double>(timer.nsecsElapsed()) / 1e9);
        bench.appState->setQuery(QString());
    }
}

} // namespace

BENCHMARK(refresh)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(firstKeystroke)->ArgName("wait")->Arg(0)->Arg(100)->Unit(benchmark::kMillisecond)->UseManualTime();

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
