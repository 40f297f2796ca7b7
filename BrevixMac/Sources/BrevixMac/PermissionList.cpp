// SPDX-License-Identifier: GPL-3.0-or-later
#include "PermissionList.h"

#include "AppState.h"
#include "Symbols.h"
#include "TextLabel.h"
#include "ThemePainting.h"
#include "ThemedButton.h"

#include <QHBoxLayout>
#include <QPainter>

namespace {

constexpr int padding = 12;
constexpr int symbolGap = 9;
constexpr int rowHeight = 38;

} // namespace

PermissionList::PermissionList(AppState &appState, QWidget *parent)
    : QFrame(parent)
    , m_appState(appState)
{
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);
    m_accessibility = makeRow(QStringLiteral("Accessibility"));
    m_postEvent = makeRow(QStringLiteral("Keyboard Event Posting"));
    connect(m_accessibility.button, &QPushButton::clicked, &m_appState,
            &AppState::requestAccessibilityPermission);
    connect(m_postEvent.button, &QPushButton::clicked, &m_appState, &AppState::requestPostEventPermission);
    connect(&Theme::shared(), &Theme::changed, this, qOverload<>(&PermissionList::update));
}

QString PermissionList::Row::symbol() const
{
    return isGranted ? QStringLiteral("checkmark.circle.fill") : QStringLiteral("circle");
}

PermissionList::Row PermissionList::makeRow(const QString &name)
{
    const Theme &theme = Theme::shared();
    Row row;
    row.label = new TextLabel(Theme::Type::cardTitle, Theme::Color::text, TextLabel::Overflow::elide, this);
    row.label->setText(name);
    row.button = new ThemedButton(ThemedButton::Kind::plain, QStringLiteral("Grant"), this);
    row.button->setAccessibleName(u"Grant " + name);
    row.button->setInk(Theme::Color::accent);
    row.button->setDesignHeight(28);
    auto *line = new QHBoxLayout;
    line->setContentsMargins(theme.scaled(padding + Theme::symbolSize + symbolGap), 0,
                             theme.scaled(padding) - Theme::haloWidth, 0);
    line->addWidget(row.label, 1, Qt::AlignVCenter);
    line->addWidget(row.button, 0, Qt::AlignVCenter);
    line->addStrut(theme.scaled(rowHeight));
    static_cast<QVBoxLayout *>(layout())->addLayout(line);
    return row;
}

void PermissionList::refresh()
{
    show(m_accessibility, m_appState.permissions().accessibilityGranted());
    show(m_postEvent, m_appState.permissions().postEventGranted());
    setVisible(!m_accessibility.isGranted || !m_postEvent.isGranted);
    update();
}

void PermissionList::show(Row &row, bool isGranted)
{
    row.isGranted = isGranted;
    row.button->setVisible(!isGranted);
    row.label->setAccessibleName(row.label->text() + (isGranted ? u", granted" : u", not granted"));
}

void PermissionList::paintEvent(QPaintEvent *)
{
    const Theme &theme = Theme::shared();
    QPainter painter(this);
    const int radius = theme.scaled(Theme::cardRadius);
    ThemePainting::fillRounded(painter, rect(), radius, theme.color(Theme::Color::raised));
    ThemePainting::strokeRounded(painter, rect(), radius, theme.color(Theme::Color::line));
    painter.fillRect(QRect(1, height() / 2, width() - 2, 1), theme.color(Theme::Color::line));
    const int size = theme.scaled(Theme::symbolSize);
    for (const Row *row : {&m_accessibility, &m_postEvent}) {
        const QRectF area(theme.scaled(padding), row->label->y(), size, row->label->height());
        Symbols::paint(painter, row->symbol(),
                       theme.color(row->isGranted ? Theme::Color::success : Theme::Color::tertiary), area,
                       size);
    }
}
