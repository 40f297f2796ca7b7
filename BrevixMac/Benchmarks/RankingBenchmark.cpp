// SPDX-License-Identifier: GPL-3.0-or-later
#include "LibraryDocuments.h"
#include "PromptSearchRanker.h"
#include "SkillSearchRanker.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>

#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype textBytes = 2048;

const QString latinLetters = u"abcdefghijklmnopqrstuvwxyzABCDEFGHIJ     "_s;
const QString mixedLetters = u"abcdeéüñабвгдежзΑΒΓαβγ中文字符テスト한국     "_s;

struct Library
{
    QList<PromptItem> prompts;
    QList<SkillItem> skills;
    CategoriesByID categories;
    QStringList recentPrompts;
    QStringList recentSkills;
};

QString randomText(QRandomGenerator &random, const QString &alphabet, qsizetype bytes)
{
    QString text;
    for (qsizetype size = 0; size < bytes;) {
        const QChar letter = alphabet[random.bounded(alphabet.size())];
        size += QString(letter).toUtf8().size();
        text += letter;
    }
    return text;
}

/// @p items of each kind; every tenth text holds the word that is searched for.
Library makeLibrary(qsizetype items, const QString &alphabet)
{
    QRandomGenerator random(42);
    Library library;
    for (int index = 0; index < 12; ++index) {
        const QString id = u"c%1"_s.arg(index);
        library.categories.insert(id, {.id = id, .name = randomText(random, alphabet, 12)});
    }
    for (qsizetype index = 0; index < items; ++index) {
        QString text = randomText(random, alphabet, textBytes);
        if (index % 10 == 0)
            text.replace(text.size() / 2, 6, u"Search"_s);
        library.prompts.append({.id = u"p%1"_s.arg(index),
                                .title = randomText(random, alphabet, 24),
                                .text = text,
                                .categoryID = u"c%1"_s.arg(index % 12),
                                .order = index});
        library.skills.append({.id = u"s%1"_s.arg(index),
                               .title = randomText(random, alphabet, 24),
                               .text = text + u'.',
                               .sourceFilename = u"file-%1.md"_s.arg(index),
                               .order = index});
    }
    for (int index = 0; index < 20 && index < items; ++index) {
        library.recentPrompts.append(u"p%1"_s.arg(index * 3 % items));
        library.recentSkills.append(u"s%1"_s.arg(index * 7 % items));
    }
    library.recentPrompts.removeDuplicates();
    library.recentSkills.removeDuplicates();
    return library;
}

void rank(const Library &library, const QString &query)
{
    auto prompts = PromptSearchRanker::rankedPrompts(query, library.prompts, library.categories,
                                                     library.recentPrompts, {});
    auto skills = SkillSearchRanker::rankedSkills(query, library.skills, library.recentSkills);
    benchmark::DoNotOptimize(prompts.size() + skills.size());
}

/// One keystroke while the user goes on typing: the library has been searched before.
void keystroke(benchmark::State &state, const QString &alphabet, const QString &query)
{
    const Library library = makeLibrary(state.range(0), alphabet);
    rank(library, query);
    for (auto _ : state)
        rank(library, query);
    state.SetComplexityN(state.range(0));
}

/// The first keystroke over a library that has just come in.
void firstKeystroke(benchmark::State &state, const QString &alphabet)
{
    for (auto _ : state) {
        state.PauseTiming();
        const Library library = makeLibrary(state.range(0), alphabet);
        state.ResumeTiming();
        rank(library, u"search"_s);
    }
}

/// What the main thread does with one answer of the server: parse and turn into records.
void parseAnswer(benchmark::State &state)
{
    const Library library = makeLibrary(state.range(0), latinLetters);
    QJsonArray documents;
    for (const PromptItem &prompt : library.prompts) {
        const auto string = [](const QString &text) { return QJsonObject{{u"stringValue"_s, text}}; };
        documents.append(QJsonObject{
            {u"name"_s,
             QString(u"projects/x/databases/(default)/documents/artifacts/a/users/u/prompts/"_s + prompt.id)},
            {u"fields"_s,
             QJsonObject{{u"title"_s, string(prompt.title)},
                         {u"text"_s, string(prompt.text)},
                         {u"categoryId"_s, string(prompt.categoryID)},
                         {u"createdAt"_s, QJsonObject{{u"timestampValue"_s, u"2024-05-01T09:30:12.345Z"_s}}},
                         {u"order"_s, QJsonObject{{u"integerValue"_s, u"7"_s}}}}}});
    }
    const QByteArray body = QJsonDocument(QJsonObject{{u"documents"_s, documents}}).toJson();
    for (auto _ : state) {
        const QJsonArray answer = QJsonDocument::fromJson(body).object().value(u"documents").toArray();
        QList<PromptItem> prompts;
        for (const QJsonValue &document : answer)
            prompts.append(LibraryDocuments::makePrompt(document.toObject()));
        benchmark::DoNotOptimize(prompts.data());
    }
    state.SetBytesProcessed(state.iterations() * body.size());
}

} // namespace

BENCHMARK_CAPTURE(keystroke, ascii, latinLetters, u"search"_s)
    ->RangeMultiplier(10)
    ->Range(500, 50000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity();
BENCHMARK_CAPTURE(keystroke, asciiNoMatch, latinLetters, u"qqzzqq"_s)
    ->Arg(500)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(keystroke, asciiOneLetter, latinLetters, u"e"_s)->Arg(500)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(keystroke, asciiBlank, latinLetters, u""_s)->Arg(500)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(keystroke, mixed, mixedLetters, u"search"_s)
    ->Arg(500)
    ->Arg(5000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(keystroke, mixedCyrillic, mixedLetters, u"абвгде"_s)
    ->Arg(500)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(firstKeystroke, ascii, latinLetters)->Arg(500)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(firstKeystroke, mixed, mixedLetters)->Arg(500)->Unit(benchmark::kMillisecond);
BENCHMARK(parseAnswer)->Arg(500)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
