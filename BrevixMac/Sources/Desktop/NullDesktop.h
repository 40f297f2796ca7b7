// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/AccessibilityTree.h"
#include "Desktop/EventMonitor.h"
#include "Desktop/HotKeys.h"
#include "Desktop/KeyCapture.h"
#include "Desktop/KeyEvents.h"
#include "Desktop/Pasteboard.h"
#include "Desktop/StatusItem.h"
#include "Desktop/WebAuthenticationSession.h"
#include "Desktop/WebBrowser.h"
#include "Desktop/Workspace.h"

/// Mechanisms for a session that offers none: nothing is there, nothing is allowed, every wish is refused at
/// once.

class NullAccessibilityTree final : public AccessibilityTree
{
    Q_OBJECT

public:
    QCoro::Task<std::optional<AccessibilityValue>> attribute(AccessibilityElement element,
                                                             QString name) override;
    QCoro::Task<WriteOutcome> setAttribute(AccessibilityElement element, QString name,
                                           AccessibilityValue value) override;
    QCoro::Task<bool> isAttributeSettable(AccessibilityElement element, QString name) override;
    QCoro::Task<std::optional<qint64>> processIdentifier(AccessibilityElement element) override;
    QCoro::Task<std::optional<bool>> isFocused(AccessibilityElement element) override;
    bool isProcessTrusted() const override { return false; }
    void requestTrust() override {}
};

class NullPasteboard final : public Pasteboard
{
    Q_OBJECT

public:
    QCoro::Task<std::optional<QList<PasteboardItem>>> items() override;
    bool setString(const QString &) override { return false; }
    bool setTransientString(const QString &, PasteConvention) override { return false; }
    bool restore(const QList<PasteboardItem> &) override { return false; }
    bool isRestorePending() const override { return false; }
    void clearContents() override {}
};

class NullWorkspace final : public Workspace
{
    Q_OBJECT

public:
    std::optional<RunningApplication> frontmostApplication() const override { return std::nullopt; }
    std::optional<RunningApplication> application(qint64) const override { return std::nullopt; }
    bool isTerminated(const RunningApplication &) const override { return true; }
    bool isInFront(const RunningApplication &) override { return false; }
    QCoro::Task<bool> activate(RunningApplication application) override;

    /// As far as Qt's own request goes.
    void activateOwnWindow(QWindow *window) override;
    void joinAllDesktops(QWindow *) override {}
    bool isCompositing() const override { return false; }
};

class NullKeyEvents final : public KeyEvents
{
    Q_OBJECT

public:
    bool isPostingAllowed() const override { return false; }
    void requestPosting() override {}
    QCoro::Task<bool> postPasteChord(PasteConvention convention, Guard isStillWanted) override;
};

class NullEventMonitor final : public EventMonitor
{
    Q_OBJECT

public:
    [[nodiscard]] std::unique_ptr<Subscription>
    addGlobalMonitor(MonitoredEvent::Types types,
                     std::function<void(const MonitoredEvent &)> handler) override;
};

class NullHotKeys final : public HotKeys
{
    Q_OBJECT

public:
    bool registerHotKey(quint32, quint64) override { return false; }
    void unregisterHotKey() override {}
    bool isAvailable() const override { return false; }
};

class NullKeyCapture final : public KeyCapture
{
public:
    std::unique_ptr<Session> begin(QWindow &, Handler) override { return nullptr; }
    std::optional<quint32> keyCode(quint32) const override { return std::nullopt; }
};

class NullStatusItem final : public StatusItem
{
    Q_OBJECT

public:
    void setImage(const QIcon &) override {}
    void setToolTip(const QString &) override {}
    void install() override {}
    bool isShown() const override { return false; }
    std::optional<QRect> geometry() const override { return std::nullopt; }
};

class NullWebAuthenticationSession final : public WebAuthenticationSession
{
    Q_OBJECT

public:
    bool start(Request, Completion) override { return false; }
    void cancel() override {}
    void openURL(const QString &) override {}
};

class NullWebBrowser final : public WebBrowser
{
    Q_OBJECT

public:
    void open(const QUrl &) override;
};
