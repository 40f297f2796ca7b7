// SPDX-License-Identifier: GPL-3.0-or-later
#include "Desktop/AtSpi/AtSpiRoles.h"
#include "Desktop/AtSpi/AtSpiTextEdit.h"
#include "Desktop/AtSpi/AtSpiTextField.h"

#include <gtest/gtest.h>

using namespace AtSpiTextEdit;

TEST(TextOffsets, codePointsAndUtf16DifferBehindAnEmoji)
{
    const QString text = QStringLiteral("a😀b");
    EXPECT_EQ(toToolkitOffset(text, 3, OffsetUnit::codePoint), 2);
    EXPECT_EQ(toToolkitOffset(text, 3, OffsetUnit::utf16), 3);
    EXPECT_EQ(fromToolkitOffset(text, 2, OffsetUnit::codePoint), 3);
    EXPECT_EQ(fromToolkitOffset(text, 3, OffsetUnit::utf16), 3);
}

TEST(TextOffsets, offsetsOutsideTheTextAreClamped)
{
    const QString text = QStringLiteral("a😀");
    for (const OffsetUnit unit : {OffsetUnit::codePoint, OffsetUnit::utf16}) {
        EXPECT_EQ(fromToolkitOffset(text, -5, unit), 0);
        EXPECT_EQ(fromToolkitOffset(text, 99, unit), 3);
        EXPECT_EQ(toToolkitOffset(text, -5, unit), 0);
    }
    EXPECT_EQ(toToolkitOffset(text, 99, OffsetUnit::codePoint), 2);
}

TEST(InsertionLength, isCountedInTheUnitOfTheToolkit)
{
    const QString text = QStringLiteral("é😀");
    EXPECT_EQ(insertionLength(text, AtSpiToolkit::qt), 3);
    for (const AtSpiToolkit toolkit : {AtSpiToolkit::gtk3, AtSpiToolkit::gtk4, AtSpiToolkit::libreOffice})
        EXPECT_EQ(insertionLength(text, toolkit), 6);
}

namespace {

struct EditCase
{
    const char *name;
    QString before;
    QString after;
    qsizetype caret;
    Edit edit;
};

const QList<EditCase> editCases{
    {"nothing to do", QStringLiteral("same"), QStringLiteral("same"), 2, {2, 0, {}}},
    {"into nothing", QString(), QStringLiteral("text"), 0, {0, 0, QStringLiteral("text")}},
    {"everything away", QStringLiteral("text"), QString(), 0, {0, 4, {}}},
    {"at the caret among equal letters",
     QStringLiteral("aaa"),
     QStringLiteral("aaaa"),
     1,
     {1, 0, QStringLiteral("a")}},
    {"a selection", QStringLiteral("abcdef"), QStringLiteral("abXef"), 2, {2, 2, QStringLiteral("X")}},
    {"far from the caret", QStringLiteral("abc X"), QStringLiteral("abc Y"), 0, {4, 1, QStringLiteral("Y")}},
    {"pairs with the same first unit",
     QStringLiteral("😀"),
     QStringLiteral("😁"),
     0,
     {0, 2, QStringLiteral("😁")}},
    {"pairs with the same last unit",
     QStringLiteral("\U0001F600"),
     QStringLiteral("\U0001FA00"),
     0,
     {0, 2, QStringLiteral("\U0001FA00")}},
    {"a mark joins the letter before",
     QStringLiteral("ae"),
     QStringLiteral("ae\u0301"),
     2,
     {1, 1, QStringLiteral("e\u0301")}},
    {"before a mark", QStringLiteral("e\u0301"), QStringLiteral("xe\u0301"), 0, {0, 0, QStringLiteral("x")}},
    {"within a family",
     QStringLiteral("👨‍👩‍👧"),
     QStringLiteral("👨‍👩‍👦"),
     0,
     {0, 8, QStringLiteral("👨‍👩‍👦")}},
    {"a flag that shares a letter",
     QStringLiteral("🇩🇪"),
     QStringLiteral("🇩🇰"),
     0,
     {0, 4, QStringLiteral("🇩🇰")}},
    {"a line end of two characters",
     QStringLiteral("a\r\nb"),
     QStringLiteral("a\rb"),
     1,
     {1, 2, QStringLiteral("\r")}},
};

} // namespace

