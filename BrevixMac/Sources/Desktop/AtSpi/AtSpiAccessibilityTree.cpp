// SPDX-License-Identifier: GPL-3.0-or-later
#include "AtSpiAccessibilityTree.h"

#include "AtSpiRoles.h"

#include "Foundation/Text.h"

#include <QDeadlineTimer>

#include <algorithm>
#include <array>

namespace {

// How long after a failed attempt the bus is looked for again; the last one repeats.
constexpr std::array<std::chrono::milliseconds, 4> reconnectDelays{
    std::chrono::milliseconds(200), std::chrono::seconds(1), std::chrono::seconds(5),
    std::chrono::seconds(30)};

constexpr std::chrono::milliseconds connectingPatience{1000};
constexpr std::chrono::milliseconds connectingPollInterval{10};

TextRange toCharacters(const AtSpiText &text, const AtSpiText::Selection &selection)
{
    const qsizetype start = Text::characterIndexAtUtf16Offset(text.value, selection.start);
    const QStringView selected =
        QStringView(text.value).sliced(selection.start, selection.end - selection.start);
    return {start, Text::characterCount(selected)};
}

AtSpiText::Selection toUtf16(const AtSpiText &text, const TextRange &range)
{
    const qsizetype start = Text::utf16OffsetOfCharacter(text.value, std::max<qint64>(range.location, 0));
    const qsizetype length = Text::utf16OffsetOfCharacter(QStringView(text.value).sliced(start),
                                                          std::max<qint64>(range.length, 0));
    return {start, start + length};
}

std::optional<AccessibilityValue> textOrNothing(const QString &text)
{
    return text.isEmpty() ? std::nullopt : std::optional<AccessibilityValue>(text);
}

} // namespace

AtSpiAccessibilityTree::AtSpiAccessibilityTree(QDBusConnection session)
    : m_sessionBus(session)
    , m_session(std::move(session))
    , m_bus(std::make_shared<AtSpiBus>())
    , m_focus(m_bus)
{
    connect(&m_session, &AtSpiSession::isEnabledChanged, this, &AtSpiAccessibilityTree::updateTrust);
    connect(&m_session, &AtSpiSession::serviceAppeared, this, &AtSpiAccessibilityTree::connectNow);
    connect(m_bus.get(), &AtSpiBus::opened, this, &AtSpiAccessibilityTree::updateTrust);
    connect(m_bus.get(), &AtSpiBus::closed, this, [this] {
        m_lastRead = {};
        updateTrust();
        connectNow();
    });
    connectNow();
}

AtSpiAccessibilityTree::~AtSpiAccessibilityTree() = default;

bool AtSpiAccessibilityTree::isProcessTrusted() const
{
    return m_isTrusted;
}

void AtSpiAccessibilityTree::requestTrust()
{
    m_session.enable();
    connectNow();
}

void AtSpiAccessibilityTree::applicationActivated(qint64 processIdentifier)
{
    m_focus.applicationActivated(processIdentifier);
}

QCoro::Task<AtSpiAccessibilityTree::Examination> AtSpiAccessibilityTree::examine()
{
    using State = SessionFacts::Accessibility;
    const std::stop_token token = m_tasks.token();
    const auto bus = m_bus;
    const auto session = m_sessionBus;
    auto isEnabledQuestion = AtSpiSession::askIsEnabled(session);
    const auto address = co_await AtSpiSession::address(session);
    if (!address)
        co_return Examination{};
    Examination result{.state = State::notAnswering, .processes = {}};
    // Shortly after the start this object is still connecting.
    const QDeadlineTimer patience(connectingPatience);
    while (!bus->isOpen() && !patience.hasExpired()) {
        const bool hasSlept = co_await sleepFor(connectingPollInterval, token);
        if (!hasSlept)
            co_return result;
    }
    const auto isEnabled = co_await isEnabledQuestion;
    const auto programs = co_await AtSpiBus::programs(bus);
    if (!isEnabled || !programs)
        co_return result;
    result.state = *isEnabled ? State::on : State::switchedOff;
    for (const AtSpiObject &program : *programs) {
        const auto process = co_await AtSpiBus::processOf(bus, program.owner);
        if (process)
            result.processes.append(*process);
    }
    co_return result;
}

void AtSpiAccessibilityTree::updateTrust()
{
    const bool isTrusted = m_bus->isOpen() && m_session.isEnabled();
    if (m_isTrusted == isTrusted)
        return;
    m_isTrusted = isTrusted;
    Q_EMIT trustChanged();
}

void AtSpiAccessibilityTree::connectNow()
{
    if (m_isConnecting || m_bus->isOpen())
        return;
    m_isConnecting = true;
    detach(stayConnected(m_tasks.token()), "connecting to the accessibility bus");
}

