// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/AccessibilityTree.h"
#include "Desktop/EventMonitor.h"
#include "Desktop/HotKeys.h"
#include "Desktop/KeyCapture.h"
#include "Desktop/KeyEvents.h"
#include "Desktop/LoginItem.h"
#include "Desktop/Pasteboard.h"
#include "Desktop/StatusItem.h"
#include "Desktop/WebAuthenticationSession.h"
#include "Desktop/Workspace.h"

#include "Foundation/TaskScope.h"

#include <QMap>

#include <chrono>
#include <functional>
#include <utility>

/// A stateful desktop in memory, for what real ones cannot be made to do on demand. Each seam keeps its state
/// in public members that a test arranges and inspects.

class InMemoryAccessibilityTree : public AccessibilityTree
{
public:
    struct Field
    {
        std::optional<qint64> pid = {};
        std::optional<QString> role = {};
        std::optional<QString> subrole = {};
        std::optional<QString> value = {};
        std::optional<TextRange> selectedRange = {};
        bool isSettable = true;
        bool acceptsWrites = true;
        bool acceptsCaret = true;
        std::optional<bool> isFocused = {};
        WriteOutcome refusal = WriteOutcome::refused;     ///< of a write that is not accepted
        QMap<QString, AccessibilityValue> oddValues = {}; ///< answers in place of the above, by attribute
    };

    QMap<QString, Field> fields; ///< by element path
    std::optional<QString> focusedPath;
    QMap<qint64, QString> focusedPathByApplication;
    bool trusted = true;
    int trustRequests = 0;
    QList<TextRange> writtenRanges;
    std::chrono::milliseconds delay{0}; ///< of every round trip to an application
    std::function<void(const QString &)>
        onRequest; ///< told each round trip, as "read AXValue" or "write AXValue"

    static AccessibilityElement element(const QString &path)
    {
        return {.kind = AccessibilityElement::Kind::node, .owner = QStringLiteral("memory"), .path = path};
    }

    QCoro::Task<std::optional<AccessibilityValue>> attribute(AccessibilityElement element,
                                                             QString name) override
    {
        co_await roundTrip(u"read " + name);
        co_return read(element, name);
    }

    QCoro::Task<WriteOutcome> setAttribute(AccessibilityElement element, QString name,
                                           AccessibilityValue value) override
    {
        co_await roundTrip(u"write " + name);
        const auto field = fields.find(element.path);
        if (element.kind != AccessibilityElement::Kind::node || field == fields.end())
            co_return WriteOutcome::refused;
        if (!field->acceptsWrites)
            co_return field->refusal;
        if (name == AX::value && std::holds_alternative<QString>(value)) {
            field->value = std::get<QString>(value);
            co_return WriteOutcome::done;
        }
        if (name == AX::selectedTextRange && std::holds_alternative<TextRange>(value) &&
            field->acceptsCaret) {
            field->selectedRange = std::get<TextRange>(value);
            writtenRanges.append(std::get<TextRange>(value));
            co_return WriteOutcome::done;
        }
        co_return WriteOutcome::refused;
    }

    QCoro::Task<bool> isAttributeSettable(AccessibilityElement element, QString name) override
    {
        co_await roundTrip(u"ask to write " + name);
        co_return element.kind == AccessibilityElement::Kind::node &&fields.value(element.path)
                                      .isSettable &&fields.contains(element.path);
    }

    QCoro::Task<std::optional<qint64>> processIdentifier(AccessibilityElement element) override
    {
        co_await roundTrip(QStringLiteral("read the process"));
        co_return fields.value(element.path).pid;
    }

    QCoro::Task<std::optional<bool>> isFocused(AccessibilityElement element) override
    {
        co_await roundTrip(QStringLiteral("ask for the focus"));
        const auto field = fields.find(element.path);
        co_return field == fields.end() ? std::nullopt : field->isFocused;
    }

    bool isProcessTrusted() const override { return trusted; }
    void requestTrust() override { ++trustRequests; }

private:
    QCoro::Task<> roundTrip(QString request)
    {
        if (onRequest)
            onRequest(request);
        if (delay.count() > 0)
            co_await sleepFor(delay);
    }

    std::optional<AccessibilityValue> read(const AccessibilityElement &target, const QString &name) const
    {
        if (name == AX::focusedUIElement) {
            if (target.kind == AccessibilityElement::Kind::systemWide && focusedPath)
                return element(*focusedPath);
            if (target.kind == AccessibilityElement::Kind::application &&
                focusedPathByApplication.contains(target.processIdentifier))
                return element(focusedPathByApplication.value(target.processIdentifier));
            return std::nullopt;
        }
        const auto field = fields.find(target.path);
        if (field == fields.end())
            return std::nullopt;
        if (field->oddValues.contains(name))
            return field->oddValues.value(name);
        const auto text = [](const std::optional<QString> &value) -> std::optional<AccessibilityValue> {
            return value ? std::optional<AccessibilityValue>(*value) : std::nullopt;
        };
        if (name == AX::role)
            return text(field->role);
        if (name == AX::subrole)
            return text(field->subrole);
        if (name == AX::value)
            return text(field->value);
        if (name == AX::selectedTextRange && field->selectedRange)
            return *field->selectedRange;
        return std::nullopt;
    }
};

