// SPDX-License-Identifier: GPL-3.0-or-later
#include "AtSpiFocusSearch.h"

#include "AtSpiRoles.h"

#include <QCoroDBus>
#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDeadlineTimer>

/// Argument of Collection.GetMatches, "(aiia{ss}iaiiasib)": here "every state of these".
struct AtSpiMatchRule
{
    quint64 states = 0;
};
Q_DECLARE_METATYPE(AtSpiMatchRule)

QDBusArgument &operator<<(QDBusArgument &argument, const AtSpiMatchRule &rule)
{
    constexpr int matchAll = 1;
    constexpr int bitsPerWord = 32;
    const QList<int> states{static_cast<int>(rule.states & 0xffffffffU),
                            static_cast<int>(rule.states >> bitsPerWord)};
    argument.beginStructure();
    argument << states << matchAll << QMap<QString, QString>() << matchAll << QList<int>{0, 0, 0, 0}
             << matchAll << QStringList() << matchAll << false;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, AtSpiMatchRule &)
{
    return argument; // never read, but the meta type wants it
}

namespace {

constexpr std::chrono::milliseconds budget{250};
constexpr qsizetype mostNodes = 4000;
constexpr qsizetype nodesAtOnce = 128;

/// Kept by the steps of one search.
struct Search
{
    std::shared_ptr<AtSpiBus> bus;
    QDeadlineTimer deadline{budget, Qt::PreciseTimer};

