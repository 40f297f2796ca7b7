// SPDX-License-Identifier: GPL-3.0-or-later
#include "FormParts.h"

#include "PreviewBox.h"
#include "TextLabel.h"
#include "ThemePainting.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPainter>

namespace {

constexpr int tagPadding = 6;

class Tag final : public QLabel
{
public:
    Tag(const QString &text, QWidget *parent)
        : QLabel(text, parent)
    {
        setTextFormat(Qt::PlainText);
        setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
        connect(&Theme::shared(), &Theme::changed, this, &Tag::onThemeChanged);
        onThemeChanged();
    }

protected:
    void paintEvent(QPaintEvent *event) override
    {
        {
            const Theme &theme = Theme::shared();
            QPainter painter(this);
            ThemePainting::fillSunken(painter, rect(), theme.scaled(Theme::chipRadius - 2));
        }
        QLabel::paintEvent(event);
    }

private:
    void onThemeChanged()
    {
        const Theme &theme = Theme::shared();
        setFont(theme.font(Theme::Type::chip));
        QPalette colors = palette();
        colors.setColor(QPalette::WindowText, theme.color(Theme::Color::secondary));
        setPalette(colors);
        const int side = theme.scaled(tagPadding);
        setContentsMargins(side, theme.scaled(2), side, theme.scaled(2));
    }
};

} // namespace

TextLabel *FormParts::heading(const QString &text, QWidget *parent)
{
    auto *label =
        new TextLabel(Theme::Type::sectionTitle, Theme::Color::secondary, TextLabel::Overflow::elide, parent);
    label->setText(text);
    label->setContentsMargins(Theme::haloWidth, 0, 0, 0);
    return label;
}

QWidget *FormParts::growingBox(QWidget *text, QWidget *parent)
{
    auto *box = new PreviewBox(text, parent);
    box->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
    return box;
}

void FormParts::turnColumns(QBoxLayout &columns, bool areSideBySide)
{
    columns.setDirection(areSideBySide ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
}

QColor FormParts::dotColor(const PromptCategory &category)
{
    const QColor color = ThemePainting::categoryColor(category);
    return color.isValid() ? color : Theme::shared().color(Theme::Color::tertiary);
}

QWidget *FormParts::tag(const QString &text, QWidget *parent)
{
    return new Tag(text, parent);
}
