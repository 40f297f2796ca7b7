// SPDX-License-Identifier: GPL-3.0-or-later
#include "MenuBarPromptEditorView.h"

#include "EditorFrame.h"
#include "PageHeader.h"
#include "PromptBodyTextView.h"
#include "PromptEditorForm.h"
#include "PromptEditorModel.h"
#include "Theme.h"
#include "ThemedButton.h"

#include <QShowEvent>
#include <QVBoxLayout>

namespace {

PromptEditorTexts texts()
{
    return {.line = QStringLiteral("Create and save a prompt without leaving the menu bar."),
            .hideNewCategory = QStringLiteral("Hide"),
            .optimize = QStringLiteral("Optimize"),
            .variablesHeading = {},
            .variablesHint = QStringLiteral("Use {{variable}} to create dynamic fields."),
            .insertVariable = QStringLiteral("Insert"),
            .save = QStringLiteral("Save Prompt"),
            .categoryNeeded = QStringLiteral("Create a category before saving.")};
}

} // namespace

MenuBarPromptEditorView::MenuBarPromptEditorView(AppState &appState, QWidget *parent)
    : QWidget(parent)
    , m_model(new PromptEditorModel(appState, DraftStore::Form::menuBarPrompt, texts().categoryNeeded, this))
    , m_header(new PageHeader(QStringLiteral("New Prompt"), this))
    , m_openWindow(new ThemedButton(ThemedButton::Kind::plain, QStringLiteral("Open in Window"), this))
    , m_form(new PromptEditorForm(*m_model, texts(), PromptEditorForm::Columns::one, Theme::margin, this))
    , m_frame(new EditorFrame(*m_model, m_header, m_form, texts().save, Theme::margin, this))
{
    m_header->setSubtitle(texts().line);
    m_openWindow->setFaceSymbol(QStringLiteral("arrow.up.left.and.arrow.down.right"));
    m_openWindow->setFace(ThemedButton::Face::symbolOnly);
    m_openWindow->setToolTip(m_openWindow->text());
    m_header->addButton(m_openWindow);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_frame);
    m_frame->setTabOrders({&m_header->backButton(), m_openWindow}, m_form->tabOrder());
    connect(m_header, &PageHeader::backRequested, m_frame, &EditorFrame::cancel);
    connect(m_openWindow, &QPushButton::clicked, this, &MenuBarPromptEditorView::windowRequested);
    connect(m_model, &EditorModel::isSavingChanged, this, [this] {
        m_openWindow->setEnabled(!m_model->isSaving());
        m_header->backButton().setEnabled(!m_model->isSaving());
    });
    connect(m_frame, &EditorFrame::cancelled, this, &MenuBarPromptEditorView::cancelled);
    connect(m_model, &EditorModel::saved, this, &MenuBarPromptEditorView::saved);
}

void MenuBarPromptEditorView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (event->spontaneous())
        return;
    if (m_model->begin() || !focusWidget())
        m_form->focusFirst();
}

void MenuBarPromptEditorView::hideEvent(QHideEvent *event)
{
    m_form->body().report();
    m_model->flush();
    QWidget::hideEvent(event);
}
