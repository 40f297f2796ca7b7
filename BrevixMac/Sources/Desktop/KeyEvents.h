// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/RunningApplication.h"

#include <QCoroTask>
#include <QObject>

#include <functional>

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

    /// Asked when the keyboard is free and the chord would go out; false means not to post it.
    using Guard = std::function<QCoro::Task<bool>()>;

    /// Presses and releases the paste chord of @p convention once, in whatever has the focus. Waits up to 2 s
    /// for modifiers that the user still holds, and releases every key it pressed on each path. False when
    /// nothing could be posted, or @p isStillWanted (where there is one) says no.
    virtual QCoro::Task<bool> postPasteChord(PasteConvention convention, Guard isStillWanted = {}) = 0;

Q_SIGNALS:
    void postingAllowedChanged();
};
