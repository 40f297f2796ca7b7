// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

/// A frameless window with rounded corners above other windows. Made once; closing it only hides it.
class RoundedPanel : public QWidget
{
    Q_OBJECT

public:
    RoundedPanel(Qt::WindowFlags flags, int radius);

    /// Rounds the corners by blending where a compositor runs (@p isCompositing), by a window mask elsewhere.
    void setCompositing(bool isCompositing);

    /// Takes @p designed, grown with the desktop's font as far as @p available allows; never less than
    /// @p least.
    void fitInto(const QSize &available, const QSize &designed, const QSize &least);

Q_SIGNALS:
    void didHide();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void roundCorners();

    int m_radius;
    bool m_isCompositing = true;
};