QCoro::Task<> AtSpiAccessibilityTree::stayConnected(std::stop_token token)
{
    for (size_t attempt = 0;; ++attempt) {
        const auto bus = m_bus;
        const auto address = co_await AtSpiSession::address(m_sessionBus);
        if (token.stop_requested())
            co_return;
        bool isOpen = false;
        if (address)
            isOpen = co_await AtSpiBus::open(bus, *address);
        if (token.stop_requested())
            co_return;
        if (isOpen)
            break;
        const auto delay = reconnectDelays[std::min(attempt, reconnectDelays.size() - 1)];
        const bool waited = co_await sleepFor(delay, token);
        if (!waited)
            co_return;
    }
    m_isConnecting = false;
}

QCoro::Task<std::optional<qint64>> AtSpiAccessibilityTree::processIdentifier(AccessibilityElement element)
{
    if (element.kind == AccessibilityElement::Kind::application)
        co_return element.processIdentifier;
    if (element.kind != AccessibilityElement::Kind::node)
        co_return std::nullopt;
    const auto process = co_await AtSpiBus::processOf(m_bus, element.owner);
    co_return process;
}

QCoro::Task<std::optional<bool>> AtSpiAccessibilityTree::isFocused(AccessibilityElement element)
{
    if (element.kind != AccessibilityElement::Kind::node)
        co_return std::nullopt;
    const auto bus = m_bus;
    const QPointer<AtSpiFocusTracker> focus(&m_focus);
    const AtSpiObject object = AtSpiObject::fromElement(element);
    const auto description = co_await AtSpiBus::describe(bus, object);
    if (!focus)
        co_return std::nullopt;
    if (description && description->is(AtSpiState::focused))
        co_return true;
    const auto other = co_await AtSpiFocusTracker::focusedIn(focus, object.owner);
    if (!other) {
        // With an answering program, an object without a description is one that is gone.
        const auto program = co_await AtSpiBus::describe(bus, AtSpiObject::root(object.owner));
        co_return program && !description ? std::optional(false) : std::nullopt;
    }
    if (*other == object) // fields made of several parts do not say so themselves
        co_return true;
    const auto seen = co_await AtSpiBus::describe(bus, *other);
    const bool isElsewhere = seen && seen->is(AtSpiState::focused) && !isFocusNoise(*seen);
    co_return isElsewhere ? std::optional(false) : std::nullopt;
}

QCoro::Task<std::optional<AccessibilityElement>>
AtSpiAccessibilityTree::focusedElement(AccessibilityElement element)
{
    const QPointer<AtSpiFocusTracker> focus(&m_focus);
    std::optional<AtSpiObject> object;
    if (element.kind == AccessibilityElement::Kind::systemWide)
        object = co_await AtSpiFocusTracker::focusedObject(focus);
    else if (element.kind == AccessibilityElement::Kind::application)
        object = co_await AtSpiFocusTracker::focusedObject(focus, element.processIdentifier);
    co_return object ? std::optional(object->toElement()) : std::nullopt;
}

QCoro::Task<std::optional<AccessibilityValue>> AtSpiAccessibilityTree::attribute(AccessibilityElement element,
                                                                                 QString name)
{
    const std::stop_token token = m_tasks.token();
    if (name == AX::focusedUIElement) {
        const auto focused = co_await focusedElement(element);
        co_return focused ? std::optional<AccessibilityValue>(*focused) : std::nullopt;
    }
    if (element.kind == AccessibilityElement::Kind::application)
        co_return name == AX::role ? std::optional<AccessibilityValue>(AX::application) : std::nullopt;
    if (element.kind != AccessibilityElement::Kind::node)
        co_return std::nullopt;

    const AtSpiObject object = AtSpiObject::fromElement(element);
    if (name == AX::role || name == AX::subrole) {
        const auto description = co_await AtSpiBus::describe(m_bus, object);
        if (!description)
            co_return std::nullopt;
        co_return textOrNothing(name == AX::role ? axRole(*description) : axSubrole(*description));
    }
    if (name == AX::value) {
        const auto text = co_await readText(object, token);
        co_return text ? std::optional<AccessibilityValue>(text->value) : std::nullopt;
    }
    if (name == AX::selectedTextRange) {
        const auto text = co_await readText(object, token);
        if (!text || !text->selection)
            co_return std::nullopt;
        co_return toCharacters(*text, *text->selection);
    }
    co_return std::nullopt;
}

