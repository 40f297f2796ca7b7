// SPDX-License-Identifier: GPL-3.0-or-later
#include "FieldPath.h"

#include <algorithm>

namespace Cloud {

namespace {

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

bool isMap(const QJsonValue &value)
{
    return value.toObject().contains(u"mapValue");
}

} // namespace

std::optional<FieldPath> parseFieldPath(const QString &text)
{
    FieldPath path;
    for (qsizetype position = 0;;) {
        const bool isQuoted = position < text.size() && text[position] == u'`';
        const auto name = isQuoted ? quotedName(text, position) : plainName(text, position);
        if (!name || name->isEmpty())
            return std::nullopt;
        path.append(*name);
        if (position == text.size())
            return path;
        if (text[position++] != u'.')
            return std::nullopt;
    }
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
    const QString &name = path.constFirst();
    if (path.size() == 1) {
        if (value.isUndefined())
            fields.remove(name);
        else
            fields.insert(name, value);
        return;
    }
    const QJsonValue present = fields.value(name);
    if (value.isUndefined() && !isMap(present))
        return;
    QJsonObject inner = fieldsOfMap(present);
    setValueAt(inner, path.sliced(1), value);
    fields.insert(name,
                  QJsonObject{{QStringLiteral("mapValue"), QJsonObject{{QStringLiteral("fields"), inner}}}});
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
