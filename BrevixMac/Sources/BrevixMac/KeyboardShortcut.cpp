// SPDX-License-Identifier: GPL-3.0-or-later
#include "KeyboardShortcut.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <limits>

namespace {

struct KeyName
{
    quint32 keyCode = 0;
    QStringView name = {};
};

// Digits, punctuation and function keys have no name on purpose: their legends depend on the layout.
constexpr KeyName keyNames[] = {
    {36, u"↩"},  {48, u"⇥"},  {49, u"Space"}, {51, u"⌫"}, {53, u"⎋"}, {123, u"←"}, {124, u"→"},
    {125, u"↓"}, {126, u"↑"}, {0, u"A"},      {1, u"S"},  {2, u"D"},  {3, u"F"},   {4, u"H"},
    {5, u"G"},   {6, u"Z"},   {7, u"X"},      {8, u"C"},  {9, u"V"},  {11, u"B"},  {12, u"Q"},
    {13, u"W"},  {14, u"E"},  {15, u"R"},     {16, u"Y"}, {17, u"T"}, {31, u"O"},  {32, u"U"},
    {34, u"I"},  {35, u"P"},  {37, u"L"},     {38, u"J"}, {40, u"K"}, {45, u"N"},  {46, u"M"},
};

struct ModifierGlyph
{
    quint64 bit = 0;
    QStringView glyph = {};
    quint32 carbonBit = 0;
};

// In the order in which labels show them.
constexpr ModifierGlyph modifierGlyphs[] = {
    {KeyboardShortcut::control, u"⌃", 0x1000},
    {KeyboardShortcut::option, u"⌥", 0x800},
    {KeyboardShortcut::shift, u"⇧", 0x200},
    {KeyboardShortcut::command, u"⌘", 0x100},
};

/// A whole number from 0 to @p maximum; nothing for any other JSON value.
std::optional<quint64> readUnsigned(const QJsonValue &value, qint64 maximum)
{
    if (!value.isDouble())
        return std::nullopt;
    // toInteger() is exact where the number is a 64-bit integer; its default tells the fractional and the
    // huge.
    const qint64 number = value.toInteger(-1);
    if (number < 0 || number > maximum)
        return std::nullopt;
    return static_cast<quint64>(number);
}

} // namespace

quint32 KeyboardShortcut::carbonModifiers() const
{
    quint32 result = 0;
    for (const ModifierGlyph &modifier : modifierGlyphs) {
        if (modifiers & modifier.bit)
            result |= modifier.carbonBit;
    }
    return result;
}

QString KeyboardShortcut::displayLabel() const
{
    QString label;
    for (const ModifierGlyph &modifier : modifierGlyphs) {
        if (modifiers & modifier.bit)
            label += modifier.glyph;
    }
    return label + displayString(keyCode);
}

QString KeyboardShortcut::displayString(quint32 keyCode)
{
    for (const KeyName &key : keyNames) {
        if (key.keyCode == keyCode)
            return key.name.toString();
    }
    return u"Key " + QString::number(keyCode);
}

QByteArray KeyboardShortcut::toJson() const
{
    return "{\"keyCode\":" + QByteArray::number(keyCode) + ",\"modifiers\":" + QByteArray::number(modifiers) +
           '}';
}

std::optional<KeyboardShortcut> KeyboardShortcut::fromJson(const QByteArray &json)
{
    const QJsonObject object = QJsonDocument::fromJson(json).object();
    const auto keyCode = readUnsigned(object.value(u"keyCode"), std::numeric_limits<quint32>::max());
    const auto modifiers = readUnsigned(object.value(u"modifiers"), std::numeric_limits<qint64>::max());
    if (!keyCode || !modifiers)
        return std::nullopt;
    return KeyboardShortcut{.keyCode = static_cast<quint32>(*keyCode), .modifiers = *modifiers};
}
