// SPDX-License-Identifier: GPL-3.0-or-later
// What the ranking costs for a list of lines, one prompt each, to be compared with other programs that filter
// lines.
//
//   line_ranking FILE QUERY…
//
// Prints a line for each query: the milliseconds of the first ranking of a list that has just come in, the
// median of those that follow, the number of matches, and the query.
#include "PromptSearchRanker.h"

#include <QElapsedTimer>
#include <QFile>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

constexpr int repetitions = 15;

QList<PromptItem> promptsOfLines(const QByteArray &lines)
{
    QList<PromptItem> prompts;
    for (const QByteArray &line : lines.trimmed().split('\n')) {
        // As the library gives them: every record owns its strings.
        prompts.append({.id = QString::number(prompts.size()),
                        .title = QString::fromUtf8(line),
                        .text = QString::fromUtf8(line),
                        .categoryID = QString(),
                        .order = prompts.size()});
    }
    return prompts;
}

struct Ranking
{
    double milliseconds = 0;
    qsizetype matches = 0;
};

Ranking rank(const QString &query, const QList<PromptItem> &prompts)
{
    QElapsedTimer clock;
    clock.start();
    const auto ranked = PromptSearchRanker::rankedPrompts(query, prompts, {}, {}, {});
    return {double(clock.nsecsElapsed()) / 1e6, ranked.size()};
}

double medianOfRankings(const QString &query, const QList<PromptItem> &prompts)
{
    std::vector<double> values;
    for (int run = 0; run < repetitions; ++run)
        values.push_back(rank(query, prompts).milliseconds);
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

} // namespace

int main(int argc, char **argv)
{
    QFile file(argc > 2 ? QString::fromLocal8Bit(argv[1]) : QString());
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "usage: line_ranking FILE QUERY...\n");
        return 64;
    }
    const QByteArray lines = file.readAll();
    for (int index = 2; index < argc; ++index) {
        const QString query = QString::fromLocal8Bit(argv[index]);
        const QList<PromptItem> prompts = promptsOfLines(lines);
        const Ranking first = rank(query, prompts);
        std::printf("%.3f %.3f %lld %s\n", first.milliseconds, medianOfRankings(query, prompts),
                    static_cast<long long>(first.matches), argv[index]);
    }
    return 0;
}
