// SPDX-License-Identifier: GPL-3.0-or-later
#include "SidebarModel.h"

#include "OneLine.h"

QString SidebarModel::counted(qsizetype count)
{
    return QString::number(count) + (count == 1 ? u" item" : u" items");
}

bool SidebarModel::setEntries(const QList<SidebarEntry> &entries)
{
    if (entries == m_entries)
        return false;
    beginResetModel();
    m_entries = entries;
    endResetModel();
    return true;
}

int SidebarModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_entries.size());
}

QVariant SidebarModel::data(const QModelIndex &index, int role) const
{
    const SidebarEntry *line = entry(index.row());
    if (!line)
        return {};
    if (role == Qt::DisplayRole)
        return OneLine::of(line->title);
    if (role == Qt::AccessibleTextRole)
        return line->count ? QString(OneLine::of(line->title) + u", " + counted(*line->count))
                           : OneLine::of(line->title);
    return {};
}

Qt::ItemFlags SidebarModel::flags(const QModelIndex &index) const
{
    const SidebarEntry *line = entry(index.row());
    if (!line || line->isHeading())
        return Qt::ItemNeverHasChildren;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
}

const SidebarEntry *SidebarModel::entry(int row) const
{
    return row < 0 || row >= m_entries.size() ? nullptr : &m_entries.at(row);
}

int SidebarModel::rowOf(const QString &id) const
{
    for (int row = 0; row < m_entries.size(); ++row) {
        if (!m_entries.at(row).isHeading() && m_entries.at(row).id == id)
            return row;
    }
    return -1;
}
