// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "KeyboardShortcut.h"

#include <QWidget>

#include <functional>

class KeyCapture;
class KeyCaps;
class ShortcutCaptureMonitor;
class ThemedButton;

/// Shows a shortcut and records a new one. Keeps none itself: the owner sets what onChange decided.
class ShortcutRecorderView final : public QWidget
{
    Q_OBJECT

public:
    using Change = std::function<void(const KeyboardShortcut &)>;

    /// @p keyCapture must outlive this widget.
    ShortcutRecorderView(KeyCapture &keyCapture, Change onChange, QWidget *parent = nullptr);
    ~ShortcutRecorderView() override;

    const KeyboardShortcut &shortcut() const { return m_shortcut; }
    void setShortcut(const KeyboardShortcut &shortcut);

    ThemedButton &recordButton() const { return *m_record; }
    ThemedButton &resetButton() const { return *m_reset; }
    ShortcutCaptureMonitor &monitor() const { return *m_monitor; }

Q_SIGNALS:
    void isRecordingChanged();
    void refused(const QString &reason);

private:
    void toggleRecording();
    void refresh();

    Change m_onChange;
    KeyboardShortcut m_shortcut;
    KeyCaps *m_caps;
    ThemedButton *m_record;
    ThemedButton *m_reset;
    ShortcutCaptureMonitor *m_monitor;
};