QCoro::Task<bool> AtSpiAccessibilityTree::isAttributeSettable(AccessibilityElement element, QString name)
{
    if (element.kind != AccessibilityElement::Kind::node)
        co_return false;
    const auto description = co_await AtSpiBus::describe(m_bus, AtSpiObject::fromElement(element));
    if (!description)
        co_return false;
    if (name == AX::value)
        co_return AtSpiTextField::isWritable(*description);
    co_return name == AX::selectedTextRange &&AtSpiTextField::isReadable(*description);
}

QCoro::Task<WriteOutcome> AtSpiAccessibilityTree::setAttribute(AccessibilityElement element, QString name,
                                                               AccessibilityValue value)
{
    const std::stop_token token = m_tasks.token();
    WriteOutcome outcome = WriteOutcome::refused;
    if (element.kind != AccessibilityElement::Kind::node)
        co_return outcome;
    const AtSpiObject object = AtSpiObject::fromElement(element);
    if (name == AX::value && std::holds_alternative<QString>(value)) {
        outcome = co_await writeValue(object, std::get<QString>(value), token);
    } else if (name == AX::selectedTextRange && std::holds_alternative<TextRange>(value)) {
        const bool isSelected = co_await writeRange(object, std::get<TextRange>(value), token);
        outcome = isSelected ? WriteOutcome::done : WriteOutcome::refused;
    }
    co_return outcome;
}

// Always asks what the object is beside what it holds: a field may have turned into a password field since. A
// field that was read before is asked for both at once.
QCoro::Task<std::optional<AtSpiAccessibilityTree::Look>>
AtSpiAccessibilityTree::look(std::shared_ptr<AtSpiBus> bus, AtSpiObject object, LastRead known)
{
    std::optional<QCoro::Task<std::optional<AtSpiText>>> reading;
    if (known.object == object)
        reading.emplace(AtSpiTextField::read(bus, object, known.toolkit, known.characterCount));
    const auto description = co_await AtSpiBus::describe(bus, object);
    if (!description)
        co_return std::nullopt;
    Look result{*description, std::nullopt};
    if (!AtSpiTextField::isReadable(*description))
        co_return result;
    if (!reading)
        reading.emplace(AtSpiTextField::read(bus, object, description->toolkit, -1));
    result.text = co_await *reading;
    co_return result;
}

QCoro::Task<std::optional<AtSpiText>> AtSpiAccessibilityTree::readText(AtSpiObject object,
                                                                       std::stop_token token)
{
    const auto seen = co_await look(m_bus, object, m_lastRead);
    if (token.stop_requested())
        co_return std::nullopt;
    if (!seen || !seen->text) {
        if (m_lastRead.object == object)
            m_lastRead.isCaretKnown = false;
        co_return std::nullopt;
    }
    m_lastRead = {.object = object,
                  .toolkit = seen->description.toolkit,
                  .characterCount = seen->text->characterCount,
                  .value = seen->text->value,
                  .isCaretKnown = seen->text->selection.has_value()};
    co_return seen->text;
}

QCoro::Task<WriteOutcome> AtSpiAccessibilityTree::writeValue(AtSpiObject object, QString value,
                                                             std::stop_token token)
{
    const auto bus = m_bus;
    const LastRead known = m_lastRead.object == object ? m_lastRead : LastRead{};
    const auto seen = co_await look(bus, object, known);
    if (token.stop_requested() || !seen || !seen->text || !AtSpiTextField::isWritable(seen->description))
        co_return WriteOutcome::refused;
    const bool hasChanged = known.value && *known.value != seen->text->value;
    const bool wouldLoseText = !known.isCaretKnown && !seen->text->value.isEmpty();
    if (hasChanged || wouldLoseText)
        co_return WriteOutcome::refused;
    const AtSpiToolkit toolkit = seen->description.toolkit;
    const auto outcome = co_await AtSpiTextField::replace(bus, object, toolkit, *seen->text, value);
    if (token.stop_requested())
        co_return outcome;
    m_lastRead = {};
    if (outcome == WriteOutcome::done)
        m_lastRead = {.object = object,
                      .toolkit = toolkit,
                      .characterCount = AtSpiTextField::countOf(value, toolkit),
                      .value = value,
                      .isCaretKnown = true};
    co_return outcome;
}

QCoro::Task<bool> AtSpiAccessibilityTree::writeRange(AtSpiObject object, TextRange range,
                                                     std::stop_token token)
{
    const auto bus = m_bus;
    const auto seen = co_await look(bus, object, m_lastRead);
    if (token.stop_requested() || !seen || !seen->text)
        co_return false;
    const auto selection = toUtf16(*seen->text, range);
    const bool isDone =
        co_await AtSpiTextField::select(bus, object, seen->description.toolkit, *seen->text, selection);
    co_return isDone;
}
