// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// What a user has typed into an editor and not saved yet. A value; fields that an editor does not have stay
/// empty.
struct EditorDraft
{
    QString title;
    QString text;
    QString categoryID;
    QString variableName;
    QString newCategoryName;
    QString newCategoryColor;
    std::optional<QString> previousText = {}; ///< before the last optimisation
    std::optional<QString> sourceFilename = {};

    /// Nothing in it is worth keeping: the user has typed nothing but blanks.
    bool isBlank() const;

    /// Length of all texts in UTF-16 units.
    qsizetype length() const;

    QByteArray toJson() const;
    static std::optional<EditorDraft> fromJson(const QByteArray &json);

    bool operator==(const EditorDraft &) const = default;
};
