// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class AppState;
class MenuBarPickerView;

/// The frameless floating window around the picker: above other windows, in no task list, with large rounded
/// corners. Made once; closing it only hides it. Takes the focus only when told to or when clicked into.
class MenuBarPickerPanel final : public QWidget
{
    Q_OBJECT

public:
    /// @p appState must outlive this widget.
    explicit MenuBarPickerPanel(AppState &appState);

    MenuBarPickerView &view() const { return *m_view; }

    /// Rounds the corners by blending where a compositor runs (@p isCompositing), by a window mask elsewhere.
    void setCompositing(bool isCompositing);

    /// Takes the size of the design, grown with the desktop's font as far as @p available allows.
    void fitInto(const QSize &available);

Q_SIGNALS:
    void didHide();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void roundCorners();

    MenuBarPickerView *m_view;
    bool m_isCompositing = true;
};
