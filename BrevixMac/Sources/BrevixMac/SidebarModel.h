// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractListModel>
#include <QColor>

#include <optional>

/// One line of a sidebar: something the list beside it can be narrowed to, or a heading.
struct SidebarEntry
{
    QString id; ///< empty for a heading
    QString title;
    QString symbol = {};
    QColor tint = {};                    ///< of the symbol; invalid: that of the text
    std::optional<qsizetype> count = {}; ///< at the right end
    bool canBeShared = false;

    bool isHeading() const { return id.isEmpty(); }
    bool operator==(const SidebarEntry &) const = default;
};

/// The lines of a sidebar. Main thread only.
class SidebarModel final : public QAbstractListModel
{
    Q_OBJECT

public:
    using QAbstractListModel::QAbstractListModel;

    /// Does nothing when they are what is shown already. True when the list has changed.
    bool setEntries(const QList<SidebarEntry> &entries);

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

    /// The line of @p row; null outside the list.
    const SidebarEntry *entry(int row) const;

    /// "1 item", "2 items".
    static QString counted(qsizetype count);

    /// Row of the line with this identifier, or -1.
    int rowOf(const QString &id) const;

private:
    QList<SidebarEntry> m_entries;
};
