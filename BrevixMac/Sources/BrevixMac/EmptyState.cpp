// SPDX-License-Identifier: GPL-3.0-or-later
#include "EmptyState.h"

#include "StatusCard.h"
#include "Symbols.h"
#include "SyncState.h"
#include "TextLabel.h"
#include "ThemePainting.h"
#include "ThemedButton.h"

#include <QHBoxLayout>
#include <QPainter>

namespace {

constexpr int badgeSize = 44;
constexpr int badgeSymbolSize = 20;
constexpr int sideMargin = 40;

} // namespace

/// The symbol in a soft round field.
class EmptyState::SymbolBadge final : public QWidget
{
public:
    explicit SymbolBadge(QWidget *parent)
        : QWidget(parent)
    {
        setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    }

    void setSymbol(const QString &name)
    {
        m_symbol = name;
        update();
    }

    QSize sizeHint() const override
    {
        const int side = Theme::shared().scaled(badgeSize);
        return {side, side};
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        const Theme &theme = Theme::shared();
        QPainter painter(this);
        ThemePainting::fillRounded(painter, rect(), width() / 2.0, theme.color(Theme::Color::accentSoft));
        Symbols::paint(painter, m_symbol, theme.color(Theme::Color::accent), rect(),
                       theme.scaled(badgeSymbolSize));
    }

private:
    QString m_symbol;
};

EmptyState::EmptyState(QWidget *parent)
    : QWidget(parent)
    , m_badge(new SymbolBadge(this))
    , m_title(new TextLabel(Theme::Type::rowTitle, Theme::Color::text, TextLabel::Overflow::wrap, this))
    , m_detail(new TextLabel(Theme::Type::preview, Theme::Color::secondary, TextLabel::Overflow::wrap, this))
    , m_newPrompt(new ThemedButton(ThemedButton::Kind::quiet, QStringLiteral("New Prompt"), this))
    , m_newSkill(new ThemedButton(ThemedButton::Kind::quiet, QStringLiteral("New Skill"), this))
    , m_sync(new StatusCard(this))
{
    for (TextLabel *label : {m_title, m_detail})
        label->setAlignment(Qt::AlignCenter);
    auto *buttons = new QHBoxLayout;
    buttons->setSpacing(2);
    buttons->addStretch();
    buttons->addWidget(m_newPrompt);
    buttons->addWidget(m_newSkill);
    buttons->addStretch();

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(sideMargin, 8, sideMargin, 8);
    column->setSpacing(4);
    column->addStretch(2);
    column->addWidget(m_badge, 0, Qt::AlignHCenter);
    column->addSpacing(6);
    column->addWidget(m_title);
    column->addWidget(m_detail);
    column->addSpacing(8);
    column->addLayout(buttons);
    column->addSpacing(8);
    column->addWidget(m_sync);
    column->addStretch(3);
    clearSync();
}

void EmptyState::describe(const QString &symbol, const QString &title, const QString &detail)
{
    m_badge->setSymbol(symbol);
    m_title->setText(title);
    m_title->setVisible(!title.isEmpty());
    m_detail->setText(detail);
}

void EmptyState::setButtonsShown(bool isShown)
{
    m_newPrompt->setVisible(isShown);
    m_newSkill->setVisible(isShown);
}

void EmptyState::setSync(const SyncState &state)
{
    const bool isLoading = state.kind == SyncState::Kind::loading;
    const bool hasFailed = state.kind == SyncState::Kind::error;
    m_sync->setBusy(isLoading);
    m_sync->setVisible(isLoading || hasFailed);
    if (hasFailed)
        m_sync->describe(StatusCard::Tint::danger, QStringLiteral("exclamationmark.circle"), {},
                         state.title());
    else if (isLoading)
        m_sync->describe(StatusCard::Tint::neutral, {}, {}, state.title());
}

void EmptyState::clearSync()
{
    m_sync->setBusy(false);
    m_sync->hide();
}

QString EmptyState::title() const
{
    return m_title->text();
}

QString EmptyState::detail() const
{
    return m_detail->text();
}
