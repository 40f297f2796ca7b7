// SPDX-License-Identifier: GPL-3.0-or-later
#include "DoctorReport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <array>

namespace {

using State = DoctorRow::State;
using Source = DoctorReport::Source;

constexpr std::array allStates{State::works, State::degraded, State::fails, State::unknown};
constexpr std::array allSources{Source::instance, Source::standalone, Source::silentInstance};
constexpr int columnGap = 2;
constexpr int leastTextColumns = 20;

QString name(Source source)
{
    switch (source) {
    case Source::instance:
        return QStringLiteral("instance");
    case Source::standalone:
        return QStringLiteral("standalone");
    case Source::silentInstance:
        return QStringLiteral("silentInstance");
    }
    Q_UNREACHABLE();
}

QString heading(Source source)
{
    switch (source) {
    case Source::instance:
        return QStringLiteral("As the running Brevix sees it");
    case Source::standalone:
        return QStringLiteral("Brevix is not running; examined without it");
    case Source::silentInstance:
        return QStringLiteral("The running Brevix does not answer; examined without it");
    }
    Q_UNREACHABLE();
}

template <typename Value, size_t count>
std::optional<Value> named(const std::array<Value, count> &all, const QString &text)
{
    const auto found = std::find_if(all.begin(), all.end(), [&](Value value) { return name(value) == text; });
    return found == all.end() ? std::nullopt : std::optional(*found);
}

QJsonObject toJsonObject(const DoctorRow &row)
{
    return {{QStringLiteral("id"), row.id},
            {QStringLiteral("title"), row.title},
            {QStringLiteral("state"), name(row.state)},
            {QStringLiteral("reason"), row.reason},
            {QStringLiteral("fix"), row.fix}};
}

std::optional<DoctorRow> rowFromJson(const QJsonObject &json)
{
    const auto state = named(allStates, json.value(QStringLiteral("state")).toString());
    if (!state)
        return std::nullopt;
    return DoctorRow{.id = json.value(QStringLiteral("id")).toString(),
                     .title = json.value(QStringLiteral("title")).toString(),
                     .state = *state,
                     .reason = json.value(QStringLiteral("reason")).toString(),
                     .fix = json.value(QStringLiteral("fix")).toString()};
}

/// @p text in lines of at most @p columns characters, broken between words.
QStringList wrapped(const QString &text, int columns)
{
    if (columns <= 0)
        return {text};
    QStringList lines;
    QString line;
    for (const QString &word : text.split(u' ')) {
        if (!line.isEmpty() && line.size() + 1 + word.size() > columns) {
            lines.append(line);
            line.clear();
        }
        line += line.isEmpty() ? word : QString(u' ' + word);
    }
    return lines << line;
}

} // namespace

QString name(DoctorRow::State state)
{
    switch (state) {
    case State::works:
        return QStringLiteral("works");
    case State::degraded:
        return QStringLiteral("degraded");
    case State::fails:
        return QStringLiteral("fails");
    case State::unknown:
        return QStringLiteral("unknown");
    }
    Q_UNREACHABLE();
}

bool DoctorReport::hasFailure() const
{
    return std::any_of(rows.begin(), rows.end(),
                       [](const DoctorRow &row) { return row.state == State::fails; });
}

QByteArray DoctorReport::toJson() const
{
    QJsonArray array;
    for (const DoctorRow &row : rows)
        array.append(toJsonObject(row));
    const QJsonObject object{{QStringLiteral("version"), QStringLiteral(BREVIX_VERSION)},
                             {QStringLiteral("source"), name(source)},
                             {QStringLiteral("session"), session},
                             {QStringLiteral("rows"), array}};
    return QJsonDocument(object).toJson(QJsonDocument::Indented);
}

std::optional<DoctorReport> DoctorReport::fromJson(const QByteArray &json)
{
    const QJsonObject object = QJsonDocument::fromJson(json).object();
    const auto source = named(allSources, object.value(QStringLiteral("source")).toString());
    if (!source)
        return std::nullopt;
    DoctorReport report{
        .source = *source, .session = object.value(QStringLiteral("session")).toString(), .rows = {}};
    const QJsonArray rows = object.value(QStringLiteral("rows")).toArray();
    for (const auto &value : rows) {
        const auto row = rowFromJson(value.toObject());
        if (!row)
            return std::nullopt;
        report.rows.append(*row);
    }
    return report.rows.isEmpty() ? std::nullopt : std::optional(report);
}

QString DoctorReport::toText(int columns) const
{
    qsizetype titleWidth = 0;
    qsizetype stateWidth = 0;
    for (const DoctorRow &row : rows) {
        titleWidth = std::max(titleWidth, row.title.size());
        stateWidth = std::max(stateWidth, name(row.state).size());
    }
    const auto indent = static_cast<int>(titleWidth + stateWidth + qsizetype(2) * columnGap);
    const int room = columns > 0 ? std::max(leastTextColumns, columns - indent) : 0;
    QString text =
        u"Brevix "_qs + QStringLiteral(BREVIX_VERSION) + u" · " + session + u"\n" + heading(source) + u"\n\n";
    for (const DoctorRow &row : rows) {
        QStringList lines = wrapped(row.reason, room);
        if (!row.fix.isEmpty())
            lines += wrapped(u"→ " + row.fix, room);
        text += row.title.leftJustified(titleWidth + columnGap) +
                name(row.state).leftJustified(stateWidth + columnGap) + lines.takeFirst() + u'\n';
        for (const QString &line : std::as_const(lines))
            text += QString(indent, u' ') + line + u'\n';
    }
    return text;
}
