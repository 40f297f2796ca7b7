// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AppStateInterfaces.h"

#include <QObject>

class HotKeys;

/// The one global hotkey and what it runs. Main thread only.
class HotkeyService final : public QObject, public HotkeyRegistering
{
    Q_OBJECT

public:
    /// @p hotKeys must outlive this object.
    explicit HotkeyService(HotKeys &hotKeys);
    ~HotkeyService() override;

    /// The application's own instance.
    static HotkeyService *shared();

    /// Makes @p shortcut the hotkey and @p handler what it runs, in place of an earlier one. A combination
    /// the session refuses leaves no registration; isRegistered() tells.
    void registerHotkey(const KeyboardShortcut &shortcut, std::function<void()> handler) override;
    void unregisterHotkey() override;

    bool isRegistered() const { return m_isRegistered; }

    /// Whether the session refused the combination, at the registration or since: somebody else holds it, or
    /// there are no hotkeys here.
    bool wasRefused() const { return m_handler && !m_isRegistered; }

Q_SIGNALS:
    void registrationChanged();

private:
    void setRegistered(bool isRegistered);

    HotKeys &m_hotKeys;
    std::function<void()> m_handler;
    bool m_isRegistered = false;
};
