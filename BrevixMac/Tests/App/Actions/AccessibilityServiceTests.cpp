// SPDX-License-Identifier: GPL-3.0-or-later
#include "AccessibilityService.h"

#include "Support/InMemoryDesktop.h"
#include "Support/Waiting.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using namespace std::chrono_literals;

constexpr qint64 editorPid = 42;
constexpr qint64 browserPid = 43;

class AccessibilityServiceTest : public testing::Test
{
protected:
    AccessibilityServiceTest()
    {
        workspace.addApplication(editorPid, QStringLiteral("Editor"), QStringLiteral("org.example.Editor"));
        workspace.addApplication(browserPid, QStringLiteral("Browser"));
        workspace.frontmost = editorPid;
    }

    InMemoryAccessibilityTree::Field &addFocusedField(const QString &path, std::optional<qint64> pid)
    {
        tree.focusedPath = path;
        tree.fields.insert(path, {.pid = pid, .role = AX::textField});
        return tree.fields[path];
    }

    FocusedTargetPtr capture() { return await(service.captureFocusedTarget()); }

    bool insert(const QString &text)
    {
        return await(service.insertText(text, capture())) == WriteOutcome::done;
    }

    const QDateTime time = QDateTime(QDate(2026, 3, 1), QTime(10, 0), Qt::UTC);
    InMemoryAccessibilityTree tree;
    InMemoryWorkspace workspace;
    AccessibilityService service{tree, workspace, [this] { return time; }};
};

FocusedTarget targetWith(const std::optional<QString> &role, const std::optional<QString> &subrole)
{
    FocusedTarget target;
    target.role = role;
    target.subrole = subrole;
    return target;
}

} // namespace

TEST_F(AccessibilityServiceTest, nothingFocusedGivesNoTarget)
{
    EXPECT_EQ(capture(), nullptr);
    EXPECT_EQ(await(service.captureFocusedTarget(*workspace.application(editorPid))), nullptr);
}

TEST_F(AccessibilityServiceTest, aCapturedFieldCarriesItsApplicationRolesAndTime)
{
    addFocusedField(QStringLiteral("/field"), browserPid).subrole = AX::terminal;

    const FocusedTargetPtr target = capture();

    ASSERT_TRUE(target);
    EXPECT_FALSE(target->id.isNull());
    EXPECT_EQ(target->pid, browserPid);
    EXPECT_EQ(target->bundleID, std::nullopt);
    EXPECT_EQ(target->applicationName, QStringLiteral("Browser"));
    EXPECT_EQ(target->application, workspace.application(browserPid));
    EXPECT_EQ(target->element, InMemoryAccessibilityTree::element(QStringLiteral("/field")));
    EXPECT_EQ(target->role, AX::textField);
    EXPECT_EQ(target->subrole, AX::terminal);
    EXPECT_EQ(target->capturedAt, time);
}

TEST_F(AccessibilityServiceTest, everyCaptureHasAnIdentifierOfItsOwn)
{
    addFocusedField(QStringLiteral("/field"), editorPid);

    EXPECT_NE(capture()->id, capture()->id);
}

TEST_F(AccessibilityServiceTest, anElementWithoutAProcessTakesThatOfTheApplicationInFront)
{
    addFocusedField(QStringLiteral("/field"), std::nullopt);

    const FocusedTargetPtr target = capture();

    EXPECT_EQ(target->pid, editorPid);
    EXPECT_EQ(target->bundleID, QStringLiteral("org.example.Editor"));
    EXPECT_EQ(target->applicationName, QStringLiteral("Editor"));
}

TEST_F(AccessibilityServiceTest, withoutAProcessAndAnApplicationInFrontThePidIsZeroAndNothingElseIsKnown)
{
    addFocusedField(QStringLiteral("/field"), std::nullopt);
    workspace.frontmost.reset();

    const FocusedTargetPtr target = capture();

    ASSERT_TRUE(target);
    EXPECT_EQ(target->pid, 0);
    EXPECT_EQ(target->application, std::nullopt);
    EXPECT_EQ(target->bundleID, std::nullopt);
    EXPECT_EQ(target->applicationName, std::nullopt);
}

TEST_F(AccessibilityServiceTest, aProcessThatIsNoApplicationKeepsItsPidAndTakesTheApplicationInFront)
{
    addFocusedField(QStringLiteral("/field"), 999);

    const FocusedTargetPtr target = capture();

    EXPECT_EQ(target->pid, 999);
    EXPECT_EQ(target->application, workspace.application(editorPid));
}

