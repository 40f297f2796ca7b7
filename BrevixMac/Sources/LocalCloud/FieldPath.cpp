// SPDX-License-Identifier: GPL-3.0-or-later
#include "FieldPath.h"

#include "Values.h"

#include <algorithm>
#include <vector>

namespace Cloud {

namespace {

constexpr qsizetype maximumPathSize = 1500; // bytes of UTF-8, counted without quotes

bool isPlainName(const QString &name)
{
    const auto isPlain = [](QChar c) {
        return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'_' || (c >= u'0' && c <= u'9');
    };
    return !name.isEmpty() && !name.front().isDigit() && std::all_of(name.begin(), name.end(), isPlain);
}

/// Reads a quoted name whose first backtick is at @p position, and moves behind its last one.
std::optional<QString> quotedName(const QString &text, qsizetype &position)
{
    QString name;
    for (++position; position < text.size(); ++position) {
        if (text[position] == u'`') {
            ++position;
            return name;
        }
        if (text[position] == u'\\' && ++position == text.size())
            break;
        name += text[position];
    }
    return std::nullopt;
}

std::optional<QString> plainName(const QString &text, qsizetype &position)
{
    const qsizetype dot = text.indexOf(u'.', position);
    const QString name = text.sliced(position, (dot < 0 ? text.size() : dot) - position);
    position += name.size();
    return isPlainName(name) ? std::optional(name) : std::nullopt;
}

QJsonObject fieldsOfMap(const QJsonValue &value)
{
    return value.toObject().value(u"mapValue").toObject().value(u"fields").toObject();
}

QJsonObject mapOf(const QJsonObject &fields)
{
    return {{QStringLiteral("mapValue"), QJsonObject{{QStringLiteral("fields"), fields}}}};
}

bool isMap(const QJsonValue &value)
{
    return value.toObject().contains(u"mapValue");
}

} // namespace

std::optional<FieldPath> parseFieldPath(const QString &text)
{
    FieldPath path;
    qsizetype size = -1; // no dot in front of the first name
    for (qsizetype position = 0; path.size() < maximumDepth;) {
        const bool isQuoted = position < text.size() && text[position] == u'`';
        const auto name = isQuoted ? quotedName(text, position) : plainName(text, position);
        if (!name || name->isEmpty())
            return std::nullopt;
        path.append(*name);
        size += name->toUtf8().size() + 1;
        if (size > maximumPathSize)
            return std::nullopt;
        if (position == text.size())
            return path;
        if (text[position++] != u'.')
            return std::nullopt;
    }
    return std::nullopt;
}

QJsonValue valueAt(const QJsonObject &fields, const FieldPath &path)
{
    QJsonValue value = fields.value(path.constFirst());
    for (const QString &name : path.sliced(1))
        value = isMap(value) ? fieldsOfMap(value).value(name) : QJsonValue(QJsonValue::Undefined);
    return value;
}

void setValueAt(QJsonObject &fields, const FieldPath &path, const QJsonValue &value)
{
    std::vector<QJsonObject> maps{fields}; // on the way down
    for (const QString &name : path.first(path.size() - 1)) {
        const QJsonValue present = maps.back().value(name);
        if (value.isUndefined() && !isMap(present))
            return;
        maps.push_back(fieldsOfMap(present));
    }
    if (value.isUndefined())
        maps.back().remove(path.constLast());
    else
        maps.back().insert(path.constLast(), value);
    for (std::size_t depth = maps.size() - 1; depth > 0; --depth)
        maps[depth - 1].insert(path[qsizetype(depth) - 1], mapOf(maps[depth]));
    fields = maps.front();
}

QJsonObject projected(const QJsonObject &fields, const QList<FieldPath> &paths)
{
    QJsonObject kept;
    for (const FieldPath &path : paths) {
        const QJsonValue value = valueAt(fields, path);
        if (!value.isUndefined())
            setValueAt(kept, path, value);
    }
    return kept;
}

} // namespace Cloud
