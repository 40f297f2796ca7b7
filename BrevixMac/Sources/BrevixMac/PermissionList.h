// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFrame>

class AppState;
class TextLabel;
class ThemedButton;

/// The two permissions that insertion needs, each with a mark and the button that asks for it. Shown while
/// one of them is missing.
class PermissionList final : public QFrame
{
    Q_OBJECT

public:
    /// @p appState must outlive this widget.
    explicit PermissionList(AppState &appState, QWidget *parent = nullptr);

    /// Reads the grants.
    void refresh();

    struct Row
    {
        TextLabel *label = nullptr;
        ThemedButton *button = nullptr;
        bool isGranted = false;

        QString symbol() const;
    };

    ThemedButton &accessibilityButton() const { return *m_accessibility.button; }
    ThemedButton &postEventButton() const { return *m_postEvent.button; }
    const Row &accessibility() const { return m_accessibility; }
    const Row &postEvent() const { return m_postEvent; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Row makeRow(const QString &name);
    void show(Row &row, bool isGranted);

    AppState &m_appState;
    Row m_accessibility;
    Row m_postEvent;
};
