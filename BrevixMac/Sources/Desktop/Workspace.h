// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/RunningApplication.h"

#include <QCoroTask>
#include <QObject>
#include <QRect>

#include <optional>

class QWindow;

/// The applications of the desktop session and which of them is in front. Main thread only.
class Workspace : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// The application that has the focus now, this one included. Answered from what is tracked; bounded in
    /// milliseconds.
    virtual std::optional<RunningApplication> frontmostApplication() const = 0;

    virtual std::optional<RunningApplication> application(qint64 processIdentifier) const = 0;

    /// Whether what is typed now arrives in @p application, and in the very window it names when it names
    /// one. Asks afresh, so a change that is still to be told counts already; bounded in milliseconds.
    virtual bool isInFront(const RunningApplication &application) = 0;

    virtual bool isTerminated(const RunningApplication &application) const = 0;

    /// Brings @p application's window to the front with the focus. True once it has the focus, or at once
    /// when it has it already; false when it is gone or did not get there within 500 ms.
    virtual QCoro::Task<bool> activate(RunningApplication application) = 0;

    /// Gives one of our own windows the keyboard focus, past focus-stealing prevention.
    virtual void activateOwnWindow(QWindow *window) = 0;

    /// Puts one of our own windows, which has just been shown, on every virtual desktop. Hiding it ends that.
    virtual void joinAllDesktops(QWindow *window) = 0;

    /// Whether a compositing manager blends translucent windows now.
    virtual bool isCompositing() const = 0;

Q_SIGNALS:
    /// Another application, or this one, has come to the front.
    void didActivateApplication();
};
