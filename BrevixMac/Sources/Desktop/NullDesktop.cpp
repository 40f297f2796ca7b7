// SPDX-License-Identifier: GPL-3.0-or-later
#include "NullDesktop.h"

#include <QWindow>

QCoro::Task<std::optional<AccessibilityValue>> NullAccessibilityTree::attribute(AccessibilityElement, QString)
{
    co_return std::nullopt;
}

QCoro::Task<WriteOutcome> NullAccessibilityTree::setAttribute(AccessibilityElement, QString,
                                                              AccessibilityValue)
{
    co_return WriteOutcome::refused;
}

QCoro::Task<bool> NullAccessibilityTree::isAttributeSettable(AccessibilityElement, QString)
{
    co_return false;
}

QCoro::Task<std::optional<bool>> NullAccessibilityTree::isFocused(AccessibilityElement)
{
    co_return std::nullopt;
}

QCoro::Task<std::optional<qint64>> NullAccessibilityTree::processIdentifier(AccessibilityElement)
{
    co_return std::nullopt;
}

QCoro::Task<std::optional<QList<PasteboardItem>>> NullPasteboard::items()
{
    co_return QList<PasteboardItem>();
}

QCoro::Task<bool> NullWorkspace::activate(RunningApplication)
{
    co_return false;
}

void NullWorkspace::activateOwnWindow(QWindow *window)
{
    if (window)
        window->requestActivate();
}

QCoro::Task<bool> NullKeyEvents::postPasteChord(PasteConvention, Guard)
{
    co_return false;
}

std::unique_ptr<EventMonitor::Subscription>
NullEventMonitor::addGlobalMonitor(MonitoredEvent::Types, std::function<void(const MonitoredEvent &)>)
{
    return std::make_unique<Subscription>([] {});
}

void NullWebBrowser::open(const QUrl &)
{
    QMetaObject::invokeMethod(this, &WebBrowser::failed, Qt::QueuedConnection);
}
