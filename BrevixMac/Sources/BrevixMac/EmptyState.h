// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class StatusCard;
class TextLabel;
class ThemedButton;
struct SyncState;

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

    /// Says that the list is still on its way, or why it has not come. Other states take no room.
    void setSync(const SyncState &state);

    /// For what is empty for other reasons.
    void clearSync();

    QString title() const;
    QString detail() const;
    StatusCard &syncCard() const { return *m_sync; }
    ThemedButton &newPromptButton() const { return *m_newPrompt; }
    ThemedButton &newSkillButton() const { return *m_newSkill; }

private:
    class SymbolBadge;

    SymbolBadge *m_badge;
    TextLabel *m_title;
    TextLabel *m_detail;
    ThemedButton *m_newPrompt;
    ThemedButton *m_newSkill;
    StatusCard *m_sync;
};
