// SPDX-License-Identifier: GPL-3.0-or-later
#include "EditorFrame.h"

#include "ButtonBar.h"
#include "DraftNoteBar.h"
#include "EditorModel.h"
#include "EditorStatusLine.h"
#include "TabOrder.h"
#include "Theme.h"
#include "ThemedButton.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QShortcut>

namespace {

constexpr int halo = Theme::haloWidth;
constexpr int buttonHeight = 34;
constexpr int footerHeight = 65;
constexpr int statusGap = 4; // beside the halo of Cancel

} // namespace

EditorFrame::EditorFrame(EditorModel &model, QWidget *header, QWidget *form, const QString &saveText,
                         int margin, QWidget *parent)
    : QWidget(parent)
    , m_model(model)
    , m_saveText(saveText)
    , m_note(new DraftNoteBar(model, margin, this))
    , m_status(new EditorStatusLine(this))
    , m_cancel(new ThemedButton(ThemedButton::Kind::quiet, QStringLiteral("Cancel"), this))
    , m_save(new ThemedButton(ThemedButton::Kind::primary, saveText, this))
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(header);
    column->addWidget(m_note);
    column->addWidget(form, 1);
    column->addWidget(makeFooter(margin));

    const QList<QKeySequence> saveKeys{QKeySequence(Qt::CTRL | Qt::Key_S),
                                       QKeySequence(Qt::CTRL | Qt::Key_Return),
                                       QKeySequence(Qt::CTRL | Qt::Key_Enter)};
    for (const QKeySequence &keys : saveKeys) {
        auto *shortcut = new QShortcut(keys, this);
        shortcut->setContext(Qt::WindowShortcut); // wherever the focus is, or nowhere; not while hidden
        connect(shortcut, &QShortcut::activated, this, [this] { m_model.save(); });
    }
    connect(m_save, &QPushButton::clicked, &model, &EditorModel::save);
    connect(m_cancel, &QPushButton::clicked, this, &EditorFrame::cancel);
    connect(&model, &EditorModel::canSaveChanged, this, &EditorFrame::refreshButtons);
    connect(&model, &EditorModel::isSavingChanged, this, &EditorFrame::refreshButtons);
    connect(&model, &EditorModel::statusMessageChanged, this, &EditorFrame::refreshStatus);
    connect(&Theme::shared(), &Theme::changed, this, &EditorFrame::placeStatus);
    refreshButtons();
    refreshStatus();
}

QWidget *EditorFrame::makeFooter(int margin)
{
    auto *footer = new ButtonBar(this);
    m_cancel->setDesignHeight(buttonHeight);
    m_save->setDesignHeight(buttonHeight);
    m_buttons = new QWidget(footer);
    auto *row = new QHBoxLayout(m_buttons);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(10 - 2 * halo);
    row->addWidget(m_status, 1, Qt::AlignVCenter);
    row->addStretch(0);
    row->addWidget(m_cancel);
    row->addWidget(m_save);
    row->addStrut(footerHeight - 19);
    m_footer = new QVBoxLayout(footer);
    m_footer->setContentsMargins(margin, 9, margin - halo, 10);
    m_footer->setSpacing(0);
    m_footer->addWidget(m_buttons);
    return footer;
}

void EditorFrame::setTabOrders(const QList<QWidget *> &before, const QList<QWidget *> &form)
{
    TabOrder::set(before + QList<QWidget *>{&m_note->button()} + form + QList<QWidget *>{m_cancel, m_save});
}

void EditorFrame::cancel()
{
    // Its outcome is told here, and the text of a failure is still needed.
    if (m_model.isSaving())
        return;
    m_model.cancel();
    Q_EMIT cancelled();
}

void EditorFrame::refreshButtons()
{
    m_save->setLabel(m_model.isSaving() ? QStringLiteral("Saving...") : m_saveText);
    m_save->setBusy(m_model.isSaving());
    m_save->setEnabled(m_model.canSave());
    m_cancel->setEnabled(!m_model.isSaving());
    placeStatus();
}

void EditorFrame::refreshStatus()
{
    m_status->show(m_model.statusMessage());
    placeStatus();
}

/// Beside the buttons where it fits into one line, else over them.
void EditorFrame::placeStatus()
{
    const QMargins margins = m_footer->contentsMargins();
    const int whole = width() - margins.left() - margins.right();
    const int beside = whole - m_cancel->sizeHint().width() - m_save->sizeHint().width() - statusGap;
    const bool fits = m_status->widthOfOneLine() <= beside;
    auto *row = static_cast<QHBoxLayout *>(m_buttons->layout());
    const bool isBeside = row->indexOf(m_status) >= 0;
    m_status->fit(fits ? beside : whole - halo);
    if (fits == isBeside)
        return;
    if (fits) {
        m_footer->removeWidget(m_status);
        row->insertWidget(0, m_status, 1, Qt::AlignVCenter);
    } else {
        row->removeWidget(m_status);
        m_footer->insertWidget(0, m_status);
    }
}

void EditorFrame::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    placeStatus();
}

void EditorFrame::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        cancel();
    else
        QWidget::keyPressEvent(event);
}
