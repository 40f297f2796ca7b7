// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models.h"
#include "VariableFields.h"

#include <QTimer>

class PageHeader;
class PreviewText;
class QVBoxLayout;
class ThemedButton;

/// A screen that fills a prompt's variables: header, one field for each, a live preview of the result, and a
/// cancelling and a confirming button. The confirming one is the default action. Keeps no value.
class VariableForm : public QWidget
{
    Q_OBJECT

public:
    struct Wording
    {
        QString title;
        QString cancel;
        QString confirm;
        VariableFields::Placeholder placeholder = VariableFields::Placeholder::value;
    };

    explicit VariableForm(const Wording &wording, QWidget *parent = nullptr);

    /// Shows the fields of @p prompt and puts the focus into the first.
    void begin(const PromptItem &prompt, const VariableValues &values);

    void setValues(const VariableValues &values);

    /// Shows progress on the confirming button, which cannot be used meanwhile.
    void setBusy(bool isBusy);

    /// Puts @p notice above the buttons, over the whole width.
    void addNotice(QWidget *notice);

    PageHeader &header() const { return *m_header; }
    VariableFields &fields() const { return *m_fields; }
    PreviewText &preview() const { return *m_preview; }
    ThemedButton &cancelButton() const { return *m_cancel; }
    ThemedButton &confirmButton() const { return *m_confirm; }

Q_SIGNALS:
    void valueEdited(const QString &name, const QString &value);
    void confirmed();
    void cancelled();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    QWidget *makeFooter();
    QVBoxLayout *makeBody();
    void setTabOrders();
    void confirm();
    void refreshPreview();

    PromptItem m_prompt;
    VariableValues m_values;
    QTimer m_refreshing; ///< of the preview of a long text
    PageHeader *m_header;
    VariableFields *m_fields;
    PreviewText *m_preview;
    ThemedButton *m_cancel;
    ThemedButton *m_confirm;
    QVBoxLayout *m_notices;
    QList<ThemedButton *> m_noticeButtons;
};
