// SPDX-License-Identifier: GPL-3.0-or-later
#include "ShortcutCaptureMonitor.h"

#include <QApplication>
#include <QKeyEvent>
#include <QWidget>
#include <QWindow>

#include <array>
#include <utility>

namespace {

// The modifier keys themselves in the key table.
constexpr quint32 firstModifierKey = 54;
constexpr quint32 lastModifierKey = 62;

// What Brevix posts to paste; as its hotkey, each would open the picker in place of pasting.
constexpr std::array pasteChords{
    KeyboardShortcut{.keyCode = 9, .modifiers = KeyboardShortcut::control},
    KeyboardShortcut{.keyCode = 9, .modifiers = KeyboardShortcut::control | KeyboardShortcut::shift},
    KeyboardShortcut{.keyCode = 114, .modifiers = KeyboardShortcut::shift},
};

quint64 flags(Qt::KeyboardModifiers modifiers)
{
    return (modifiers & Qt::ShiftModifier ? KeyboardShortcut::shift : 0) |
           (modifiers & Qt::ControlModifier ? KeyboardShortcut::control : 0) |
           (modifiers & Qt::AltModifier ? KeyboardShortcut::option : 0) |
           (modifiers & Qt::MetaModifier ? KeyboardShortcut::command : 0);
}

bool isModifierKey(int key)
{
    switch (key) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Meta:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
    case Qt::Key_Hyper_L:
    case Qt::Key_Hyper_R:
    case Qt::Key_CapsLock:
    case Qt::Key_NumLock:
    case Qt::Key_ScrollLock:
        return true;
    default:
        return false;
    }
}

} // namespace

ShortcutCaptureMonitor::ShortcutCaptureMonitor(KeyCapture &keyCapture, QWidget &widget)
    : m_keyCapture(keyCapture)
    , m_widget(widget)
{
    m_limit.setSingleShot(true);
    m_limit.setInterval(timeLimit);
    connect(&m_limit, &QTimer::timeout, this, &ShortcutCaptureMonitor::stop);
}

ShortcutCaptureMonitor::~ShortcutCaptureMonitor() = default;

void ShortcutCaptureMonitor::begin(Captured onCapture)
{
    stop();
    m_isRecording = true;
    m_onCapture = std::move(onCapture);
    // Also where the session keeps the keyboard to itself: then the combinations that nobody else takes can
    // still be recorded.
    qApp->installEventFilter(this);
    if (QWindow *window = m_widget.window()->windowHandle())
        m_session = m_keyCapture.begin(*window, [this](const CapturedKey &key) { onKey(key); });
    m_limit.start();
    Q_EMIT isRecordingChanged();
}

void ShortcutCaptureMonitor::stop()
{
    m_session.reset();
    m_limit.stop();
    qApp->removeEventFilter(this);
    m_onCapture = nullptr;
    if (std::exchange(m_isRecording, false))
        Q_EMIT isRecordingChanged();
}

void ShortcutCaptureMonitor::onKey(const CapturedKey &key)
{
    const bool isModifier = key.isModifier || (key.keyCode && *key.keyCode >= firstModifierKey &&
                                               *key.keyCode <= lastModifierKey);
    if (!m_isRecording || isModifier || key.modifiers == 0)
        return;
    if (!key.keyCode) {
        Q_EMIT refused(QStringLiteral("This key cannot be part of a shortcut. Try another one."));
        return;
    }
    const KeyboardShortcut shortcut{.keyCode = *key.keyCode, .modifiers = key.modifiers};
    if (std::ranges::find(pasteChords, shortcut) != pasteChords.end()) {
        Q_EMIT refused(u"Brevix itself pastes with "_qs + shortcut.displayLabel() + u". Try another one.");
        return;
    }
    const QPointer<ShortcutCaptureMonitor> self(this);
    const Captured onCapture = m_onCapture;
    onCapture(shortcut.keyCode, shortcut.modifiers);
    if (self)
        stop();
}

void ShortcutCaptureMonitor::onKeyEvent(const QKeyEvent &event)
{
    onKey({.keyCode = m_keyCapture.keyCode(event.nativeScanCode()),
           .modifiers = flags(event.modifiers()),
           .isModifier = isModifierKey(event.key())});
}

bool ShortcutCaptureMonitor::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
        onKeyEvent(static_cast<const QKeyEvent &>(*event));
        return true;
    case QEvent::ShortcutOverride:
        event->accept();
        return true;
    case QEvent::KeyRelease:
    case QEvent::Shortcut:
        return true;
    case QEvent::WindowDeactivate:
    case QEvent::Close:
        if (watched == m_widget.window())
            stop();
        break;
    case QEvent::Hide:
        if (watched == &m_widget || watched == m_widget.window())
            stop();
        break;
    default:
        break;
    }
    return false;
}
