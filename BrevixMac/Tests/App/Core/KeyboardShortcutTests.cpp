// SPDX-License-Identifier: GPL-3.0-or-later
#include "KeyboardShortcut.h"

#include "Samples.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <map>

using namespace Qt::StringLiterals;

TEST(KeyboardShortcut, theDefaultIsCommandShiftP)
{
    const KeyboardShortcut shortcut;
    EXPECT_EQ(shortcut.keyCode, 35u);
    EXPECT_EQ(shortcut.modifiers, 0x120000u);
    EXPECT_EQ(shortcut.displayLabel(), u"⇧⌘P"_s);
}

TEST(KeyboardShortcut, labelsShowTheModifiersInAFixedOrder)
{
    using K = KeyboardShortcut;
    EXPECT_EQ((K{49, K::control | K::option | K::command}.displayLabel()), u"⌃⌥⌘Space"_s);
    EXPECT_EQ((K{18, K::command}.displayLabel()), u"⌘Key 18"_s);
    EXPECT_EQ((K{0, K::allModifiers}.displayLabel()), u"⌃⌥⇧⌘A"_s);
    EXPECT_EQ((K{123, 0}.displayLabel()), u"←"_s);
}

TEST(KeyboardShortcut, modifiersTranslateToTheHotKeyNumbering)
{
    using K = KeyboardShortcut;
    EXPECT_EQ((K{35, 0x120000}.carbonModifiers()), 768u);
    EXPECT_EQ((K{35, K::allModifiers}.carbonModifiers()), 6912u);
    EXPECT_EQ((K{35, 0}.carbonModifiers()), 0u);
    EXPECT_EQ((K{35, K::control}.carbonModifiers()), 4096u);
    EXPECT_EQ((K{35, K::option}.carbonModifiers()), 2048u);
    EXPECT_EQ((K{35, 0x8000000}.carbonModifiers()), 0u);
}

TEST(KeyboardShortcut, everyKeyShowsItsNameOrItsNumber)
{
    const std::map<quint32, QString> names{
        {36, u"↩"_s},  {48, u"⇥"_s},  {49, u"Space"_s}, {51, u"⌫"_s}, {53, u"⎋"_s}, {123, u"←"_s},
        {124, u"→"_s}, {125, u"↓"_s}, {126, u"↑"_s},    {0, u"A"_s},  {1, u"S"_s},  {2, u"D"_s},
        {3, u"F"_s},   {4, u"H"_s},   {5, u"G"_s},      {6, u"Z"_s},  {7, u"X"_s},  {8, u"C"_s},
        {9, u"V"_s},   {11, u"B"_s},  {12, u"Q"_s},     {13, u"W"_s}, {14, u"E"_s}, {15, u"R"_s},
        {16, u"Y"_s},  {17, u"T"_s},  {31, u"O"_s},     {32, u"U"_s}, {34, u"I"_s}, {35, u"P"_s},
        {37, u"L"_s},  {38, u"J"_s},  {40, u"K"_s},     {45, u"N"_s}, {46, u"M"_s},
    };
    for (quint32 code = 0; code < 200; ++code) {
        const auto named = names.find(code);
        const QString expected = named == names.end() ? u"Key %1"_s.arg(code) : named->second;
        EXPECT_EQ(KeyboardShortcut::displayString(code), expected);
    }
    EXPECT_EQ(KeyboardShortcut::displayString(4294967295u), u"Key 4294967295"_s);
}

TEST(KeyboardShortcut, jsonHoldsTheTwoNumbers)
{
    const QJsonObject object = QJsonDocument::fromJson(KeyboardShortcut().toJson()).object();
    EXPECT_EQ(object.keys(), (QStringList{u"keyCode"_s, u"modifiers"_s}));
    EXPECT_EQ(object.value(u"keyCode").toInteger(), 35);
    EXPECT_EQ(object.value(u"modifiers").toInteger(), 1179648);

    const KeyboardShortcut other{4294967295u, KeyboardShortcut::allModifiers};
    EXPECT_EQ(KeyboardShortcut::fromJson(other.toJson()), other);
}

TEST(KeyboardShortcut, damagedJsonIsRefused)
{
    const char *const damaged[] = {
        "",
        "35",
        "[]",
        "{}",
        R"({"keyCode":35})",
        R"({"modifiers":1179648})",
        R"({"keyCode":-1,"modifiers":0})",
        R"({"keyCode":35,"modifiers":-1})",
        R"({"keyCode":35.5,"modifiers":0})",
        R"({"keyCode":35,"modifiers":0.5})",
        R"({"keyCode":4294967296,"modifiers":0})",
        R"({"keyCode":35,"modifiers":1e30})",
        R"({"keyCode":1e30,"modifiers":0})",
        R"({"keyCode":"35","modifiers":0})",
        R"({"keyCode":true,"modifiers":0})",
        R"({"keyCode":null,"modifiers":0})",
        R"({"keyCode":35,"modifiers":0)",
    };
    for (const char *json : damaged)
        EXPECT_EQ(KeyboardShortcut::fromJson(json), std::nullopt) << json;
}
