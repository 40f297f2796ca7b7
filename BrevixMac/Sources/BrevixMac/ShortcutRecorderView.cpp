// SPDX-License-Identifier: GPL-3.0-or-later
#include "ShortcutRecorderView.h"

#include "KeyCaps.h"
#include "ShortcutCaptureMonitor.h"
#include "ThemedButton.h"

#include <QHBoxLayout>

namespace {

const QString idleLabel = QStringLiteral("Record Shortcut");
const QString recordingLabel = QStringLiteral("Press Shortcut...");

} // namespace

ShortcutRecorderView::ShortcutRecorderView(KeyCapture &keyCapture, Change onChange, QWidget *parent)
    : QWidget(parent)
    , m_onChange(std::move(onChange))
    , m_caps(new KeyCaps(this))
    , m_record(new ThemedButton(ThemedButton::Kind::quiet, idleLabel, this))
    , m_reset(new ThemedButton(ThemedButton::Kind::plain, QStringLiteral("Reset"), this))
    , m_monitor(new ShortcutCaptureMonitor(keyCapture, *this))
{
    m_monitor->setParent(this);
    for (ThemedButton *button : {m_record, m_reset})
        button->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(4);
    row->addWidget(m_caps, 0, Qt::AlignVCenter);
    row->addSpacing(2);
    row->addWidget(m_record, 0, Qt::AlignVCenter);
    row->addWidget(m_reset, 0, Qt::AlignVCenter);
    connect(m_record, &QPushButton::clicked, this, &ShortcutRecorderView::toggleRecording);
    connect(m_reset, &QPushButton::clicked, this, [this] { m_onChange(KeyboardShortcut()); });
    connect(m_monitor, &ShortcutCaptureMonitor::isRecordingChanged, this, &ShortcutRecorderView::refresh);
    connect(m_monitor, &ShortcutCaptureMonitor::isRecordingChanged, this,
            &ShortcutRecorderView::isRecordingChanged);
    connect(m_monitor, &ShortcutCaptureMonitor::refused, this, &ShortcutRecorderView::refused);
    setShortcut({});
    refresh();
}

ShortcutRecorderView::~ShortcutRecorderView()
{
    // Its end would tell this object, which is no recorder any more by then.
    m_monitor->disconnect(this);
    delete m_monitor;
}

void ShortcutRecorderView::setShortcut(const KeyboardShortcut &shortcut)
{
    m_shortcut = shortcut;
    m_caps->setShortcut(shortcut);
}

void ShortcutRecorderView::toggleRecording()
{
    if (m_monitor->isRecording()) {
        m_monitor->stop();
        return;
    }
    m_monitor->begin([this](quint32 keyCode, quint64 modifiers) {
        m_onChange({.keyCode = keyCode, .modifiers = modifiers});
    });
}

void ShortcutRecorderView::refresh()
{
    const bool isRecording = m_monitor->isRecording();
    // The wider of the two labels, so that nothing moves.
    m_record->setLabel(idleLabel);
    const int idleWidth = m_record->sizeHint().width();
    m_record->setLabel(recordingLabel);
    m_record->setMinimumWidth(std::max(idleWidth, m_record->sizeHint().width()));
    m_record->setLabel(isRecording ? recordingLabel : idleLabel);
    m_record->setAccessibleDescription(u"Global shortcut, now "_qs + m_shortcut.displayLabel());
    m_record->setInk(isRecording ? Theme::Color::accent : Theme::Color::text);
}
