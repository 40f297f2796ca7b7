// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/KeyCapture.h"
#include "Desktop/X11/X11Connection.h"

/// Captures by an active grab of the keyboard. The X server ends the grab when the window leaves the screen
/// or this process ends.
class X11KeyCapture final : public KeyCapture
{
public:
    /// @p connection must outlive this object and its sessions.
    explicit X11KeyCapture(X11Connection &connection);
    ~X11KeyCapture() override;

    std::unique_ptr<Session> begin(QWindow &window, Handler handler) override;
    std::optional<quint32> keyCode(quint32 scanCode) const override;

private:
    class Grab;

    X11Connection &m_connection;
    std::shared_ptr<Grab> m_grab; ///< the present one, or one that waits for a key to come up
};
