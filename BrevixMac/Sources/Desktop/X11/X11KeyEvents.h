// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/KeyEvents.h"
#include "Foundation/TaskScope.h"
#include "X11Connection.h"

#include <QList>

#include <chrono>
#include <stop_token>

/// Posts keys through the XTEST extension. Main thread only.
///
/// A chord goes to the server in one piece, with the time for which the key is held: neither a busy event
/// loop nor an error in between can leave a key down or make it repeat. That holds back what comes after it
/// on the same connection, hence the connection of its own.
class X11KeyEvents final : public KeyEvents
{
    Q_OBJECT

public:
    /// Everything sent over @p shared before a chord reaches the server before the chord does.
    explicit X11KeyEvents(X11Connection &shared, QObject *parent = nullptr);
    /// Waits for the release of a chord on its way, some ten milliseconds at most.
    ~X11KeyEvents() override;

    bool isPostingAllowed() const override;
    /// X11 has no consent to ask for.
    void requestPosting() override {}
    QCoro::Task<bool> postPasteChord(PasteConvention convention, Guard isStillWanted = {}) override;

Q_SIGNALS:
    /// The modifiers are free and the chord goes out when the handlers return.
    void aboutToPostPasteChord();
    /// It did not after all, because the focus has moved in the last moment.
    void pasteChordDropped();

private:
    bool isKeyboardInUse(PasteConvention convention);
    xcb_window_t inputFocus();
    bool post(const QList<xcb_keycode_t> &keys, xcb_window_t agreedFocus);

    X11Connection &m_shared;
    X11Connection m_connection;
    bool m_hasTestExtension = false;
    bool m_isPosting = false;
    bool m_hasPosted = false;
    TaskScope m_tasks; // keep last: stops the coroutines before the other members die
};
