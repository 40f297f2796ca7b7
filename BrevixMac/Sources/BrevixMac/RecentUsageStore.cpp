// SPDX-License-Identifier: GPL-3.0-or-later
#include "RecentUsageStore.h"

#include "JsonDate.h"
#include "OptionalHash.h"
#include "ProgrammingError.h"

#include "Foundation/Text.h"
#include "Foundation/UserDefaults.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QThread>

#include <algorithm>

namespace {

const QString promptsKey = QStringLiteral("recentPromptRecords");
const QString skillsKey = QStringLiteral("recentSkillRecords");

constexpr qsizetype longestPreview = 110;            // characters
constexpr qsizetype cutPreview = longestPreview - 3; // what stays before the full stops

QJsonObject toJson(const RecentPromptRecord &record)
{
    QJsonObject object{
        {QStringLiteral("id"), record.id},
        {QStringLiteral("title"), record.title},
        {QStringLiteral("preview"), record.preview},
        {QStringLiteral("lastUsedAt"), JsonDate::toJson(record.lastUsedAt)},
    };
    if (record.categoryName)
        object.insert(QStringLiteral("categoryName"), *record.categoryName);
    return object;
}

QJsonObject toJson(const RecentSkillRecord &record)
{
    return {
        {QStringLiteral("id"), record.id},
        {QStringLiteral("title"), record.title},
        {QStringLiteral("preview"), record.preview},
        {QStringLiteral("lastUsedAt"), JsonDate::toJson(record.lastUsedAt)},
    };
}

/// What both kinds of record have. False when a field is missing or of another type.
template <typename Record>
bool readCommonFields(const QJsonObject &object, Record &record)
{
    const QJsonValue id = object.value(u"id");
    const QJsonValue title = object.value(u"title");
    const QJsonValue preview = object.value(u"preview");
    const auto lastUsedAt = JsonDate::fromJson(object.value(u"lastUsedAt"));
    if (!id.isString() || !title.isString() || !preview.isString() || !lastUsedAt)
        return false;
    record.id = id.toString();
    record.title = title.toString();
    record.preview = preview.toString();
    record.lastUsedAt = *lastUsedAt;
    return true;
}

bool readRecord(const QJsonObject &object, RecentSkillRecord &record)
{
    return readCommonFields(object, record);
}

bool readRecord(const QJsonObject &object, RecentPromptRecord &record)
{
    const QJsonValue categoryName = object.value(u"categoryName");
    if (categoryName.isString())
        record.categoryName = categoryName.toString();
    else if (!categoryName.isUndefined() && !categoryName.isNull())
        return false;
    return readCommonFields(object, record);
}

/// One record that does not decode makes the whole list undecodable, and that counts as an empty list.
template <typename Record>
QList<Record> decode(const QByteArray &json)
{
    QList<Record> records;
    const QJsonArray list = QJsonDocument::fromJson(json).array();
    for (const auto &value : list) {
        Record record;
        if (!value.isObject() || !readRecord(value.toObject(), record))
            return {};
        records.append(record);
    }
    std::stable_sort(records.begin(), records.end(), [](const Record &left, const Record &right) {
        return left.lastUsedAt > right.lastUsedAt;
    });
    return records;
}

template <typename Record>
QList<Record> load(const UserDefaults &defaults, const QString &key)
{
    return decode<Record>(defaults.data(key).value_or(QByteArray()));
}

template <typename Record>
void save(UserDefaults &defaults, const QString &key, const QList<Record> &records)
{
    QJsonArray list;
    for (const Record &record : records)
        list.append(toJson(record));
    defaults.setData(key, QJsonDocument(list).toJson(QJsonDocument::Compact));
}

template <typename Record>
void putFirst(QList<Record> &records, const Record &record)
{
    records.removeIf([&](const Record &other) { return other.id == record.id; });
    records.prepend(record);
    if (records.size() > RecentUsageStore::cap)
        records.resize(RecentUsageStore::cap);
}

template <typename Record>
QStringList identifiers(const QList<Record> &records)
{
    QStringList ids;
    ids.reserve(records.size());
    for (const Record &record : records)
        ids.append(record.id);
    return ids;
}

void requireThreadOf(const QObject &object)
{
    if (object.thread() != QThread::currentThread())
        stopOnProgrammingError(QStringLiteral("RecentUsageStore used away from the main thread"));
}

} // namespace

size_t qHash(const RecentPromptRecord &record, size_t seed)
{
    const size_t hash = hashOptional(record.categoryName, qHashMulti(seed, record.id, record.title));
    return qHashMulti(hash, record.preview, record.lastUsedAt);
}

size_t qHash(const RecentSkillRecord &record, size_t seed)
{
    return qHashMulti(seed, record.id, record.title, record.preview, record.lastUsedAt);
}

RecentUsageStore::RecentUsageStore(UserDefaults &defaults, std::function<QDateTime()> now)
    : m_defaults(defaults)
    , m_now(std::move(now))
    , m_recents(load<RecentPromptRecord>(defaults, promptsKey))
    , m_recentSkills(load<RecentSkillRecord>(defaults, skillsKey))
{
}

QStringList RecentUsageStore::recentIDs() const
{
    requireThreadOf(*this);
    return identifiers(m_recents);
}

QStringList RecentUsageStore::recentSkillIDs() const
{
    requireThreadOf(*this);
    return identifiers(m_recentSkills);
}

void RecentUsageStore::record(const PromptItem &prompt, const std::optional<QString> &categoryName)
{
    requireThreadOf(*this);
    const RecentPromptRecord record{.id = prompt.id,
                                    .title = prompt.title,
                                    .categoryName = categoryName,
                                    .preview = preview(prompt.text),
                                    .lastUsedAt = m_now()};
    putFirst(m_recents, record);
    Q_EMIT recentsChanged();
    save(m_defaults, promptsKey, m_recents);
}

void RecentUsageStore::record(const SkillItem &skill)
{
    requireThreadOf(*this);
    const RecentSkillRecord record{
        .id = skill.id, .title = skill.title, .preview = preview(skill.text), .lastUsedAt = m_now()};
    putFirst(m_recentSkills, record);
    Q_EMIT recentSkillsChanged();
    save(m_defaults, skillsKey, m_recentSkills);
}

QString RecentUsageStore::preview(const QString &text)
{
    QString line = text;
    line.replace(u'\n', u' ');
    const bool fits = Text::utf16OffsetOfCharacter(line, longestPreview) == line.size();
    return fits ? line : Text::prefix(line, cutPreview) + u"...";
}
