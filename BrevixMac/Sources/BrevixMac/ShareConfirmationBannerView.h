// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ShareConfirmation.h"

#include "Foundation/TaskScope.h"

#include <QFrame>

#include <optional>

class AppState;
class QVariantAnimation;
class TextLabel;
class ThemedButton;

/// The banner over the top of a screen that confirms a new share link. Shows AppState::shareConfirmation()
/// and dismisses it after lifetime, counted anew for each confirmation and only while the screen is shown.
/// Lies over what is there, so that nothing moves under the pointer. Main thread only.
class ShareConfirmationBannerView final : public QFrame
{
    Q_OBJECT

public:
    static constexpr std::chrono::milliseconds lifetime{5000};

    /// Lies over @p screen, which becomes its parent. @p appState must outlive this widget.
    ShareConfirmationBannerView(AppState &appState, QWidget *screen);

    ThemedButton &dismissButton() const { return *m_dismiss; }
    QString title() const;
    QString message() const;
    QString link() const;

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void onConfirmationChanged();
    void onThemeChanged();
    void place();
    void slideIn();
    void dismiss();
    void startTimer();
    QCoro::Task<> dismissLater(ShareConfirmation confirmation, std::stop_token token);

    AppState &m_appState;
    std::optional<ShareConfirmation> m_confirmation;
    TextLabel *m_title;
    TextLabel *m_message;
    TextLabel *m_link;
    ThemedButton *m_dismiss;
    QVariantAnimation *m_slide;
    TaskScope m_timer; // keep last: stops the coroutine before the other members die
};
