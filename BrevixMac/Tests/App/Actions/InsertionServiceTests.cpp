// SPDX-License-Identifier: GPL-3.0-or-later
#include "InsertionServiceFixture.h"

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

} // namespace

// Before any method is tried

TEST_F(InsertionServiceTest, anAbsentTargetFailsForEveryPreference)
{
    for (const InsertionMethod method : allInsertionMethods) {
        prefer(method);
        EXPECT_EQ(insertInto(nullptr),
                  InsertionResult::failure(InsertionFailureReason::noFocusedTarget, noTargetMessage));
    }
    expectClipboardUntouched();
}

TEST_F(InsertionServiceTest, aSecureFieldFailsForEveryPreferenceAndNothingIsCopied)
{
    const auto secure = target();
    secure->subrole = AX::secureTextField;
    for (const InsertionMethod method : allInsertionMethods) {
        prefer(method);
        EXPECT_EQ(insertInto(secure), protectedField);
    }
    expectClipboardUntouched();
    EXPECT_EQ(field().value, QString());
    EXPECT_TRUE(keyEvents.postedChords.isEmpty());
}

TEST_F(InsertionServiceTest, aSecureFieldIsRefusedBeforeAMissingPermissionIsReported)
{
    deny(true, true);
    const auto secure = target();
    secure->role = QStringLiteral("AXSecureThing");

    EXPECT_EQ(insertInto(secure), protectedField);
}

// Which method places the text

struct MethodCase
{
    const char *story;
    InsertionMethod preferred;
    bool trusted;
    bool isSettable;
    bool acceptsWrites;
    bool postingAllowed;
    InsertionResult expected;
};

TEST_F(InsertionServiceTest, directInsertionComesFirstAndAPasteIsTheFallback)
{
    using Method = InsertionMethod;
    const InsertionResult pasted = pastedInto(QStringLiteral("Editor"));
    const MethodCase cases[] = {
        {"hybrid, all granted", Method::hybrid, true, true, true, true, insertedDirectly},
        {"hybrid, not trusted", Method::hybrid, false, true, true, true, pasted},
        {"hybrid, not settable", Method::hybrid, true, false, true, true, pasted},
        {"hybrid, write refused", Method::hybrid, true, true, false, true, pasted},
        {"hybrid, nothing granted", Method::hybrid, false, true, true, false, postingNotAllowed},
        {"hybrid, not settable and no posting", Method::hybrid, true, false, true, false, postingNotAllowed},
        {"hybrid, direct needs no posting", Method::hybrid, true, true, true, false, insertedDirectly},
        {"accessibility, all granted", Method::accessibility, true, true, true, true, insertedDirectly},
        {"accessibility, not trusted", Method::accessibility, false, true, true, true, pasted},
        {"accessibility, not settable", Method::accessibility, true, false, true, true, pasted},
        {"accessibility, write refused", Method::accessibility, true, true, false, true, pasted},
        {"accessibility, no posting", Method::accessibility, false, true, true, false, postingNotAllowed},
        {"paste, all granted", Method::clipboardPaste, true, true, true, true, pasted},
        {"paste, not trusted", Method::clipboardPaste, false, true, true, true, pasted},
        {"paste, no posting", Method::clipboardPaste, true, true, true, false, postingNotAllowed},
    };
    for (const MethodCase &each : cases) {
        SCOPED_TRACE(each.story);
        prefer(each.preferred);
        deny(!each.trusted, !each.postingAllowed);
        field() = {.pid = editorPid,
                   .value = QString(),
                   .selectedRange = TextRange{0, 0},
                   .isSettable = each.isSettable,
                   .acceptsWrites = each.acceptsWrites};
        pastedTexts.clear();

        EXPECT_EQ(insertInto(target()), each.expected);

        const bool isDirect = each.expected == insertedDirectly;
        EXPECT_EQ(field().value, isDirect ? promptText : QString());
        const bool isPasted = each.expected == pasted;
        EXPECT_EQ(pastedTexts, isPasted ? QStringList{promptText} : QStringList());
        expectClipboardKept();
    }
}

TEST_F(InsertionServiceTest, anEditWhoseOutcomeIsUnknownIsNotFollowedByAPaste)
{
    field().acceptsWrites = false;
    field().refusal = WriteOutcome::unknown;

    EXPECT_EQ(
        insertInto(target()),
        InsertionResult::failure(InsertionFailureReason::unknown,
                                 u"Editor isn't answering, so Brevix can't tell whether the text arrived. "
                                 u"Look there before you copy instead."_qs));

    expectClipboardUntouched();
    EXPECT_TRUE(keyEvents.postedChords.isEmpty());
}

TEST_F(InsertionServiceTest, directInsertionTouchesNeitherTheClipboardNorTheFocus)
{
    EXPECT_EQ(insertInto(target()), insertedDirectly);

    expectClipboardUntouched();
    EXPECT_TRUE(workspace.activations.isEmpty());
    EXPECT_TRUE(keyEvents.postedChords.isEmpty());
}

TEST_F(InsertionServiceTest, withoutTrustTheFieldIsNotEvenAsked)
{
    deny(true, false);
    int requests = 0;
    tree.onRequest = [&requests](const QString &) { ++requests; };

    insertInto(target());

    EXPECT_EQ(requests, 0);
}

TEST_F(InsertionServiceTest, aCopyReplacesTheClipboardForGood)
{
    prefer(InsertionMethod::copiedOnly);
    deny(true, true);

    EXPECT_EQ(insertInto(target()), copied);

    EXPECT_EQ(pasteboard.content, QList{InMemoryPasteboard::textItem(promptText)});
    EXPECT_THAT(pasteboard.history, ElementsAre(u"clearContents"_qs, u"setString"_qs));
    EXPECT_TRUE(workspace.activations.isEmpty());
}

TEST_F(InsertionServiceTest, copyTellsWhetherTheSessionTookTheText)
{
    EXPECT_TRUE(service->copy(promptText));
    pasteboard.refusesText = true;
    EXPECT_FALSE(service->copy(promptText));
}

TEST_F(InsertionServiceTest, thePreferenceIsReadAtEachInsertion)
{
    EXPECT_EQ(insertInto(target()), insertedDirectly);
    prefer(InsertionMethod::copiedOnly);
    EXPECT_EQ(insertInto(target()), copied);
}

TEST_F(InsertionServiceTest, aServiceDestroyedDuringADirectInsertionDoesNotGoOnToAPaste)
{
    tree.delay = 5ms;
    field().acceptsWrites = false;
    auto task = startInsertion(target());

    service.reset();
    const InsertionResult result = await(std::move(task));

    EXPECT_FALSE(result.succeeded);
    expectClipboardUntouched();
    EXPECT_TRUE(keyEvents.postedChords.isEmpty());
}
