// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "EditorStatusMessage.h"

#include <QLabel>

#include <optional>

/// An editor's status message on a soft ground, red for an error. Long messages wrap, very long ones are cut
/// off. Takes no room when there is nothing to say.
class EditorStatusLine final : public QLabel
{
    Q_OBJECT

public:
    explicit EditorStatusLine(QWidget *parent = nullptr);

    void show(const std::optional<EditorStatusMessage> &message);

    /// What the whole message needs in one line; 0 when there is none.
    int widthOfOneLine() const;

    /// Keeps to @p width: in one line where that is enough, else in a few.
    void fit(int width);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void onThemeChanged();

    QString m_message;
    bool m_isError = false;
};