TEST(SmallestEdit, changesWhatDiffersAndCutsNoCharacter)
{
    for (const EditCase &c : editCases) {
        SCOPED_TRACE(c.name);
        const Edit edit = smallestEdit(c.before, c.after, c.caret);
        EXPECT_EQ(edit.start, c.edit.start);
        EXPECT_EQ(edit.removed, c.edit.removed);
        EXPECT_EQ(edit.inserted, c.edit.inserted);
        QString result = c.before;
        result.replace(edit.start, edit.removed, edit.inserted);
        EXPECT_EQ(result, c.after);
    }
}

TEST(SmallestEdit, isQuickInALongTextOfOneLine)
{
    const QString before = QStringLiteral("文字列").repeated(300000) + QStringLiteral("👨‍👩‍👧");
    QString after = before;
    after.insert(450000, QStringLiteral("é"));
    const Edit edit = smallestEdit(before, after, 450000);
    EXPECT_EQ(edit, (Edit{450000, 0, QStringLiteral("é")}));
}

TEST(Objects, onlyNamesThatMayCrossTheBusAreValid)
{
    const QString path = QStringLiteral("/org/a11y/atspi/accessible/1");
    const QString longest = QStringLiteral(":1.") + QString(300, u'1');
    EXPECT_TRUE((AtSpiObject{QStringLiteral(":1.23"), path}.isValid()));
    for (const QString &owner :
         {QString(), QStringLiteral("memory"), QStringLiteral(":1"), QStringLiteral(":1."),
          QStringLiteral(":.1"), QStringLiteral(":1..2"), QStringLiteral(":1.ä"), longest})
        EXPECT_FALSE((AtSpiObject{owner, path}.isValid())) << qPrintable(owner);
    for (const QString &bad :
         {QString(), QStringLiteral("/"), QStringLiteral("x"), QStringLiteral("/a/"), QStringLiteral("/a//b"),
          QStringLiteral("/ä"), QStringLiteral("/org/a11y/atspi/null")})
        EXPECT_FALSE((AtSpiObject{QStringLiteral(":1.23"), bad}.isValid())) << qPrintable(bad);
}

namespace {

AtSpiDescription described(AtSpiRole role, const QList<AtSpiState> &states, AtSpiToolkit toolkit,
                           bool isEditableText = true)
{
    AtSpiDescription description{.role = static_cast<uint>(role),
                                 .states = 0,
                                 .interfaces = {AtSpi::accessible, AtSpi::text},
                                 .toolkit = toolkit};
    if (isEditableText)
        description.interfaces.append(AtSpi::editableText);
    // On screen, as all but those are that say nothing of it.
    if (toolkit != AtSpiToolkit::gtk4)
        description.states |= quint64(1) << static_cast<int>(AtSpiState::showing);
    for (const AtSpiState state : states)
        description.states |= quint64(1) << static_cast<int>(state);
    return description;
}

} // namespace

TEST(Roles, areTranslatedToTheNamesOfTheSeam)
{
    struct Case
    {
        AtSpiRole role;
        QList<AtSpiState> states;
        QString name;
        QString subrole;
    };
    const QList<AtSpiState> editable{AtSpiState::editable};
    const QList<AtSpiState> manyLines{AtSpiState::editable, AtSpiState::multiLine};
    const QList<Case> cases{
        {AtSpiRole::text, editable, AX::textField, {}},
        {AtSpiRole::text, manyLines, AX::textArea, {}},
        {AtSpiRole::entry, editable, AX::textField, {}},
        {AtSpiRole::entry, manyLines, AX::textArea, {}},
        {AtSpiRole::paragraph, editable, AX::textArea, {}},
        {AtSpiRole::section, editable, AX::textArea, {}},
        {AtSpiRole::documentWeb, editable, AX::textArea, {}},
        {AtSpiRole::documentWeb, {}, QStringLiteral("AXDocumentWeb"), {}},
        {AtSpiRole::paragraph, {}, QStringLiteral("AXParagraph"), {}},
        {AtSpiRole::comboBox, editable, AX::comboBox, {}},
        {AtSpiRole::terminal, {}, AX::textArea, AX::terminal},
        {AtSpiRole::passwordText, editable, AX::textField, AX::secureTextField},
        {AtSpiRole::application, {}, AX::application, {}},
        {AtSpiRole::pageTab, {}, QStringLiteral("AXPageTab"), {}},
        {static_cast<AtSpiRole>(9999), {}, QStringLiteral("AXUnknown"), {}},
    };
    for (const Case &c : cases) {
        const auto description = described(c.role, c.states, AtSpiToolkit::gtk3);
        EXPECT_EQ(axRole(description), c.name);
        EXPECT_EQ(axSubrole(description), c.subrole);
    }
}