class InMemoryPasteboard : public Pasteboard
{
public:
    QList<PasteboardItem> content;
    bool isOwnerHung = false;
    bool refusesText = false;
    bool restoresLate = false; ///< only when finishRestoring() is called
    QStringList history;       ///< every operation in order, for checking sequences
    QList<PasteConvention> transientConventions;
    std::chrono::milliseconds delay{0}; ///< until items() answers

    static PasteboardItem textItem(const QString &text)
    {
        return {.types = {{QStringLiteral("text/plain;charset=utf-8"), text.toUtf8()}}};
    }

    QString text() const
    {
        return content.isEmpty() || content.first().types.isEmpty()
                   ? QString()
                   : QString::fromUtf8(content.first().types.first().second);
    }

    QCoro::Task<std::optional<QList<PasteboardItem>>> items() override
    {
        history.append(QStringLiteral("items"));
        if (delay.count() > 0)
            co_await sleepFor(delay);
        if (isOwnerHung)
            co_return std::nullopt;
        co_return std::optional(content);
    }

    bool setString(const QString &text) override
    {
        history.append(QStringLiteral("setString"));
        if (refusesText)
            return false;
        content = {textItem(text)};
        return true;
    }

    bool setTransientString(const QString &text, PasteConvention convention) override
    {
        history.append(QStringLiteral("setTransientString"));
        transientConventions.append(convention);
        if (refusesText)
            return false;
        content = {textItem(text)};
        return true;
    }

    bool restore(const QList<PasteboardItem> &items) override
    {
        history.append(QStringLiteral("restore"));
        m_restoredContent = items;
        if (!restoresLate)
            finishRestoring();
        return true;
    }

    void finishRestoring()
    {
        content = *std::exchange(m_restoredContent, std::nullopt);
        Q_EMIT restored();
    }

    bool isRestorePending() const override { return m_restoredContent.has_value(); }

    void clearContents() override
    {
        history.append(QStringLiteral("clearContents"));
        content.clear();
    }

private:
    std::optional<QList<PasteboardItem>> m_restoredContent;
};

class InMemoryWorkspace : public Workspace
{
public:
    QMap<qint64, RunningApplication> running;
    std::optional<qint64> frontmost;
    bool refusesActivation = false;
    QList<qint64> activations;
    std::chrono::milliseconds delay{0}; ///< until an activation has its answer
    std::function<void()> onActivation; ///< after an application was brought to the front
    bool compositing = true;

    void addApplication(qint64 pid, const QString &name, const std::optional<QString> &bundleID = {})
    {
        running.insert(pid, {.processIdentifier = pid, .bundleIdentifier = bundleID, .localizedName = name});
    }

    void bringToFront(qint64 pid)
    {
        frontmost = pid;
        Q_EMIT didActivateApplication();
    }

    std::optional<RunningApplication> frontmostApplication() const override
    {
        return frontmost ? application(*frontmost) : std::nullopt;
    }

    std::optional<RunningApplication> application(qint64 pid) const override
    {
        const auto found = running.find(pid);
        return found == running.end() ? std::nullopt : std::optional(*found);
    }

    bool isInFront(const RunningApplication &application) override
    {
        return frontmost == application.processIdentifier && running.contains(*frontmost) &&
               (application.window == 0 || running[*frontmost].window == application.window);
    }

    bool isTerminated(const RunningApplication &application) const override
    {
        return !running.contains(application.processIdentifier);
    }

    QCoro::Task<bool> activate(RunningApplication application) override
    {
        activations.append(application.processIdentifier);
        if (delay.count() > 0)
            co_await sleepFor(delay);
        if (refusesActivation || isTerminated(application))
            co_return false;
        frontmost = application.processIdentifier;
        if (onActivation)
            onActivation();
        co_return true;
    }

    void activateOwnWindow(QWindow *) override { ++ownActivations; }
    int ownActivations = 0;
    void joinAllDesktops(QWindow *window) override { onAllDesktops = window; }
    QWindow *onAllDesktops = nullptr; ///< the last one
    bool isCompositing() const override { return compositing; }
};

class InMemoryKeyEvents : public KeyEvents
{
public:
    bool allowed = true;
    int requests = 0;
    bool fails = false; ///< the chord cannot be posted although it is allowed
    QList<PasteConvention> postedChords;
    std::function<void()> onPaste;         ///< what the application in front does with the chord
    std::function<void()> onHeldModifiers; ///< what happens while the chord waits for them

    bool isPostingAllowed() const override { return allowed; }
    void requestPosting() override { ++requests; }

