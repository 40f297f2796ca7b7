// SPDX-License-Identifier: GPL-3.0-or-later
#include "HotkeyService.h"

#include "Desktop/HotKeys.h"

namespace {

HotkeyService *sharedInstance = nullptr;

}

HotkeyService::HotkeyService(HotKeys &hotKeys)
    : m_hotKeys(hotKeys)
{
    if (!sharedInstance)
        sharedInstance = this;
    // Queued: the mechanism's callback returns at once, and the handler may register anew.
    connect(
        &hotKeys, &HotKeys::pressed, this,
        [this] {
            if (const auto handler = m_handler)
                handler();
        },
        Qt::QueuedConnection);
    connect(&hotKeys, &HotKeys::lost, this, [this] { setRegistered(false); });
    connect(&hotKeys, &HotKeys::regained, this, [this] { setRegistered(true); });
}

HotkeyService::~HotkeyService()
{
    m_hotKeys.unregisterHotKey();
    if (sharedInstance == this)
        sharedInstance = nullptr;
}

HotkeyService *HotkeyService::shared()
{
    return sharedInstance;
}

void HotkeyService::registerHotkey(const KeyboardShortcut &shortcut, std::function<void()> handler)
{
    m_hotKeys.unregisterHotKey();
    m_handler = std::move(handler);
    setRegistered(m_hotKeys.registerHotKey(shortcut.keyCode, shortcut.modifiers));
}

void HotkeyService::unregisterHotkey()
{
    m_hotKeys.unregisterHotKey();
    m_handler = nullptr;
    setRegistered(false);
}

void HotkeyService::setRegistered(bool isRegistered)
{
    m_isRegistered = isRegistered;
    Q_EMIT registrationChanged();
}