TEST(Toolkits, areKnownByNameAndVersion)
{
    EXPECT_EQ(atSpiToolkit(QStringLiteral("gtk"), QStringLiteral("3.24.38")), AtSpiToolkit::gtk3);
    EXPECT_EQ(atSpiToolkit(QStringLiteral("GTK"), QStringLiteral("4.8.3")), AtSpiToolkit::gtk4);
    EXPECT_EQ(atSpiToolkit(QStringLiteral("gtk"), QStringLiteral("5.0")), AtSpiToolkit::unknown);
    EXPECT_EQ(atSpiToolkit(QStringLiteral("Qt"), QStringLiteral("6.4.2")), AtSpiToolkit::qt);
    EXPECT_EQ(atSpiToolkit(QStringLiteral("gtk"), QStringLiteral("3.24.38"), QStringLiteral("soffice")),
              AtSpiToolkit::libreOffice);
    EXPECT_EQ(atSpiToolkit(QStringLiteral("VCL"), QStringLiteral("7.4")), AtSpiToolkit::libreOffice);
    EXPECT_EQ(atSpiToolkit(QStringLiteral("Gecko"), {}), AtSpiToolkit::gecko);
    EXPECT_EQ(atSpiToolkit(QStringLiteral("Chromium"), {}), AtSpiToolkit::chromium);
    EXPECT_EQ(atSpiToolkit(QString(), {}), AtSpiToolkit::unknown);
}

TEST(DirectInsertion, isOnlyForFieldsThatAreKnownToTakeIt)
{
    const QList<AtSpiState> editable{AtSpiState::editable};
    const QList<AtSpiState> manyLines{AtSpiState::editable, AtSpiState::multiLine};
    const QList<AtSpiState> readOnly{AtSpiState::editable, AtSpiState::multiLine, AtSpiState::readOnly};
    using Toolkit = AtSpiToolkit;
    EXPECT_TRUE(AtSpiTextField::isWritable(described(AtSpiRole::text, manyLines, Toolkit::gtk3)));
    EXPECT_TRUE(AtSpiTextField::isWritable(described(AtSpiRole::text, editable, Toolkit::gtk3)));
    EXPECT_TRUE(AtSpiTextField::isWritable(described(AtSpiRole::text, editable, Toolkit::gtk4)));
    EXPECT_TRUE(AtSpiTextField::isWritable(described(AtSpiRole::paragraph, manyLines, Toolkit::libreOffice)));
    EXPECT_TRUE(AtSpiTextField::isWritable(described(AtSpiRole::text, manyLines, Toolkit::qt)));
    EXPECT_FALSE(AtSpiTextField::isWritable(described(AtSpiRole::text, editable, Toolkit::qt)));
    EXPECT_FALSE(AtSpiTextField::isWritable(described(AtSpiRole::text, readOnly, Toolkit::qt)));
    EXPECT_FALSE(AtSpiTextField::isWritable(described(AtSpiRole::text, {}, Toolkit::gtk3)));
    EXPECT_FALSE(AtSpiTextField::isWritable(described(AtSpiRole::text, manyLines, Toolkit::gtk3, false)));
    EXPECT_FALSE(AtSpiTextField::isWritable(described(AtSpiRole::passwordText, editable, Toolkit::gtk3)));
    EXPECT_FALSE(AtSpiTextField::isReadable(described(AtSpiRole::passwordText, editable, Toolkit::gtk3)));
    AtSpiDescription hidden = described(AtSpiRole::text, manyLines, Toolkit::gtk3);
    hidden.states &= ~(quint64(1) << static_cast<int>(AtSpiState::showing));
    EXPECT_FALSE(AtSpiTextField::isWritable(hidden));
    for (const Toolkit toolkit : {Toolkit::gecko, Toolkit::chromium, Toolkit::unknown})
        EXPECT_FALSE(AtSpiTextField::isWritable(described(AtSpiRole::entry, manyLines, toolkit)));
}

TEST(FocusNoise, isWhatToolkitsReportBesideTheFocusedField)
{
    for (const AtSpiRole role :
         {AtSpiRole::filler, AtSpiRole::pageTab, AtSpiRole::rootPane, AtSpiRole::frame})
        EXPECT_TRUE(isFocusNoise(described(role, {}, AtSpiToolkit::qt)));
    for (const AtSpiRole role :
         {AtSpiRole::text, AtSpiRole::documentWeb, AtSpiRole::comboBox, AtSpiRole::terminal})
        EXPECT_FALSE(isFocusNoise(described(role, {}, AtSpiToolkit::qt)));
}
