// SPDX-License-Identifier: GPL-3.0-or-later
#include "EditorWindow.h"

#include "EditorFrame.h"
#include "EditorModel.h"
#include "HintBubble.h"
#include "Symbols.h"
#include "TextLabel.h"
#include "ThemePainting.h"
#include "WindowSize.h"

#include <QAction>
#include <QHBoxLayout>
#include <QHelpEvent>
#include <QPainter>
#include <QShortcut>

namespace {

constexpr int headerTop = 20;
constexpr int tileSize = 38;
constexpr int tileSymbol = 19;

/// A symbol on a soft ground.
class SymbolTile final : public QWidget
{
public:
    SymbolTile(QString symbol, QWidget *parent)
        : QWidget(parent)
        , m_symbol(std::move(symbol))
    {
        setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
        connect(&Theme::shared(), &Theme::changed, this, &QWidget::updateGeometry);
    }

    QSize sizeHint() const override
    {
        const int side = Theme::shared().scaled(tileSize);
        return {side, side};
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        const Theme &theme = Theme::shared();
        QPainter painter(this);
        ThemePainting::fillRounded(painter, rect(), theme.scaled(Theme::buttonRadius + 1),
                                   theme.color(Theme::Color::accentSoft));
        Symbols::paint(painter, m_symbol, theme.color(Theme::Color::accent), rect(),
                       theme.scaled(tileSymbol));
    }

private:
    QString m_symbol;
};

} // namespace

EditorWindow::EditorWindow(const QString &title, const QSize &size)
    : QWidget(nullptr, Qt::Window)
    , m_hint(new HintBubble(this))
{
    setAttribute(Qt::WA_QuitOnClose, false);
    setWindowTitle(title);
    const QSize wanted(Theme::shared().scaled(size.width()), Theme::shared().scaled(size.height()));
    resize(WindowSize::onScreen(*this, wanted));
    auto *close = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_W), this);
    connect(close, &QShortcut::activated, this, &QWidget::close);
    connect(&Theme::shared(), &Theme::changed, this, qOverload<>(&QWidget::update));
}

QWidget *EditorWindow::makeHeader(const QString &symbol, const QString &line)
{
    auto *header = new QWidget(this);
    auto *title =
        new TextLabel(Theme::Type::screenTitle, Theme::Color::text, TextLabel::Overflow::elide, header);
    title->setText(windowTitle());
    auto *subtitle =
        new TextLabel(Theme::Type::caption, Theme::Color::secondary, TextLabel::Overflow::wrap, header);
    subtitle->setText(line);
    auto *texts = new QVBoxLayout;
    texts->setSpacing(0);
    texts->addWidget(title);
    texts->addWidget(subtitle);
    auto *row = new QHBoxLayout(header);
    row->setContentsMargins(Theme::margin, headerTop, Theme::margin, 0);
    row->setSpacing(12);
    row->addWidget(new SymbolTile(symbol, header), 0, Qt::AlignVCenter);
    row->addLayout(texts, 1);
    return header;
}

void EditorWindow::setFrame(EditorModel &model, EditorFrame &frame)
{
    m_model = &model;
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(&frame);
    connect(&frame, &EditorFrame::cancelled, this, &QWidget::close);
    connect(&model, &EditorModel::saved, this, &QWidget::close);
    connect(&model, &EditorModel::savingFailed, this, &EditorWindow::reappear);
}

/// A window that was closed while it saved comes back with the failure, without taking the keyboard from what
/// its user does now.
void EditorWindow::reappear()
{
    if (isVisible())
        return;
    setAttribute(Qt::WA_ShowWithoutActivating, true);
    show();
    setAttribute(Qt::WA_ShowWithoutActivating, false);
}

void EditorWindow::present()
{
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

void EditorWindow::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (event->spontaneous())
        return;
    if (m_model->begin() || !focusWidget())
        focusFirst();
}

void EditorWindow::hideEvent(QHideEvent *event)
{
    report();
    m_model->flush();
    QWidget::hideEvent(event);
}

void EditorWindow::paintEvent(QPaintEvent *)
{
    QPainter(this).fillRect(rect(), Theme::shared().color(Theme::Color::surface));
}

bool EditorWindow::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip) {
        m_hint->showFor(static_cast<QHelpEvent *>(event)->pos());
        return true;
    }
    return QWidget::event(event);
}