    QCoro::Task<bool> postPasteChord(PasteConvention convention, Guard isStillWanted) override
    {
        if (fails)
            co_return false;
        if (onHeldModifiers)
            onHeldModifiers();
        const bool isWanted = co_await isWantedBy(isStillWanted);
        if (!isWanted)
            co_return false;
        postedChords.append(convention);
        if (onPaste)
            onPaste();
        co_return true;
    }

private:
    static QCoro::Task<bool> isWantedBy(Guard guard)
    {
        if (!guard)
            co_return true;
        const bool isWanted = co_await guard();
        co_return isWanted;
    }
};

class InMemoryEventMonitor : public EventMonitor
{
public:
    struct Entry
    {
        MonitoredEvent::Types types;
        std::function<void(const MonitoredEvent &)> handler;
    };
    QMap<int, Entry> entries;

    void post(const MonitoredEvent &event)
    {
        const auto present = entries;
        for (const Entry &entry : present) {
            if (entry.types.testFlag(event.type))
                entry.handler(event);
        }
    }

    std::unique_ptr<Subscription>
    addGlobalMonitor(MonitoredEvent::Types types,
                     std::function<void(const MonitoredEvent &)> handler) override
    {
        const int key = m_next++;
        entries.insert(key, {types, std::move(handler)});
        return std::make_unique<Subscription>([this, key] { entries.remove(key); });
    }

private:
    int m_next = 0;
};

class InMemoryHotKeys : public HotKeys
{
public:
    std::optional<std::pair<quint32, quint64>> registered;
    bool isTaken = false; ///< every combination
    QList<std::pair<quint32, quint64>> takenByOthers;
    bool available = true;
    int registrations = 0;

    bool registerHotKey(quint32 keyCode, quint64 modifiers) override
    {
        registered.reset();
        ++registrations;
        if (isTaken || !available || takenByOthers.contains(std::pair(keyCode, modifiers)))
            return false;
        registered = {keyCode, modifiers};
        return true;
    }

    void unregisterHotKey() override { registered.reset(); }
    bool isAvailable() const override { return available; }
};

class InMemoryKeyCapture : public KeyCapture
{
public:
    bool isRefused = false;
    bool isActive = false;
    std::optional<quint32> numberOfEveryKey; ///< what keyCode() answers

    void press(const CapturedKey &key)
    {
        if (const Handler handler = m_handler)
            handler(key);
    }

    std::unique_ptr<Session> begin(QWindow &, Handler handler) override
    {
        struct Held final : Session
        {
            explicit Held(InMemoryKeyCapture &capture)
                : m_capture(capture)
            {
            }
            ~Held() override
            {
                m_capture.isActive = false;
                m_capture.m_handler = nullptr;
            }
            InMemoryKeyCapture &m_capture;
        };
        if (isRefused)
            return nullptr;
        m_handler = std::move(handler);
        isActive = true;
        return std::make_unique<Held>(*this);
    }

    std::optional<quint32> keyCode(quint32) const override { return numberOfEveryKey; }

private:
    Handler m_handler;
};

class InMemoryLoginItem : public LoginItem
{
public:
    bool enabled = false;
    std::optional<QString> problem; ///< every change fails with it

    bool isEnabled() const override { return enabled; }

    std::optional<QString> setEnabled(bool wanted) override
    {
        if (!problem)
            enabled = wanted;
        return problem;
    }
};

class InMemoryStatusItem : public StatusItem
{
public:
    QString toolTip;
    QIcon image;
    bool installed = false;
    bool shown = true;
    std::optional<QRect> place = QRect(1000, 0, 24, 24);

    void setImage(const QIcon &icon) override { image = icon; }
    void setToolTip(const QString &text) override { toolTip = text; }
    void install() override { installed = true; }
    bool isShown() const override { return installed && shown; }
    std::optional<QRect> geometry() const override { return isShown() ? place : std::nullopt; }
};

class InMemoryWebAuthenticationSession : public WebAuthenticationSession
{
public:
    bool refusesToStart = false;
    bool hasNoBrowser = false;
    int starts = 0;
    int cancellations = 0;
    std::optional<Request> running;

    bool start(Request request, Completion completion) override
    {
        if (refusesToStart || running)
            return false;
        ++starts;
        running = std::move(request);
        m_completion = std::move(completion);
        if (hasNoBrowser)
            QMetaObject::invokeMethod(this, &WebAuthenticationSession::browserUnavailable,
                                      Qt::QueuedConnection);
        return true;
    }

    void cancel() override
    {
        if (!running)
            return;
        ++cancellations;
        end({.error = WebAuthenticationError(WebAuthenticationError::Code::canceledLogin)});
    }

    void openURL(const QString &address) override
    {
        const QUrl url(address);
        if (!running)
            return;
        if (running->isAnswer(url))
            end({.callbackURL = url});
        else
            Q_EMIT callbackRejected();
    }

    /// Ends the session with @p result, whatever that is.
    void end(const Result &result)
    {
        running.reset();
        const Completion completion = std::exchange(m_completion, nullptr);
        completion(result);
    }

    /// Loses track of the session: it never ends.
    void forget()
    {
        running.reset();
        m_completion = nullptr;
    }

private:
    Completion m_completion;
};