TEST_F(AccessibilityServiceTest, aCaptureFromAnApplicationReadsItsOwnFocusedFieldAndFallsBackOnIt)
{
    addFocusedField(QStringLiteral("/front"), editorPid);
    tree.fields.insert(QStringLiteral("/behind"), {});
    tree.focusedPathByApplication.insert(browserPid, QStringLiteral("/behind"));

    const FocusedTargetPtr target = await(service.captureFocusedTarget(*workspace.application(browserPid)));

    ASSERT_TRUE(target);
    EXPECT_EQ(target->element.path, QStringLiteral("/behind"));
    EXPECT_EQ(target->pid, browserPid);
    EXPECT_EQ(target->applicationName, QStringLiteral("Browser"));
}

TEST_F(AccessibilityServiceTest, aRoleThatIsNotTextIsNoRole)
{
    auto &field = addFocusedField(QStringLiteral("/field"), editorPid);
    field.oddValues = {{AX::role, TextRange{1, 2}}, {AX::subrole, InMemoryAccessibilityTree::element({})}};

    EXPECT_EQ(capture()->role, std::nullopt);
    EXPECT_EQ(capture()->subrole, std::nullopt);
}

TEST_F(AccessibilityServiceTest, aFocusedElementThatIsNoElementGivesNoTarget)
{
    class OddTree final : public InMemoryAccessibilityTree
    {
        QCoro::Task<std::optional<AccessibilityValue>> attribute(AccessibilityElement, QString) override
        {
            co_return AccessibilityValue(QStringLiteral("a text"));
        }
    };
    OddTree oddTree;
    AccessibilityService oddService(oddTree, workspace);

    EXPECT_EQ(await(oddService.captureFocusedTarget()), nullptr);
}

TEST_F(AccessibilityServiceTest, aFallbackTargetStandsForTheWholeApplicationAndIsNeverSecure)
{
    const RunningApplication editor = *workspace.application(editorPid);

    const FocusedTargetPtr target = service.applicationFallbackTarget(editor);

    ASSERT_TRUE(target);
    EXPECT_EQ(target->pid, editorPid);
    EXPECT_EQ(target->bundleID, QStringLiteral("org.example.Editor"));
    EXPECT_EQ(target->applicationName, QStringLiteral("Editor"));
    EXPECT_EQ(target->application, editor);
    EXPECT_EQ(target->element, tree.applicationElement(editorPid));
    EXPECT_EQ(target->role, QStringLiteral("AXApplication"));
    EXPECT_EQ(target->subrole, std::nullopt);
    EXPECT_EQ(target->capturedAt, time);
    EXPECT_FALSE(AccessibilityService::isSecureField(*target));
    EXPECT_NE(target->id, service.applicationFallbackTarget(editor)->id);
}

TEST_F(AccessibilityServiceTest, aServiceDestroyedDuringACaptureLetsItEnd)
{
    addFocusedField(QStringLiteral("/field"), editorPid);
    tree.delay = 5ms;
    auto shortLived = std::make_unique<AccessibilityService>(tree, workspace);

    auto task = shortLived->captureFocusedTarget();
    shortLived.reset();

    EXPECT_TRUE(await(std::move(task)));
}

// Which fields must not be written

struct SecureCase
{
    std::optional<QString> role;
    std::optional<QString> subrole;
    bool isSecure;
};

TEST(SecureField, isKnownByItsRoleOrSubrole)
{
    const SecureCase cases[] = {
        {AX::textField, AX::secureTextField, true},
        {AX::textField, QStringLiteral("SecureSearchField"), true},
        {AX::textField, QStringLiteral("aXsEcUrEthing"), true},
        {QStringLiteral("AXSecureRole"), std::nullopt, true},
        {QStringLiteral("insecure"), std::nullopt, true},
        {std::nullopt, AX::secureTextField, true},
        {AX::textField, std::nullopt, false},
        {AX::textArea, AX::terminal, false},
        {AX::application, std::nullopt, false},
        {QStringLiteral("AXSec ure"), QStringLiteral("secur"), false},
        {std::nullopt, std::nullopt, false},
    };
    for (const SecureCase &each : cases) {
        EXPECT_EQ(AccessibilityService::isSecureField(targetWith(each.role, each.subrole)), each.isSecure)
            << qPrintable(each.role.value_or(QStringLiteral("-"))) << " / "
            << qPrintable(each.subrole.value_or(QStringLiteral("-")));
    }
}

// Writing into a field

