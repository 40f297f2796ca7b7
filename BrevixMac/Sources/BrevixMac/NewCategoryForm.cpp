// SPDX-License-Identifier: GPL-3.0-or-later
#include "NewCategoryForm.h"

#include "ColorSwatches.h"
#include "PromptEditorModel.h"
#include "TextField.h"
#include "ThemePainting.h"
#include "ThemedButton.h"

#include "Foundation/Text.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>

namespace {

constexpr int padding = 9;

}

NewCategoryForm::NewCategoryForm(PromptEditorModel &model, QWidget *parent)
    : QFrame(parent)
    , m_model(model)
    , m_name(new TextField(this))
    , m_swatches(new ColorSwatches(this))
    , m_create(new ThemedButton(ThemedButton::Kind::quiet, QStringLiteral("Create"), this))
{
    m_name->setPlaceholderText(QStringLiteral("Category name"));
    setAccessibleName(QStringLiteral("New Category"));
    m_name->setAccessibleName(QStringLiteral("Category name"));
    m_create->setDesignHeight(34);
    auto *column = new QVBoxLayout(this);
    column->setSpacing(2);
    column->addWidget(m_name);
    auto *row = new QHBoxLayout;
    row->setSpacing(6);
    row->addWidget(m_swatches, 1);
    row->addWidget(m_create);
    column->addLayout(row);

    connect(m_name, &QLineEdit::textEdited, &model, &PromptEditorModel::setNewCategoryName);
    connect(m_name, &QLineEdit::returnPressed, &model, &PromptEditorModel::createCategory);
    connect(m_swatches, &ColorSwatches::selected, &model, &PromptEditorModel::selectCategoryColor);
    connect(m_create, &QPushButton::clicked, &model, &PromptEditorModel::createCategory);
    connect(&model, &PromptEditorModel::newCategoryChanged, this, &NewCategoryForm::refresh);
    connect(&Theme::shared(), &Theme::changed, this, &NewCategoryForm::onThemeChanged);
    onThemeChanged();
    refresh();
}

void NewCategoryForm::onThemeChanged()
{
    const int inset = Theme::shared().scaled(padding) + Theme::haloWidth - 3;
    layout()->setContentsMargins(inset, inset, inset, inset);
    update();
}

void NewCategoryForm::refresh()
{
    if (m_name->text() != m_model.newCategoryName())
        m_name->setText(m_model.newCategoryName());
    m_swatches->select(m_model.selectedCategoryColor());
    m_create->setBusy(m_model.isWritingCategory());
    m_create->setEnabled(!m_model.isWritingCategory() && !Text::isBlank(m_model.newCategoryName()));
    m_name->setReadOnly(m_model.isWritingCategory());
}

void NewCategoryForm::keyPressEvent(QKeyEvent *event)
{
    // One step back: from the new category to the prompt.
    if (event->key() == Qt::Key_Escape)
        m_model.setCreatingCategory(false);
    else
        QFrame::keyPressEvent(event);
}

void NewCategoryForm::paintEvent(QPaintEvent *)
{
    const Theme &theme = Theme::shared();
    const QRectF frame = ThemePainting::controlFrame(*this);
    const int radius = theme.scaled(Theme::cardRadius);
    QPainter painter(this);
    ThemePainting::fillRounded(painter, frame, radius, theme.color(Theme::Color::raised));
    ThemePainting::strokeRounded(painter, frame, radius, theme.color(Theme::Color::line));
}
