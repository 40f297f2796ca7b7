// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLayout>
#include <QStringList>

#include <functional>

/// Lays items out from the start of the line to its end and wraps them onto new lines; from right to left
/// where the language runs so. An item wider than the line gets the line's width.
class FlowLayout final : public QLayout
{
    Q_OBJECT

public:
    /// Makes the widget of one item.
    using Content = std::function<QWidget *(const QString &item)>;

    FlowLayout(QWidget *parent, Content content, int spacing);
    ~FlowLayout() override;

    /// Shows @p items; the widgets of those that stay are kept.
    void setItems(const QStringList &items);
    const QStringList &items() const { return m_items; }

    void addItem(QLayoutItem *item) override;
    int count() const override { return static_cast<int>(m_laidOut.size()); }
    QLayoutItem *itemAt(int index) const override { return m_laidOut.value(index); }
    QLayoutItem *takeAt(int index) override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override { return minimumSize(); }
    QSize minimumSize() const override;
    Qt::Orientations expandingDirections() const override { return {}; }
    void setGeometry(const QRect &rect) override;

private:
    enum class Apply { no, yes };

    int arrange(const QRect &rect, Apply apply) const;

    Content m_content;
    QStringList m_items;
    QList<QLayoutItem *> m_laidOut;
};