struct ReplacementCase
{
    const char *story;
    QString value;
    TextRange range;
    QString text;
    QString expectedValue;
    qint64 expectedCaret;
};

TEST_F(AccessibilityServiceTest, insertedTextReplacesTheSelectionCountedInCharacters)
{
    const QString family = QStringLiteral("👩‍👩‍👧");
    const QString flag = QStringLiteral("🇩🇪");
    const QString composed = QStringLiteral("e\u0301");
    const ReplacementCase cases[] = {
        {"at the start", u"world"_qs, {0, 0}, u"Hello "_qs, u"Hello world"_qs, 6},
        {"in the middle", u"ad"_qs, {1, 0}, u"bc"_qs, u"abcd"_qs, 3},
        {"at the end", u"ab"_qs, {2, 0}, u"c"_qs, u"abc"_qs, 3},
        {"into an empty field", u""_qs, {0, 0}, u"text"_qs, u"text"_qs, 4},
        {"over a selection", u"one two three"_qs, {4, 3}, u"2"_qs, u"one 2 three"_qs, 5},
        {"over everything", u"abc"_qs, {0, 3}, u"x"_qs, u"x"_qs, 1},
        {"a selection longer than the rest", u"abc"_qs, {1, 99}, u"x"_qs, u"ax"_qs, 2},
        {"beyond the end: caret from the place as read", u"abc"_qs, {10, 0}, u"de"_qs, u"abcde"_qs, 12},
        {"before the start: caret from the place as read", u"abc"_qs, {-5, 0}, u"x"_qs, u"xabc"_qs, -4},
        {"a negative length selects nothing", u"abc"_qs, {1, -2}, u"x"_qs, u"axbc"_qs, 2},
        {"nothing inserted deletes the selection", u"abc"_qs, {1, 1}, u""_qs, u"ac"_qs, 1},
        {"after an emoji of several parts", family + u"b", {1, 0}, u"x"_qs, family + u"xb", 2},
        {"over an emoji of several parts", u"a" + family + u"b", {1, 1}, u"x"_qs, u"axb"_qs, 2},
        {"over a letter with a combining mark", u"a" + composed + u"b", {1, 1}, u"x"_qs, u"axb"_qs, 2},
        {"between two flags", flag + flag, {1, 0}, u"-"_qs, flag + u"-" + flag, 2},
        {"a line break of two units is one character", u"a\r\nb"_qs, {2, 0}, u"x"_qs, u"a\r\nxb"_qs, 3},
        {"inserted emoji count once each", u"ab"_qs, {1, 0}, family + flag, u"a" + family + flag + u"b", 3},
    };
    for (const ReplacementCase &each : cases) {
        auto &field = addFocusedField(QStringLiteral("/field"), editorPid);
        field.value = each.value;
        field.selectedRange = each.range;

        EXPECT_TRUE(insert(each.text)) << each.story;

        EXPECT_EQ(field.value, each.expectedValue) << each.story;
        EXPECT_EQ(field.selectedRange, (TextRange{each.expectedCaret, 0})) << each.story;
    }
}

TEST_F(AccessibilityServiceTest, insertionAsksReadsWritesAndPlacesTheCaretInThisOrder)
{
    auto &field = addFocusedField(QStringLiteral("/field"), editorPid);
    field.value = QStringLiteral("ab");
    field.selectedRange = TextRange{1, 0};
    const FocusedTargetPtr target = capture();
    QStringList requests;
    tree.onRequest = [&requests](const QString &request) { requests.append(request); };

    EXPECT_EQ(await(service.insertText(QStringLiteral("x"), target)), WriteOutcome::done);

    EXPECT_EQ(requests,
              (QStringList{u"ask to write AXValue"_qs, u"read AXValue"_qs, u"read AXSelectedTextRange"_qs,
                           u"write AXValue"_qs, u"write AXSelectedTextRange"_qs}));
}

TEST_F(AccessibilityServiceTest, aFieldWithoutASelectedRangeOrATextGetsItsWholeValueReplaced)
{
    using Field = InMemoryAccessibilityTree::Field;
    const auto alter = [](auto change) {
        Field field{.pid = editorPid, .value = QStringLiteral("old"), .selectedRange = TextRange{1, 1}};
        change(field);
        return field;
    };
    const Field cases[] = {
        alter([](Field &field) { field.selectedRange.reset(); }),
        alter([](Field &field) { field.value.reset(); }),
        alter([](Field &field) { field.oddValues.insert(AX::selectedTextRange, QStringLiteral("1,1")); }),
        alter([](Field &field) {
            field.oddValues.insert(AX::value, TextRange{0, 0});
        }),
    };
    for (const Field &each : cases) {
        addFocusedField(QStringLiteral("/field"), editorPid) = each;

        EXPECT_TRUE(insert(QStringLiteral("new")));

        EXPECT_EQ(tree.fields[QStringLiteral("/field")].value, QStringLiteral("new"));
        EXPECT_TRUE(tree.writtenRanges.isEmpty()) << "nothing is known of where the caret belongs";
    }
}

