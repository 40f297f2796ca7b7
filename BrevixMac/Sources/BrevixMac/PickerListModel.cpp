// SPDX-License-Identifier: GPL-3.0-or-later
#include "PickerListModel.h"

#include "PromptTemplateParser.h"

namespace {

// More than a row can show; keeps the cost of a very long text small.
constexpr qsizetype longestPreview = 200;
constexpr QRgb skillColor = 0xfff97316;

QString oneLine(const QString &text)
{
    return text.left(longestPreview).simplified();
}

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
        return QString(section.title + u", " + section.subtitle);
    case subtitleRole:
        return section.subtitle;
    default:
        return {};
    }
}

QVariant PickerListModel::itemData(const Row &row, int role) const
{
    const PickerResult &result = resultOf(row);
    switch (role) {
    case Qt::DisplayRole:
        return oneLine(result.title());
    case Qt::AccessibleTextRole:
        return QString(oneLine(result.title()) + u", " + itemData(row, previewRole).toString());
    case previewRole:
        if (!row.preview)
            row.preview = oneLine(result.text());
        return *row.preview;
    case dotColorRole:
        return dotColor(result);
    case hasVariablesRole:
        if (!row.hasVariables)
            row.hasVariables =
                result.prompt() && !PromptTemplateParser::variables(result.prompt()->text).isEmpty();
        return *row.hasVariables;
    case chipRole:
        return result.skill() ? QStringLiteral("Skill Instruction") : QString();
    default:
        return {};
    }
}

QColor PickerListModel::dotColor(const PickerResult &result) const
{
    if (!result.prompt())
        return QColor::fromRgb(skillColor);
    const auto category = m_categoriesByID.constFind(result.prompt()->categoryID);
    if (category == m_categoriesByID.constEnd() || !category->colorHex)
        return {};
    const QString digits = category->colorHex->trimmed();
    const QColor color(digits.startsWith(u'#') ? digits : u'#' + digits);
    return color.isValid() ? QColor(color.rgb()) : QColor();
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

int PickerListModel::rowOf(const QString &id) const
{
    for (int row = 0; row < m_rows.size(); ++row) {
        const PickerResult *candidate = result(row);
        if (candidate && candidate->id() == id)
            return row;
    }
    return -1;
}

int PickerListModel::nextItemRow(int row, int step) const
{
    for (int next = row + step; next >= 0 && next < m_rows.size(); next += step) {
        if (result(next))
            return next;
    }
    return -1;
}
