// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models.h"

#include <QWidget>

#include <optional>

class EmptyState;
class PreviewText;
class QStackedWidget;
class TextLabel;

/// The whole text of one prompt under its title and category, with its variables marked; or the request to
/// choose one.
class PromptPreview final : public QWidget
{
    Q_OBJECT

public:
    explicit PromptPreview(QWidget *parent = nullptr);

    /// @p categoryName may be empty.
    void show(const std::optional<PromptItem> &prompt, const QString &categoryName);

    TextLabel &titleLabel() const { return *m_title; }
    TextLabel &categoryLabel() const { return *m_category; }
    PreviewText &text() const { return *m_text; }
    EmptyState &emptyState() const { return *m_empty; }

private:
    std::optional<PromptItem> m_prompt;
    TextLabel *m_title;
    TextLabel *m_category;
    PreviewText *m_text;
    EmptyState *m_empty;
    QStackedWidget *m_stack;
};
