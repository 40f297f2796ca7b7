// SPDX-License-Identifier: GPL-3.0-or-later
#include "Desktop/X11/X11KeyTable.h"

#include <gtest/gtest.h>

#include <set>

namespace {

struct Position
{
    quint32 keyNumber;
    quint8 keyCode;
    const char *key;
};

// Taken from a keyboard: what xev shows for each key of a PC keyboard.
const Position positions[]{
    {0, 38, "A"},        {1, 39, "S"},         {2, 40, "D"},          {6, 52, "Z"},
    {9, 55, "V"},        {11, 56, "B"},        {12, 24, "Q"},         {13, 25, "W"},
    {15, 27, "R"},       {16, 29, "Y"},        {17, 28, "T"},         {18, 10, "1"},
    {22, 15, "6"},       {23, 14, "5"},        {25, 18, "9"},         {26, 16, "7"},
    {28, 17, "8"},       {29, 19, "0"},        {31, 32, "O"},         {35, 33, "P"},
    {36, 36, "Return"},  {48, 23, "Tab"},      {49, 65, "Space"},     {51, 22, "Backspace"},
    {53, 9, "Escape"},   {54, 134, "Super R"}, {55, 133, "Super L"},  {56, 50, "Shift L"},
    {60, 62, "Shift R"}, {58, 64, "Alt L"},    {59, 37, "Control L"}, {96, 71, "F5"},
    {103, 95, "F11"},    {111, 96, "F12"},     {117, 119, "Delete"},  {122, 67, "F1"},
    {123, 113, "Left"},  {124, 114, "Right"},  {125, 116, "Down"},    {126, 111, "Up"},
};

} // namespace

TEST(X11KeyTable, aKeyNumberIsThePositionOnTheKeyboard)
{
    for (const Position &position : positions)
        EXPECT_EQ(X11KeyTable::keyCode(position.keyNumber), position.keyCode) << position.key;
}

TEST(X11KeyTable, everyKeyCodeLeadsBackToItsKeyNumber)
{
    std::set<quint8> seen;
    for (quint32 keyNumber = 0; keyNumber <= 126; ++keyNumber) {
        const auto keyCode = X11KeyTable::keyCode(keyNumber);
        if (!keyCode)
            continue;
        EXPECT_TRUE(seen.insert(*keyCode).second) << keyNumber;
        EXPECT_EQ(X11KeyTable::keyNumber(*keyCode), keyNumber);
    }
    EXPECT_EQ(seen.size(), 119U); // all but the eight numbers of no key
}

TEST(X11KeyTable, numbersOfNoKeyGiveNothing)
{
    for (const quint32 keyNumber : {52U, 63U, 66U, 127U, 1000U, 0xffffffffU})
        EXPECT_FALSE(X11KeyTable::keyCode(keyNumber)) << keyNumber;
    for (const quint32 keyCode : {0U, 7U, 8U, 107U, 255U, 256U, 0xffffffffU})
        EXPECT_FALSE(X11KeyTable::keyNumber(keyCode)) << keyCode;
}
