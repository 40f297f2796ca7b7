// SPDX-License-Identifier: GPL-3.0-or-later
// Entry of a fuzz target without libFuzzer: reads every file of the corpus, then mutations of them, the same
// ones at every run, so that a failure of the test suite can be repeated. `target FOLDER [MUTATIONS]`
#include "FuzzTarget.h"

#include <QDir>
#include <QFile>
#include <QList>

#include <csignal>
#include <random>

namespace {

QByteArray current;

class Mutator
{
public:
    explicit Mutator(QList<QByteArray> seeds)
        : m_seeds(std::move(seeds))
    {
    }

    QByteArray next()
    {
        QByteArray bytes = m_seeds.at(below(m_seeds.size()));
        for (auto steps = 1 + below(6); steps > 0; --steps)
            change(bytes);
        return bytes;
    }

private:
    qsizetype below(qsizetype limit) { return limit > 0 ? qsizetype(m_random() % std::uint64_t(limit)) : 0; }

    void change(QByteArray &bytes)
    {
        const qsizetype at = below(bytes.size());
        const qsizetype length = 1 + below(qMin<qsizetype>(16, bytes.size()));
        switch (below(6)) {
        case 0:
            if (!bytes.isEmpty())
                bytes[at] = char(m_random());
            break;
        case 1:
            bytes.insert(at, char(m_random()));
            break;
        case 2:
            bytes.remove(at, length);
            break;
        case 3:
            bytes.insert(at, bytes.mid(below(bytes.size()), length));
            break;
        case 4:
            bytes.truncate(at);
            break;
        default:
            const QByteArray &other = m_seeds.at(below(m_seeds.size()));
            bytes.insert(at, other.mid(below(other.size()), 1 + below(32)));
            break;
        }
    }

    QList<QByteArray> m_seeds;
    std::mt19937_64 m_random{20261121};
};

void saveCurrentInput(int signal)
{
    QFile file(QStringLiteral("failing-input"));
    if (file.open(QIODevice::WriteOnly))
        file.write(current);
    std::fprintf(stderr, "the failing input is in the file failing-input\n");
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

} // namespace

int main(int argc, char **argv)
{
    for (const int signal : {SIGABRT, SIGSEGV, SIGFPE, SIGBUS})
        std::signal(signal, &saveCurrentInput);
    const QDir folder(argc > 1 ? QString::fromLocal8Bit(argv[1]) : QString());
    const qsizetype mutations = argc > 2 ? QByteArray(argv[2]).toLongLong() : 0;

    QList<QByteArray> seeds;
    const QStringList names = folder.entryList(QDir::Files, QDir::Name);
    for (const QString &name : names) {
        QFile file(folder.filePath(name));
        require(file.open(QIODevice::ReadOnly), "a corpus file can be read");
        seeds.append(file.readAll());
    }
    if (seeds.isEmpty()) {
        std::fprintf(stderr, "no corpus in %s\n", qPrintable(folder.path()));
        return 1;
    }
    for (const QByteArray &seed : std::as_const(seeds))
        readForeignBytes(current = seed);
    Mutator mutator(seeds);
    for (qsizetype i = 0; i < mutations; ++i)
        readForeignBytes(current = mutator.next());
    std::printf("%lld seeds and %lld mutations read\n", (long long)seeds.size(), (long long)mutations);
    return 0;
}
