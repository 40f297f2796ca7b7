// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/RunningApplication.h"

#include <QCoroTask>
#include <QObject>

/// Synthetic key presses. Main thread only.
class KeyEvents : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Whether this session has a working way to post keys. Known without a round trip.
    virtual bool isPostingAllowed() const = 0;

    /// Starts the session's consent where there is one; postingAllowedChanged() tells the outcome.
    virtual void requestPosting() = 0;

    /// Presses and releases the paste chord of @p convention once, in whatever has the focus. Waits up to 2 s
    /// for modifiers that the user still holds, and releases every key it pressed on each path. False when
    /// nothing could be posted.
    virtual QCoro::Task<bool> postPasteChord(PasteConvention convention) = 0;

Q_SIGNALS:
    void postingAllowedChanged();
};