TEST_F(AccessibilityServiceTest, aWholeValueThatCannotBeWrittenIsAFailure)
{
    auto &field = addFocusedField(QStringLiteral("/field"), editorPid);
    field.value = QStringLiteral("old");
    field.acceptsWrites = false;

    EXPECT_FALSE(insert(QStringLiteral("new")));
    EXPECT_EQ(field.value, QStringLiteral("old"));
}

TEST_F(AccessibilityServiceTest, aRefusedWriteIsAFailureAndLeavesTheCaretAlone)
{
    auto &field = addFocusedField(QStringLiteral("/field"), editorPid);
    field.value = QStringLiteral("old");
    field.selectedRange = TextRange{0, 0};
    field.acceptsWrites = false;
    QStringList requests;
    tree.onRequest = [&requests](const QString &request) { requests.append(request); };

    EXPECT_FALSE(insert(QStringLiteral("new")));

    EXPECT_EQ(field.value, QStringLiteral("old"));
    EXPECT_FALSE(requests.contains(QStringLiteral("write AXSelectedTextRange")));
}

TEST_F(AccessibilityServiceTest, aCaretThatCannotBePlacedIsStillASuccess)
{
    auto &field = addFocusedField(QStringLiteral("/field"), editorPid);
    field.value = QStringLiteral("ab");
    field.selectedRange = TextRange{2, 0};
    field.acceptsCaret = false;

    EXPECT_TRUE(insert(QStringLiteral("c")));

    EXPECT_EQ(field.value, QStringLiteral("abc"));
    EXPECT_EQ(field.selectedRange, (TextRange{2, 0}));
}

TEST_F(AccessibilityServiceTest, aFieldThatCannotBeWrittenIsLeftAlone)
{
    auto &field = addFocusedField(QStringLiteral("/field"), editorPid);
    field.value = QStringLiteral("old");
    field.isSettable = false;

    EXPECT_FALSE(insert(QStringLiteral("new")));
    EXPECT_EQ(field.value, QStringLiteral("old"));
}

TEST_F(AccessibilityServiceTest, aSecureFieldIsNotEvenAskedWhetherItCanBeWritten)
{
    auto &field = addFocusedField(QStringLiteral("/field"), editorPid);
    field.subrole = AX::secureTextField;
    field.value = QStringLiteral("secret");
    const FocusedTargetPtr target = capture();
    int requests = 0;
    tree.onRequest = [&requests](const QString &) { ++requests; };

    EXPECT_EQ(await(service.insertText(QStringLiteral("new"), target)), WriteOutcome::refused);

    EXPECT_EQ(field.value, QStringLiteral("secret"));
    EXPECT_EQ(requests, 0);
}

TEST_F(AccessibilityServiceTest, aFieldThatIsGoneAndAWholeApplicationCannotBeWritten)
{
    addFocusedField(QStringLiteral("/field"), editorPid);
    const FocusedTargetPtr gone = capture();
    tree.fields.clear();

    const FocusedTargetPtr whole = service.applicationFallbackTarget(*workspace.application(editorPid));
    EXPECT_EQ(await(service.insertText(QStringLiteral("new"), gone)), WriteOutcome::refused);
    EXPECT_EQ(await(service.insertText(QStringLiteral("new"), whole)), WriteOutcome::refused);
}

TEST_F(AccessibilityServiceTest, aServiceDestroyedDuringAnInsertionLetsItEnd)
{
    auto &field = addFocusedField(QStringLiteral("/field"), editorPid);
    field.value = QStringLiteral("ab");
    field.selectedRange = TextRange{1, 0};
    auto shortLived = std::make_unique<AccessibilityService>(tree, workspace);
    const FocusedTargetPtr target = capture();
    tree.delay = 5ms;

    auto task = shortLived->insertText(QStringLiteral("x"), target);
    shortLived.reset();

    EXPECT_EQ(await(std::move(task)), WriteOutcome::done);
    EXPECT_EQ(field.value, QStringLiteral("axb"));
}
