// SPDX-License-Identifier: GPL-3.0-or-later
#include "ColorSwatches.h"

#include "PromptEditorModel.h"
#include "ThemePainting.h"

#include <QAbstractButton>
#include <QEvent>
#include <QHBoxLayout>
#include <QPainter>

namespace {

constexpr int target = 30; // the area that answers the pointer
constexpr int dot = 18;
constexpr qreal ringGap = 2.5;
constexpr qreal ringWidth = 1.75;

class ColorSwatch final : public QAbstractButton
{
public:
    ColorSwatch(const CategoryColor &color, QWidget *parent)
        : QAbstractButton(parent)
        , m_color(color.value)
    {
        setCheckable(true);
        setAutoExclusive(true);
        setFocusPolicy(Qt::TabFocus);
        setAttribute(Qt::WA_Hover);
        setText(color.name);
        setToolTip(color.name);
        setAccessibleName(color.name);
        setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
        connect(&Theme::shared(), &Theme::changed, this, &QWidget::updateGeometry);
    }

    QSize sizeHint() const override
    {
        const int side = Theme::shared().scaled(target) + 2 * Theme::haloWidth;
        return {side, side};
    }

    /// At a large font they may stand closer, but stay easy to hit.
    QSize minimumSizeHint() const override { return {target + 2 * Theme::haloWidth, sizeHint().height()}; }

protected:
    bool event(QEvent *event) override
    {
        // Left to the window, which shows tips inside itself.
        if (event->type() == QEvent::ToolTip) {
            event->ignore();
            return false;
        }
        return QAbstractButton::event(event);
    }

    void paintEvent(QPaintEvent *) override
    {
        const Theme &theme = Theme::shared();
        const QRectF frame = ThemePainting::controlFrame(*this);
        const int radius = theme.scaled(Theme::buttonRadius);
        QRectF circle(0, 0, theme.scaled(dot), theme.scaled(dot));
        circle.moveCenter(frame.center());
        QPainter painter(this);
        if (underMouse() && isEnabled())
            ThemePainting::fillRounded(painter, frame, radius, theme.color(Theme::Color::hover));
        ThemePainting::fillRounded(painter, circle, circle.width() / 2, m_color);
        if (isChecked()) {
            const qreal out = ringGap + ringWidth;
            const QRectF ring = circle.adjusted(-out, -out, out, out);
            ThemePainting::strokeRounded(painter, ring, ring.width() / 2, m_color, ringWidth);
        }
        if (hasFocus())
            ThemePainting::focusRing(painter, frame, radius);
    }

private:
    QColor m_color;
};

} // namespace

ColorSwatches::ColorSwatches(QWidget *parent)
    : QWidget(parent)
{
    setAccessibleName(QStringLiteral("Category color"));
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    for (const CategoryColor &color : CategoryColor::all()) {
        auto *swatch = new ColorSwatch(color, this);
        row->addWidget(swatch);
        m_swatches.append(swatch);
        connect(swatch, &QAbstractButton::toggled, this, [this, value = color.value](bool isChosen) {
            if (isChosen)
                Q_EMIT selected(value);
        });
    }
    row->addStretch(1);
}

void ColorSwatches::select(const QString &value)
{
    for (qsizetype index = 0; index < m_swatches.size(); ++index) {
        if (CategoryColor::all().at(index).value == value)
            m_swatches.at(index)->setChecked(true);
    }
}
