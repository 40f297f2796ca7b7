// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "PickerResults.h"

#include <QWidget>

class AppState;
class HintBubble;
class PickerSearchPage;
class QStackedWidget;
class VariableFillView;

/// The content of the picker panel. Holds no library data: it reads AppState and calls its actions. 520 × 640
/// logical pixels. Main thread only.
class MenuBarPickerView : public QWidget
{
    Q_OBJECT

public:
    /// @p appState must outlive this widget.
    explicit MenuBarPickerView(AppState &appState, QWidget *parent = nullptr);

    /// Called each time the panel is shown: reads everything again, keeps a prompt selected, and moves the
    /// focus to the search field when AppState asks for it.
    void appear();

    QSize sizeHint() const override;

    PickerSearchPage &searchPage() const { return *m_searchPage; }
    VariableFillView &variableFillView() const { return *m_fillView; }

Q_SIGNALS:
    /// The user asked to close the panel (Escape with nothing to go back to).
    void closeRequested();
    void quitRequested();

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void showActiveForm();

    AppState &m_appState;
    QStackedWidget *m_pages;
    PickerSearchPage *m_searchPage;
    VariableFillView *m_fillView;
    HintBubble *m_hint;
};
