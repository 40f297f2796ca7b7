// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class AppState;
class PreviewText;
class TextLabel;
class ThemedButton;
class VariableFields;

/// The form that fills a prompt's variables: a field for each, a live preview of the result, Back and
/// Continue. Holds no value itself: all of them are in AppState. Continue is the default action.
class VariableFillView final : public QWidget
{
    Q_OBJECT

public:
    /// @p appState must outlive this widget.
    explicit VariableFillView(AppState &appState, QWidget *parent = nullptr);

    /// Shows AppState::activeVariablePrompt() and puts the focus into the first field.
    void begin();

    VariableFields &fields() const { return *m_fields; }
    PreviewText &preview() const { return *m_preview; }
    ThemedButton &backButton() const { return *m_back; }
    ThemedButton &continueButton() const { return *m_continue; }

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    QWidget *makeHeader();
    QWidget *makeFooter();
    void refreshPreview();
    void refreshButtons();
    void confirm();

    AppState &m_appState;
    TextLabel *m_promptTitle;
    VariableFields *m_fields;
    PreviewText *m_preview;
    ThemedButton *m_chevron;
    ThemedButton *m_back;
    ThemedButton *m_continue;
};
