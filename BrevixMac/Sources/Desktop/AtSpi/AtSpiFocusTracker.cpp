// SPDX-License-Identifier: GPL-3.0-or-later
#include "AtSpiFocusTracker.h"

#include "AtSpiFocusSearch.h"
#include "AtSpiRoles.h"

#include <QPointer>

namespace {

// A window that comes to the front usually names its focus itself; GTK 4 often does not.
constexpr std::chrono::milliseconds timeToNameTheFocus{40};

} // namespace

AtSpiFocusTracker::AtSpiFocusTracker(std::shared_ptr<AtSpiBus> bus)
    : m_bus(std::move(bus))
{
    connect(m_bus.get(), &AtSpiBus::focusGained, this, &AtSpiFocusTracker::onFocusGained);
    connect(m_bus.get(), &AtSpiBus::windowActivated, this, &AtSpiFocusTracker::onWindowActivated);
    connect(m_bus.get(), &AtSpiBus::caretMoved, this, &AtSpiFocusTracker::onCaretMoved);
    connect(m_bus.get(), &AtSpiBus::programLeft, this, &AtSpiFocusTracker::onProgramLeft);
    connect(m_bus.get(), &AtSpiBus::closed, this, &AtSpiFocusTracker::forgetEverything);
}

QCoro::Task<std::optional<AtSpiObject>> AtSpiFocusTracker::focusedObject(QPointer<AtSpiFocusTracker> tracker)
{
    if (tracker->m_frontProcess != 0) {
        const auto object = co_await focusedObject(tracker, tracker->m_frontProcess);
        co_return object;
    }
    if (tracker->m_frontOwner.isEmpty())
        co_return std::nullopt;
    const auto object = co_await focusedIn(tracker, tracker->m_frontOwner);
    co_return object;
}

QCoro::Task<std::optional<AtSpiObject>> AtSpiFocusTracker::focusedObject(QPointer<AtSpiFocusTracker> tracker,
                                                                         qint64 processIdentifier)
{
    const QString owner = co_await AtSpiBus::ownerOf(tracker->m_bus, processIdentifier);
    if (!tracker || owner.isEmpty())
        co_return std::nullopt;
    const auto object = co_await focusedIn(tracker, owner);
    co_return object;
}

QCoro::Task<std::optional<AtSpiObject>> AtSpiFocusTracker::focusedIn(QPointer<AtSpiFocusTracker> tracker,
                                                                     QString owner)
{
    const auto bus = tracker->m_bus;
    if (const auto record = tracker->m_records.constFind(owner); record != tracker->m_records.constEnd()) {
        const AtSpiObject current = record->current;
        const AtSpiObject field = record->takesText.value_or(current);
        auto currentQuestion = AtSpiBus::describe(bus, current);
        auto fieldQuestion = AtSpiBus::describe(bus, field);
        const auto currentDescription = co_await currentQuestion;
        const auto fieldDescription = co_await fieldQuestion;
        if (currentDescription && isOnScreen(*currentDescription))
            co_return current;
        if (fieldDescription && isOnScreen(*fieldDescription) && takesText(*fieldDescription))
            co_return field;
    }
    const auto found = co_await findFocusedObject(bus, owner);
    if (!found || !tracker)
        co_return found;
    const auto description = co_await AtSpiBus::describe(bus, *found);
    if (description && tracker)
        tracker->note(*found, *description, ++tracker->m_serial);
    co_return found;
}

void AtSpiFocusTracker::applicationActivated(qint64 processIdentifier)
{
    m_frontProcess = processIdentifier;
    if (processIdentifier != 0)
        detach(lookAhead(processIdentifier, m_serial, m_tasks.token()), "looking for the focused field");
}

void AtSpiFocusTracker::onFocusGained(const AtSpiObject &object)
{
    m_frontOwner = object.owner;
    detach(consider(object, ++m_serial, m_tasks.token()), "following the focus");
}

void AtSpiFocusTracker::onWindowActivated(const AtSpiObject &window)
{
    m_frontOwner = window.owner;
    detach(lookAhead(window.owner, m_serial, m_tasks.token()), "looking for the focused field");
}

// Arrives with every key typed, so it must cost nothing for the field that is known already.
void AtSpiFocusTracker::onCaretMoved(const AtSpiObject &object)
{
    if (m_records.value(object.owner).current == object || m_caretInQuestion == object)
        return;
    m_caretInQuestion = object;
    detach(considerCaret(object, ++m_serial, m_tasks.token()), "following the caret");
}

void AtSpiFocusTracker::onProgramLeft(const QString &owner)
{
    m_records.remove(owner);
    if (m_frontOwner == owner)
        m_frontOwner.clear();
}

void AtSpiFocusTracker::forgetEverything()
{
    m_records.clear();
    m_frontOwner.clear();
    m_caretInQuestion = {};
}

void AtSpiFocusTracker::note(const AtSpiObject &object, const AtSpiDescription &description, quint64 serial)
{
    if (isFocusNoise(description))
        return;
    Record &record = m_records[object.owner];
    if (serial < record.serial)
        return; // the answer about an earlier focus came later
    record.current = object;
    record.serial = serial;
    if (takesText(description))
        record.takesText = object;
}

QCoro::Task<> AtSpiFocusTracker::consider(AtSpiObject object, quint64 serial, std::stop_token token)
{
    const auto description = co_await AtSpiBus::describe(m_bus, object);
    if (token.stop_requested() || !description)
        co_return;
    note(object, *description, serial);
}

// The caret also moves where the user is not, in logs that grow for example. Composite fields of GTK 4 hold
// the caret without ever being FOCUSED.
QCoro::Task<> AtSpiFocusTracker::considerCaret(AtSpiObject object, quint64 serial, std::stop_token token)
{
    const auto description = co_await AtSpiBus::describe(m_bus, object);
    if (token.stop_requested())
        co_return;
    m_caretInQuestion = {};
    if (!description || !takesText(*description))
        co_return;
    if (description->is(AtSpiState::focused) || description->toolkit == AtSpiToolkit::gtk4)
        note(object, *description, serial);
}

QCoro::Task<> AtSpiFocusTracker::lookAhead(QString owner, quint64 serial, std::stop_token token)
{
    const bool waited = co_await sleepFor(timeToNameTheFocus, token);
    if (!waited || m_records.value(owner).serial > serial)
        co_return;
    const auto found = co_await findFocusedObject(m_bus, owner);
    if (token.stop_requested() || !found)
        co_return;
    const auto description = co_await AtSpiBus::describe(m_bus, *found);
    if (token.stop_requested() || !description || m_records.value(owner).serial > serial)
        co_return;
    note(*found, *description, ++m_serial);
}

QCoro::Task<> AtSpiFocusTracker::lookAhead(qint64 processIdentifier, quint64 serial, std::stop_token token)
{
    const QString owner = co_await AtSpiBus::ownerOf(m_bus, processIdentifier);
    if (token.stop_requested() || owner.isEmpty())
        co_return;
    co_await lookAhead(owner, serial, token);
}