    AtSpiCall call(const AtSpiObject &object, const QString &interface, const QString &member) const
    {
        const auto left = std::chrono::milliseconds(deadline.remainingTime());
        return {.object = object,
                .interface = interface,
                .member = member,
                .deadline = std::min(left, AtSpiCall::usualDeadline),
                .silenceIsHarmless = left < AtSpiCall::usualDeadline};
    }
};

using Objects = QList<AtSpiObject>;

QCoro::Task<Objects> childrenOf(Search search, AtSpiObject object)
{
    const AtSpiCall call = search.call(object, AtSpi::accessible, QStringLiteral("GetChildren"));
    const QDBusMessage reply = co_await AtSpiBus::ask(search.bus, call);
    const Objects children = replyValue<Objects>(reply).value_or(Objects());
    Objects valid;
    for (const AtSpiObject &child : children) {
        if (child.isValid() && child.owner == object.owner)
            valid.append(child);
    }
    co_return valid;
}

QCoro::Task<quint64> statesOf(Search search, AtSpiObject object)
{
    const AtSpiCall call = search.call(object, AtSpi::accessible, QStringLiteral("GetState"));
    const QDBusMessage reply = co_await AtSpiBus::ask(search.bus, call);
    co_return atSpiStates(replyValue<QList<uint>>(reply).value_or(QList<uint>()));
}

bool has(quint64 states, AtSpiState state)
{
    return (states >> static_cast<int>(state)) & 1U;
}

/// The best of several objects that call themselves focused: the first that takes text, else the first real
/// one.
QCoro::Task<std::optional<AtSpiObject>> choose(std::shared_ptr<AtSpiBus> bus, Objects candidates)
{
    std::vector<QCoro::Task<std::optional<AtSpiDescription>>> questions;
    for (const AtSpiObject &candidate : candidates)
        questions.push_back(AtSpiBus::describe(bus, candidate));
    std::optional<AtSpiObject> anyText;
    std::optional<AtSpiObject> anyOther;
    for (qsizetype i = 0; i < candidates.size(); ++i) {
        const auto description = co_await questions[static_cast<size_t>(i)];
        if (!description || isFocusNoise(*description))
            continue;
        if (takesText(*description) && !anyText)
            anyText = candidates[i];
        else if (!anyOther)
            anyOther = candidates[i];
    }
    co_return anyText ? anyText : anyOther;
}

/// The windows of the program, active ones first; the others only when none is active, because the grab of a
/// global shortcut or our own panel takes that state away.
QCoro::Task<Objects> windowsToSearch(Search search, QString owner)
{
    const Objects windows = co_await childrenOf(search, AtSpiObject::root(owner));
    std::vector<QCoro::Task<quint64>> questions;
    for (const AtSpiObject &window : windows)
        questions.push_back(statesOf(search, window));
    Objects active;
    for (qsizetype i = 0; i < windows.size(); ++i) {
        const quint64 states = co_await questions[static_cast<size_t>(i)];
        if (has(states, AtSpiState::active))
            active.append(windows[i]);
    }
    co_return active.isEmpty() ? windows : active;
}

QCoro::Task<Objects> matchesIn(Search search, AtSpiObject window)
{
    constexpr uint inTreeOrder = 1; // 0 gives nothing in this version of the bridge
    constexpr int asManyAsThereAre = 0;
    AtSpiCall call = search.call(window, AtSpi::collection, QStringLiteral("GetMatches"));
    const AtSpiMatchRule focused{quint64(1) << static_cast<int>(AtSpiState::focused)};
    call.arguments = {QVariant::fromValue(focused), inTreeOrder, asManyAsThereAre, true};
    const QDBusMessage reply = co_await AtSpiBus::ask(search.bus, call);
    co_return replyValue<Objects>(reply).value_or(Objects());
}

QCoro::Task<Objects> matchesInAll(Search search, Objects windows)
{
    std::vector<QCoro::Task<Objects>> questions;
    for (const AtSpiObject &window : windows)
        questions.push_back(matchesIn(search, window));
    Objects matches;
    for (auto &question : questions) {
        const Objects some = co_await question;
        matches += some;
    }
    co_return matches;
}

/// One row of the walk: who of @p nodes is focused, and what is below those worth descending into.
struct Row
{
    Objects focused;
    Objects below;
};

QCoro::Task<Row> examine(Search search, Objects nodes, bool skipsHidden)
{
    std::vector<QCoro::Task<quint64>> stateQuestions;
    std::vector<QCoro::Task<Objects>> childQuestions;
    for (const AtSpiObject &node : nodes) {
        stateQuestions.push_back(statesOf(search, node));
        childQuestions.push_back(childrenOf(search, node));
    }
    Row row;
    for (qsizetype i = 0; i < nodes.size(); ++i) {
        const quint64 states = co_await stateQuestions[static_cast<size_t>(i)];
        const Objects children = co_await childQuestions[static_cast<size_t>(i)];
        if (has(states, AtSpiState::focused))
            row.focused.append(nodes[i]);
        const bool isHidden = skipsHidden && !has(states, AtSpiState::showing);
        if (!isHidden && !has(states, AtSpiState::managesDescendants))
            row.below += children;
    }
    co_return row;
}

QCoro::Task<std::optional<AtSpiObject>> walk(Search search, Objects windows, bool skipsHidden)
{
    Objects waiting = windows;
    qsizetype visited = 0;
    while (!waiting.isEmpty() && visited < mostNodes && !search.deadline.hasExpired()) {
        const Objects now = waiting.first(std::min(waiting.size(), nodesAtOnce));
        waiting.remove(0, now.size());
        visited += now.size();
        const Row row = co_await examine(search, now, skipsHidden);
        const auto chosen = co_await choose(search.bus, row.focused);
        if (chosen)
            co_return chosen;
        waiting += row.below;
    }
    co_return std::nullopt;
}

void registerMatchRule()
{
    static const bool isRegistered = (qDBusRegisterMetaType<AtSpiMatchRule>(), true);
    Q_UNUSED(isRegistered)
}

} // namespace

QCoro::Task<std::optional<AtSpiObject>> findFocusedObject(std::shared_ptr<AtSpiBus> bus, QString owner)
{
    registerMatchRule();
    Search search{.bus = bus};
    const auto application = co_await AtSpiBus::describe(bus, AtSpiObject::root(owner));
    if (!application)
        co_return std::nullopt;
    const Objects windows = co_await windowsToSearch(search, owner);
    const Objects matches = co_await matchesInAll(search, windows);
    const auto matching = co_await choose(bus, matches);
    if (matching)
        co_return matching;
    // GTK 4 does not say what is showing.
    const bool skipsHidden = application->toolkit != AtSpiToolkit::gtk4;
    const auto walked = co_await walk(search, windows, skipsHidden);
    co_return walked;
}
