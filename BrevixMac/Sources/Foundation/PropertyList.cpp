// SPDX-License-Identifier: GPL-3.0-or-later
#include "PropertyList.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <plist/plist.h>

#include <cstdlib>
#include <limits>
#include <memory>

namespace {

/// Deeper lists than this count as damaged; reading them further would eat the stack.
constexpr int maximumDepth = 128;

struct FreeNode
{
    void operator()(void *node) const { plist_free(node); }
};
struct FreeMemory
{
    void operator()(void *memory) const { std::free(memory); }
};
using Node = std::unique_ptr<void, FreeNode>;
using CString = std::unique_ptr<char, FreeMemory>;
using Iterator = std::unique_ptr<void, FreeMemory>;

/// Dates count from here, in seconds.
QDateTime epoch()
{
    return QDateTime(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC);
}

QVariant toVariant(plist_t node, int depth);

QVariant textValue(plist_t node)
{
    uint64_t size = 0;
    const char *characters = plist_get_string_ptr(node, &size);
    return QString::fromUtf8(characters, static_cast<qsizetype>(size));
}

QVariant dataValue(plist_t node)
{
    uint64_t size = 0;
    const char *bytes = plist_get_data_ptr(node, &size);
    return bytes ? QByteArray(bytes, static_cast<qsizetype>(size)) : QByteArray("");
}

QVariant dateValue(plist_t node)
{
    int32_t seconds = 0;
    int32_t microseconds = 0;
    plist_get_date_val(node, &seconds, &microseconds);
    return epoch().addSecs(seconds).addMSecs(microseconds / 1000);
}

QVariant integerValue(plist_t node)
{
    uint64_t value = 0;
    plist_get_uint_val(node, &value);
    return static_cast<qlonglong>(value);
}

QVariant booleanValue(plist_t node)
{
    uint8_t value = 0;
    plist_get_bool_val(node, &value);
    return value != 0;
}

QVariant realValue(plist_t node)
{
    double value = 0;
    plist_get_real_val(node, &value);
    return value;
}

QVariant listValue(plist_t node, int depth)
{
    QVariantList list;
    for (uint32_t index = 0; index < plist_array_get_size(node); ++index) {
        QVariant value = toVariant(plist_array_get_item(node, index), depth + 1);
        if (!value.isValid())
            return {};
        list.append(std::move(value));
    }
    return list;
}

QVariant dictionaryValue(plist_t node, int depth)
{
    QVariantMap dictionary;
    plist_dict_iter rawIterator = nullptr;
    plist_dict_new_iter(node, &rawIterator);
    const Iterator iterator(rawIterator);
    for (uint32_t count = plist_dict_get_size(node); count > 0; --count) {
        char *rawKey = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(node, iterator.get(), &rawKey, &item);
        const CString key(rawKey);
        const QVariant value = item ? toVariant(item, depth + 1) : QVariant();
        if (!key || !value.isValid())
            return {};
        dictionary.insert(QString::fromUtf8(key.get()), value);
    }
    return dictionary;
}

/// An invalid variant when the list is damaged or of a kind that has no counterpart here.
QVariant toVariant(plist_t node, int depth)
{
    if (depth > maximumDepth)
        return {};
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN:
        return booleanValue(node);
    case PLIST_UINT:
        return integerValue(node);
    case PLIST_REAL:
        return realValue(node);
    case PLIST_STRING:
        return textValue(node);
    case PLIST_DATE:
        return dateValue(node);
    case PLIST_DATA:
        return dataValue(node);
    case PLIST_ARRAY:
        return listValue(node, depth);
    case PLIST_DICT:
        return dictionaryValue(node, depth);
    default:
        return {};
    }
}

/// UTF-8 that a property list can hold: there is no way to write U+0000 in one.
QByteArray storableText(QString text)
{
    return text.replace(QChar::Null, QChar::ReplacementCharacter).toUtf8();
}

plist_t fromVariant(const QVariant &value);

plist_t fromDate(const QDateTime &date)
{
    if (!date.isValid())
        return nullptr;
    constexpr qint64 earliest = std::numeric_limits<int32_t>::min();
    constexpr qint64 latest = std::numeric_limits<int32_t>::max();
    return plist_new_date(static_cast<int32_t>(qBound(earliest, epoch().secsTo(date), latest)), 0);
}

plist_t fromList(const QVariantList &list)
{
    plist_t node = plist_new_array();
    for (const QVariant &value : list) {
        if (plist_t item = fromVariant(value))
            plist_array_append_item(node, item);
    }
    return node;
}

plist_t fromDictionary(const QVariantMap &dictionary)
{
    plist_t node = plist_new_dict();
    for (auto entry = dictionary.begin(); entry != dictionary.end(); ++entry) {
        if (plist_t item = fromVariant(entry.value()))
            plist_dict_set_item(node, storableText(entry.key()).constData(), item);
    }
    return node;
}

/// A null node for a value that property lists do not have.
plist_t fromVariant(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
        return plist_new_bool(value.toBool() ? 1 : 0);
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
        return plist_new_uint(static_cast<uint64_t>(value.toLongLong()));
    case QMetaType::Double:
        return plist_new_real(value.toDouble());
    case QMetaType::QString:
        return plist_new_string(storableText(value.toString()).constData());
    case QMetaType::QByteArray: {
        const QByteArray bytes = value.toByteArray();
        return plist_new_data(bytes.constData(), static_cast<uint64_t>(bytes.size()));
    }
    case QMetaType::QDateTime:
        return fromDate(value.toDateTime());
    case QMetaType::QVariantList:
        return fromList(value.toList());
    case QMetaType::QVariantMap:
        return fromDictionary(value.toMap());
    default:
        return nullptr;
    }
}

/// The root of a property list in any of its formats; null when it is damaged.
Node parse(const QByteArray &bytes)
{
    plist_t node = nullptr;
    plist_from_memory(bytes.constData(), static_cast<uint32_t>(bytes.size()), &node);
    return Node(node);
}

/// @p root as XML.
QByteArray toXml(const Node &root)
{
    char *rawXml = nullptr;
    uint32_t size = 0;
    plist_to_xml(root.get(), &rawXml, &size);
    const CString xml(rawXml);
    return QByteArray(xml.get(), static_cast<qsizetype>(size));
}

} // namespace

std::optional<QVariantMap> PropertyList::parseDictionary(const QByteArray &bytes)
{
    if (bytes.isEmpty() || bytes.size() > maximumSize)
        return std::nullopt;
    Node root = parse(bytes);
    // A binary list can hold keys with U+0000 in them, on which the library ends the program. XML cannot.
    if (root && bytes.startsWith("bplist"))
        root = parse(toXml(root));
    if (!root || plist_get_node_type(root.get()) != PLIST_DICT)
        return std::nullopt;
    const QVariant dictionary = toVariant(root.get(), 0);
    return dictionary.isValid() ? std::optional(dictionary.toMap()) : std::nullopt;
}

std::optional<QVariantMap> PropertyList::readDictionary(const QString &path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return parseDictionary(file.read(maximumSize + 1));
}

QByteArray PropertyList::serialize(const QVariantMap &dictionary)
{
    return toXml(Node(fromDictionary(dictionary)));
}
