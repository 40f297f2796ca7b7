// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class TextLabel;
class ThemedButton;

/// What stands in the place of the list when there is nothing to list.
class EmptyState final : public QWidget
{
    Q_OBJECT

public:
    explicit EmptyState(QWidget *parent = nullptr);

    /// An empty @p title takes no room.
    void describe(const QString &symbol, const QString &title, const QString &detail);

    /// Hides the buttons where the screen has others for the same.
    void setButtonsShown(bool isShown);

    QString title() const;
    QString detail() const;
    ThemedButton &newPromptButton() const { return *m_newPrompt; }
    ThemedButton &newSkillButton() const { return *m_newSkill; }

private:
    class SymbolBadge;

    SymbolBadge *m_badge;
    TextLabel *m_title;
    TextLabel *m_detail;
    ThemedButton *m_newPrompt;
    ThemedButton *m_newSkill;
};
