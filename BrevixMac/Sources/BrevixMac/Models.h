// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QHashFunctions>
#include <QList>
#include <QMap>
#include <QString>

#include <optional>

/// The library's records: plain values, compared and hashed over every field, passed by value everywhere.

/// A reusable prompt; its text may hold {{name}} variables.
struct PromptItem
{
    QString id;
    QString title;
    QString text;
    QString categoryID; ///< may name a category that does not exist (any more)
    qint64 order = 0;
    std::optional<QDateTime> createdAt = {};

    bool operator==(const PromptItem &) const = default;
};

/// A longer reusable instruction, inserted as it stands.
struct SkillItem
{
    QString id;
    QString title;
    QString text;
    std::optional<QString> sourceFilename = {}; ///< of the file it was imported from
    qint64 order = 0;
    std::optional<QDateTime> createdAt = {};

    bool operator==(const SkillItem &) const = default;
};

struct PromptCategory
{
    QString id;
    QString name;
    std::optional<QString> colorHex = {}; ///< absent: no colour was chosen
    qint64 order = 0;
    std::optional<QDateTime> createdAt = {};

    bool operator==(const PromptCategory &) const = default;
};

size_t qHash(const PromptItem &item, size_t seed = 0);
size_t qHash(const SkillItem &item, size_t seed = 0);
size_t qHash(const PromptCategory &category, size_t seed = 0);

/// One fill-in field of a prompt's text, identified by its name.
struct VariableToken
{
    QString name;

    bool operator==(const VariableToken &) const = default;
};

inline size_t qHash(const VariableToken &token, size_t seed = 0)
{
    return qHash(token.name, seed);
}

/// Values by variable name, as the user typed them.
using VariableValues = QMap<QString, QString>;

/// A prompt ready to be inserted or copied.
struct RenderedPrompt
{
    PromptItem prompt;
    QString text;
    VariableValues variables;

    bool operator==(const RenderedPrompt &) const = default;
};

size_t qHash(const RenderedPrompt &rendered, size_t seed = 0);

/// Categories by identifier. Of two with the same identifier the first in library order is kept.
using CategoriesByID = QHash<QString, PromptCategory>;
