// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "KeyboardShortcut.h"

#include "Desktop/KeyCapture.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

class QKeyEvent;
class QWidget;

/// Captures one key combination for a recorder. Main thread only. While it records it has the keyboard, where
/// the session gives it away, and swallows every key that reaches this application; both end with the
/// recording, which ends by an accepted combination, stop(), its window's loss of the focus, its widget's
/// disappearance, a time limit, or the end of this object.
class ShortcutCaptureMonitor final : public QObject
{
    Q_OBJECT

public:
    using Captured = std::function<void(quint32 keyCode, quint64 modifiers)>;

    /// How long the keyboard may be held.
    static constexpr std::chrono::seconds timeLimit{20};

    /// Records for @p widget. Both must outlive this object.
    ShortcutCaptureMonitor(KeyCapture &keyCapture, QWidget &widget);
    ~ShortcutCaptureMonitor() override;

    bool isRecording() const { return m_isRecording; }

    /// Ends an earlier recording and starts a new one. @p onCapture is called once, with the first
    /// combination that can be a shortcut.
    void begin(Captured onCapture);
    void stop();

    void setTimeLimit(std::chrono::milliseconds limit) { m_limit.setInterval(limit); }

    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    void isRecordingChanged();
    /// A combination cannot be a shortcut; the recording goes on. @p reason is for the user.
    void refused(const QString &reason);

private:
    void onKey(const CapturedKey &key);
    void onKeyEvent(const QKeyEvent &event);

    KeyCapture &m_keyCapture;
    QWidget &m_widget;
    Captured m_onCapture;
    bool m_isRecording = false;
    QTimer m_limit;
    std::unique_ptr<KeyCapture::Session> m_session;
};
