// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "PickerResults.h"

#include <QAbstractListModel>
#include <QColor>

/// Sections of results as one list: a heading row before the rows of each section that has a title. Main
/// thread only. What a row shows is worked out when it is first asked for, so that long lists cost only what
/// is seen.
class PickerListModel final : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role {
        isHeadingRole = Qt::UserRole + 1,
        subtitleRole, ///< headings
        previewRole,  ///< one line of the item's text
        dotColorRole, ///< QColor of the item's category; invalid when it has none
        hasVariablesRole,
        chipRole,     ///< label of a skill; empty for a prompt
        categoryRole, ///< name of the item's category; empty when it has none
    };

    using QAbstractListModel::QAbstractListModel;

    /// What marks the rows of skills: "Skill Instruction" when not said otherwise.
    void setSkillChip(const QString &label) { m_skillChip = label; }

    /// Does nothing when both are what is shown already. True when the list has changed.
    bool setSections(const QList<PickerResultSection> &sections, const CategoriesByID &categoriesByID);

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

    /// The item of @p row; null for a heading and outside the list.
    const PickerResult *result(int row) const;

    /// Row of the item with PickerResult::id() @p id, or -1. Where several sections have it, the row in the
    /// section @p sectionID if that is one of them, else the first.
    int rowOf(const QString &id, const QString &sectionID = {}) const;

    /// PickerResultSection::id of the section that @p row belongs to; empty outside the list.
    QString sectionOf(int row) const;

    /// The first row after @p row (before it, with a negative @p step) that is an item, or -1.
    int nextItemRow(int row, int step) const;

private:
    struct Row
    {
        qsizetype section = 0;
        qsizetype position = headingPosition;
        mutable std::optional<QString> preview;
        mutable std::optional<bool> hasVariables;
    };

    static constexpr qsizetype headingPosition = -1;

    QVariant headingData(const Row &row, int role) const;
    QVariant itemData(const Row &row, int role) const;
    QString spokenText(const Row &row) const;
    const PickerResult &resultOf(const Row &row) const
    {
        return m_sections.at(row.section).results.at(row.position);
    }
    const PromptCategory *category(const PickerResult &result) const;
    QColor dotColor(const PickerResult &result) const;

    QList<PickerResultSection> m_sections;
    CategoriesByID m_categoriesByID;
    QList<Row> m_rows;
    QString m_skillChip = QStringLiteral("Skill Instruction");
};
