// SPDX-License-Identifier: GPL-3.0-or-later
#include "ShareConfirmationBannerView.h"

#include "AppState.h"
#include "OneLine.h"
#include "Symbols.h"
#include "TextLabel.h"
#include "ThemePainting.h"
#include "ThemedButton.h"

#include <QAccessible>
#include <QEvent>
#include <QHBoxLayout>
#include <QPainter>
#include <QVariantAnimation>

#include <algorithm>

namespace {

constexpr int edgeMargin = 10; // between the screen's edge and the drawn banner
constexpr int shadow = 10;     // room around the drawn banner
constexpr qreal shadowStrength = 0.018;
constexpr int padding = 14;
constexpr int radius = 24;
constexpr int symbolSize = 20;
constexpr int slideDistance = 14;
constexpr int widest = 560;

QRectF drawnFrame(const QWidget &banner)
{
    return QRectF(banner.rect()).adjusted(shadow, shadow, -shadow, -shadow);
}

} // namespace

ShareConfirmationBannerView::ShareConfirmationBannerView(AppState &appState, QWidget *screen)
    : QFrame(screen)
    , m_appState(appState)
    , m_title(new TextLabel(Theme::Type::cardTitle, Theme::Color::text, TextLabel::Overflow::elide, this))
    , m_message(
          new TextLabel(Theme::Type::caption, Theme::Color::secondary, TextLabel::Overflow::elide, this))
    , m_link(new TextLabel(Theme::Type::caption, Theme::Color::accentInk, TextLabel::Overflow::elide, this))
    , m_dismiss(new ThemedButton(ThemedButton::Kind::plain, QStringLiteral("Dismiss"), this))
    , m_slide(new QVariantAnimation(this))
{
    m_message->setText(QStringLiteral("Link copied to clipboard"));
    m_message->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    m_link->setElideMode(Qt::ElideMiddle);
    m_link->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    m_dismiss->setFaceSymbol(QStringLiteral("xmark"));
    m_dismiss->setFace(ThemedButton::Face::symbolOnly);
    m_dismiss->setToolTip(m_dismiss->text());
    connect(m_dismiss, &QPushButton::clicked, this, &ShareConfirmationBannerView::dismiss);

    auto *details = new QHBoxLayout;
    details->setSpacing(8);
    details->addWidget(m_message);
    details->addWidget(m_link, 1);
    auto *texts = new QVBoxLayout;
    texts->setSpacing(1);
    texts->addStretch();
    texts->addWidget(m_title);
    texts->addLayout(details);
    texts->addStretch();
    auto *row = new QHBoxLayout(this);
    row->setSpacing(6);
    row->addLayout(texts, 1);
    row->addWidget(m_dismiss, 0, Qt::AlignVCenter);

    m_slide->setDuration(Theme::longestMotion);
    m_slide->setEasingCurve(QEasingCurve::OutCubic);
    m_slide->setStartValue(-slideDistance);
    m_slide->setEndValue(0);
    connect(m_slide, &QVariantAnimation::valueChanged, this, &ShareConfirmationBannerView::place);

    hide();
    screen->installEventFilter(this);
    connect(&appState, &AppState::shareConfirmationChanged, this,
            &ShareConfirmationBannerView::onConfirmationChanged);
    connect(&Theme::shared(), &Theme::changed, this, &ShareConfirmationBannerView::onThemeChanged);
    onThemeChanged();
    onConfirmationChanged();
}

void ShareConfirmationBannerView::onThemeChanged()
{
    const Theme &theme = Theme::shared();
    const int side = shadow + theme.scaled(padding);
    const int vertical = shadow + theme.scaled(10);
    layout()->setContentsMargins(side + theme.scaled(symbolSize + 10), vertical, shadow + theme.scaled(6),
                                 vertical);
    place();
}

void ShareConfirmationBannerView::onConfirmationChanged()
{
    m_confirmation = m_appState.shareConfirmation();
    m_timer.restart();
    if (!m_confirmation) {
        hide();
        return;
    }
    m_title->setText(OneLine::of(m_confirmation->title));
    m_link->setText(m_confirmation->url.toString());
    setAccessibleName(title() + u". " + message());
    setAccessibleDescription(link());
    place();
    if (isHidden()) {
        raise();
        slideIn();
        show(); // starts the timer when it gets to the screen
    } else if (isVisible()) {
        startTimer();
    }
    QAccessibleEvent announcement(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&announcement);
}

void ShareConfirmationBannerView::showEvent(QShowEvent *event)
{
    QFrame::showEvent(event);
    startTimer();
}

void ShareConfirmationBannerView::hideEvent(QHideEvent *event)
{
    QFrame::hideEvent(event);
    m_timer.restart();
}

void ShareConfirmationBannerView::startTimer()
{
    m_timer.restart();
    if (m_confirmation)
        detach(dismissLater(*m_confirmation, m_timer.token()), "dismissing the share banner");
}

QCoro::Task<> ShareConfirmationBannerView::dismissLater(ShareConfirmation confirmation, std::stop_token token)
{
    const bool isOver = co_await sleepFor(lifetime, token);
    if (isOver && !token.stop_requested())
        m_appState.dismissShareConfirmation(confirmation);
}

void ShareConfirmationBannerView::dismiss()
{
    m_appState.dismissShareConfirmation(m_confirmation);
}

void ShareConfirmationBannerView::slideIn()
{
    if (Theme::shared().reducedMotion())
        return;
    m_slide->stop();
    m_slide->start();
}

void ShareConfirmationBannerView::place()
{
    const bool isSliding = m_slide->state() == QAbstractAnimation::Running;
    const int offset = isSliding ? m_slide->currentValue().toInt() : 0;
    const int edge = edgeMargin - shadow;
    const int width =
        std::min(parentWidget()->width() - 2 * edge, Theme::shared().scaled(widest) + 2 * shadow);
    setGeometry((parentWidget()->width() - width) / 2, edge + offset, width, sizeHint().height());
}

QSize ShareConfirmationBannerView::sizeHint() const
{
    return {parentWidget()->width(), layout()->totalSizeHint().height()};
}

bool ShareConfirmationBannerView::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == parentWidget() && event->type() == QEvent::Resize)
        place();
    return QFrame::eventFilter(watched, event);
}

QString ShareConfirmationBannerView::title() const
{
    return m_title->text();
}

QString ShareConfirmationBannerView::message() const
{
    return m_message->text();
}

QString ShareConfirmationBannerView::link() const
{
    return m_link->text();
}

void ShareConfirmationBannerView::paintEvent(QPaintEvent *)
{
    const Theme &theme = Theme::shared();
    QPainter painter(this);
    const QRectF frame = drawnFrame(*this);
    ThemePainting::shadow(painter, frame, radius, shadow, shadowStrength);
    ThemePainting::fillRounded(painter, frame, radius, theme.color(Theme::Color::raised));
    ThemePainting::fillRounded(painter, frame, radius, theme.color(Theme::Color::successSoft));
    ThemePainting::strokeRounded(painter, frame, radius, theme.color(Theme::Color::line));
    const int size = theme.scaled(symbolSize);
    Symbols::paint(painter, QStringLiteral("checkmark.circle.fill"), theme.color(Theme::Color::success),
                   QRectF(frame.left() + theme.scaled(padding), frame.top(), size, frame.height()), size);
}
