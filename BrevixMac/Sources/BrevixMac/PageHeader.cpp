// SPDX-License-Identifier: GPL-3.0-or-later
#include "PageHeader.h"

#include "ThemedButton.h"

#include <QHBoxLayout>
#include <QPainter>

namespace {

constexpr int halo = Theme::haloWidth;
constexpr int topMargin = 18;
constexpr int underlinedTopMargin = 17;
constexpr int underlinedBottomMargin = 9;

} // namespace

PageHeader::PageHeader(const QString &title, QWidget *parent)
    : QWidget(parent)
    , m_back(new ThemedButton(ThemedButton::Kind::plain, QStringLiteral("Back"), this))
    , m_title(new TextLabel(Theme::Type::screenTitle, Theme::Color::text, TextLabel::Overflow::elide, this))
    , m_subtitle(
          new TextLabel(Theme::Type::caption, Theme::Color::secondary, TextLabel::Overflow::elide, this))
    , m_row(new QHBoxLayout(this))
{
    m_title->setText(title);
    m_subtitle->hide();
    m_back->setFaceSymbol(QStringLiteral("chevron.left"));
    m_back->setFace(ThemedButton::Face::symbolOnly);
    m_back->setToolTip(m_back->text());
    connect(m_back, &QPushButton::clicked, this, &PageHeader::backRequested);

    auto *texts = new QVBoxLayout;
    texts->setSpacing(0);
    texts->addStretch();
    texts->addWidget(m_title);
    texts->addWidget(m_subtitle);
    texts->addStretch();
    m_row->setSpacing(8 - halo);
    m_row->addWidget(m_back, 0, Qt::AlignVCenter);
    m_row->addLayout(texts, 1);
    setUnderlined(false);
    connect(&Theme::shared(), &Theme::changed, this, qOverload<>(&PageHeader::update));
}

void PageHeader::setSubtitle(const QString &text, TextLabel::Overflow overflow)
{
    m_subtitle->setOverflow(overflow);
    m_subtitle->setText(text);
    m_subtitle->setVisible(!text.isEmpty());
}

void PageHeader::setUnderlined(bool isUnderlined)
{
    m_isUnderlined = isUnderlined;
    m_row->setContentsMargins(Theme::margin - halo, isUnderlined ? underlinedTopMargin : topMargin,
                              Theme::margin - halo, isUnderlined ? underlinedBottomMargin : 0);
    update();
}

void PageHeader::addButton(ThemedButton *button)
{
    m_row->addWidget(button, 0, Qt::AlignVCenter);
}

QString PageHeader::title() const
{
    return m_title->text();
}

QString PageHeader::subtitle() const
{
    return m_subtitle->text();
}

void PageHeader::paintEvent(QPaintEvent *)
{
    if (m_isUnderlined)
        QPainter(this).fillRect(QRect(0, height() - 1, width(), 1),
                                Theme::shared().color(Theme::Color::line));
}
