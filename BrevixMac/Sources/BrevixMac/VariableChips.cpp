// SPDX-License-Identifier: GPL-3.0-or-later
#include "VariableChips.h"

#include "FlowLayout.h"
#include "OneLine.h"
#include "PromptTemplateParser.h"
#include "ThemePainting.h"

#include <QLabel>
#include <QPainter>

#include <algorithm>

namespace {

constexpr int gap = 6;
constexpr int sidePadding = 8;
constexpr int designHeight = 24;
constexpr int widestChip = 200;

/// A soft accent mark with a variable's name, cut off where it is too long.
class Chip final : public QLabel
{
public:
    explicit Chip(const QString &name)
    {
        setTextFormat(Qt::PlainText);
        setText(OneLine::of(name));
        connect(&Theme::shared(), &Theme::changed, this, &Chip::onThemeChanged);
        onThemeChanged();
    }

    QSize sizeHint() const override
    {
        const Theme &theme = Theme::shared();
        return {std::min(wholeWidth(), theme.scaled(widestChip)),
                std::max(theme.scaled(designHeight), fontMetrics().height() + 4)};
    }

    QSize minimumSizeHint() const override { return {0, sizeHint().height()}; }

protected:
    void resizeEvent(QResizeEvent *event) override
    {
        QLabel::resizeEvent(event);
        // What is cut short is told in full.
        setToolTip(wholeWidth() > width() ? text() : QString());
    }

    void paintEvent(QPaintEvent *) override
    {
        const Theme &theme = Theme::shared();
        QPainter painter(this);
        ThemePainting::fillRounded(painter, rect(), theme.scaled(Theme::chipRadius),
                                   theme.color(Theme::Color::accentSoft));
        painter.setPen(theme.color(Theme::Color::accent));
        const int side = theme.scaled(sidePadding);
        const QRect room = rect().adjusted(side, 0, -side, 0);
        painter.drawText(room, Qt::AlignCenter | Qt::TextSingleLine,
                         fontMetrics().elidedText(text(), Qt::ElideRight, room.width() + 1));
    }

private:
    int wholeWidth() const
    {
        return fontMetrics().horizontalAdvance(text()) + 2 * Theme::shared().scaled(sidePadding) + 1;
    }

    void onThemeChanged()
    {
        QFont font = Theme::shared().font(Theme::Type::sectionTitle);
        setFont(font);
        updateGeometry();
    }
};

} // namespace

VariableChips::VariableChips(QWidget *parent)
    : QWidget(parent)
    , m_flow(new FlowLayout(
          this, [](const QString &name) { return new Chip(name); }, gap))
{
    setAccessibleName(QStringLiteral("Variables"));
    hide();
}

void VariableChips::setText(const QString &promptText)
{
    const QList<VariableToken> variables = PromptTemplateParser::variables(promptText);
    QStringList names;
    for (const VariableToken &variable : variables.first(std::min(variables.size(), mostChips)))
        names.append(variable.name);
    if (variables.size() > mostChips)
        names.append(QStringLiteral("+%1").arg(variables.size() - mostChips));
    m_flow->setItems(names);
    setVisible(!names.isEmpty());
}

QStringList VariableChips::chips() const
{
    return m_flow->items();
}
