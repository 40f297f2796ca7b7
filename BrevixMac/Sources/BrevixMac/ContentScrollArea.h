// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QScrollArea>

/// A scroll area that takes the height of its content and scrolls only when it cannot have it. Its right edge
/// lies at the panel's, with the scroll bar inside the panel's margin, so that nothing moves when the bar
/// appears. Keeps what has the focus in view.
class ContentScrollArea : public QScrollArea
{
    Q_OBJECT

public:
    /// @p leastHeight in design pixels is what it can be pressed down to; @p rightMargin is free beside the
    /// content.
    ContentScrollArea(QWidget *content, int leastHeight, int rightMargin, QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    bool focusNextPrevChild(bool next) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void fitContent();
    void onFocusChanged(QWidget *before, QWidget *now);
    void reveal(const QWidget &control);

    int m_leastHeight;
};
