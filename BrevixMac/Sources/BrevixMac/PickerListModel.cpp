// SPDX-License-Identifier: GPL-3.0-or-later
#include "PickerListModel.h"

#include "OneLine.h"
#include "PromptTemplateParser.h"
#include "ThemePainting.h"

namespace {

constexpr qsizetype longestPreview = 200; // more than a row can show
constexpr QRgb skillColor = 0xfff97316;

} // namespace

bool PickerListModel::setSections(const QList<PickerResultSection> &sections,
                                  const CategoriesByID &categoriesByID)
{
    if (sections == m_sections && categoriesByID == m_categoriesByID)
        return false;
    beginResetModel();
    m_sections = sections;
    m_categoriesByID = categoriesByID;
    m_rows.clear();
    for (qsizetype section = 0; section < m_sections.size(); ++section) {
        if (!m_sections.at(section).title.isEmpty())
            m_rows.append(
                Row{.section = section, .position = headingPosition, .preview = {}, .hasVariables = {}});
        for (qsizetype position = 0; position < m_sections.at(section).results.size(); ++position)
            m_rows.append(Row{.section = section, .position = position, .preview = {}, .hasVariables = {}});
    }
    endResetModel();
    return true;
}

int PickerListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

QVariant PickerListModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_rows.size())
        return {};
    const Row &row = m_rows.at(index.row());
    if (role == isHeadingRole)
        return row.position == headingPosition;
    return row.position == headingPosition ? headingData(row, role) : itemData(row, role);
}

QVariant PickerListModel::headingData(const Row &row, int role) const
{
    const PickerResultSection &section = m_sections.at(row.section);
    switch (role) {
    case Qt::DisplayRole:
        return section.title;
    case Qt::AccessibleTextRole:
        return section.subtitle.isEmpty() ? section.title : QString(section.title + u", " + section.subtitle);
    case subtitleRole:
        return OneLine::of(section.subtitle, longestPreview);
    default:
        return {};
    }
}

QVariant PickerListModel::itemData(const Row &row, int role) const
{
    const PickerResult &result = resultOf(row);
    switch (role) {
    case Qt::DisplayRole:
        return OneLine::of(result.title(), longestPreview);
    case Qt::AccessibleTextRole:
        return spokenText(row);
    case previewRole:
        if (!row.preview)
            row.preview = OneLine::of(result.text(), longestPreview);
        return *row.preview;
    case dotColorRole:
        return dotColor(result);
    case hasVariablesRole:
        if (!row.hasVariables)
            row.hasVariables =
                result.prompt() && !PromptTemplateParser::variables(result.prompt()->text).isEmpty();
        return *row.hasVariables;
    case chipRole:
        return result.skill() ? m_skillChip : QString();
    case categoryRole: {
        const PromptCategory *known = category(result);
        return known ? OneLine::of(known->name, longestPreview) : QString();
    }
    default:
        return {};
    }
}

QString PickerListModel::spokenText(const Row &row) const
{
    QStringList parts{itemData(row, Qt::DisplayRole).toString(), itemData(row, chipRole).toString(),
                      itemData(row, categoryRole).toString()};
    if (itemData(row, hasVariablesRole).toBool())
        parts.append(QStringLiteral("Contains variables"));
    parts.append(itemData(row, previewRole).toString());
    parts.removeAll(QString());
    return parts.join(u", ");
}

const PromptCategory *PickerListModel::category(const PickerResult &result) const
{
    const auto found = result.prompt() ? m_categoriesByID.constFind(result.prompt()->categoryID)
                                       : m_categoriesByID.constEnd();
    return found == m_categoriesByID.constEnd() ? nullptr : &*found;
}

QColor PickerListModel::dotColor(const PickerResult &result) const
{
    if (!result.prompt())
        return QColor::fromRgb(skillColor);
    const PromptCategory *known = category(result);
    return known ? ThemePainting::categoryColor(*known) : QColor();
}

Qt::ItemFlags PickerListModel::flags(const QModelIndex &index) const
{
    if (!result(index.row()))
        return Qt::ItemIsEnabled | Qt::ItemNeverHasChildren;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
}

const PickerResult *PickerListModel::result(int row) const
{
    if (row < 0 || row >= m_rows.size() || m_rows.at(row).position == headingPosition)
        return nullptr;
    return &resultOf(m_rows.at(row));
}

int PickerListModel::rowOf(const QString &id, const QString &sectionID) const
{
    int first = -1;
    for (int row = 0; row < m_rows.size(); ++row) {
        const PickerResult *candidate = result(row);
        if (!candidate || candidate->id() != id)
            continue;
        if (sectionID.isEmpty() || sectionOf(row) == sectionID)
            return row;
        first = first < 0 ? row : first;
    }
    return first;
}

QString PickerListModel::sectionOf(int row) const
{
    return row < 0 || row >= m_rows.size() ? QString() : m_sections.at(m_rows.at(row).section).id;
}

int PickerListModel::nextItemRow(int row, int step) const
{
    for (int next = row + step; next >= 0 && next < m_rows.size(); next += step) {
        if (result(next))
            return next;
    }
    return -1;
}
