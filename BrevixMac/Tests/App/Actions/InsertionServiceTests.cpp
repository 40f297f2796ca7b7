// SPDX-License-Identifier: GPL-3.0-or-later
#include "AccessibilityService.h"
#include "InsertionService.h"
#include "PermissionsService.h"
#include "PreferenceStore.h"

#include "Foundation/UserDefaults.h"

#include "Support/InMemoryDesktop.h"
#include "Support/Waiting.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

constexpr qint64 editorPid = 42;
constexpr qint64 otherPid = 43;
const QString fieldPath = QStringLiteral("/field");
const QString promptText = QStringLiteral("Write a haiku.");

const auto noTargetMessage =
    u"We couldn't find an editable text field. Copy instead, or click a field and press your Brevix hotkey."_qs;
const auto secureMessage = u"Password fields are protected. Copy instead if you want to paste manually."_qs;
const auto postEventMessage = u"Allow keyboard event posting to enable paste fallback, or copy instead."_qs;
const auto reactivationMessage = u"Brevix couldn't reactivate Editor. Copy instead."_qs;

InsertionResult pastedInto(const QString &name)
{
    return InsertionResult::success(InsertionMethod::clipboardPaste, u"Prompt pasted into %1."_qs.arg(name));
}

InsertionResult notReactivated(const QString &name)
{
    return InsertionResult::failure(InsertionFailureReason::appReactivationFailed,
                                    u"Brevix couldn't reactivate %1. Copy instead."_qs.arg(name));
}

const InsertionResult insertedDirectly =
    InsertionResult::success(InsertionMethod::accessibility, u"Prompt inserted with Accessibility."_qs);
const InsertionResult copied =
    InsertionResult::success(InsertionMethod::copiedOnly, u"Prompt copied to clipboard."_qs);
const InsertionResult postingNotAllowed =
    InsertionResult::failure(InsertionFailureReason::postEventUnavailable, postEventMessage);
const InsertionResult protectedField =
    InsertionResult::failure(InsertionFailureReason::secureField, secureMessage);

/// A clipboard of several items and types, one of them bytes that are no text, and one without any type.
QList<PasteboardItem> richClipboard()
{
    return {
        {.types = {{u"text/html"_qs, "<b>bold</b>"},
                   {u"text/plain"_qs, "bold"},
                   {u"text/rtf"_qs, "{\\b bold}"}}},
        {.types = {{u"image/png"_qs, QByteArray("\x89PNG\0\x01\xff", 7)}}},
        {.types = {}},
    };
}

class InsertionServiceTest : public testing::Test
{
protected:
    InsertionServiceTest()
    {
        workspace.addApplication(editorPid, QStringLiteral("Editor"));
        workspace.addApplication(otherPid, QStringLiteral("Other"));
        workspace.frontmost = otherPid;
        tree.fields.insert(
            fieldPath,
            {.pid = editorPid, .role = AX::textField, .value = QString(), .selectedRange = TextRange{0, 0}});
        pasteboard.content = richClipboard();
        workspace.onActivation = [this] { note(QStringLiteral("activated")); };
        keyEvents.onPaste = [this] {
            note(QStringLiteral("chord"));
            pastedTexts.append(pasteboard.text());
            applicationPastedInto = workspace.frontmost;
        };
        QObject::connect(&pasteboard, &Pasteboard::restored, &pasteboard, [this] { restoredAt = elapsed(); });
        clock.start();
    }

    std::chrono::nanoseconds elapsed() const { return std::chrono::nanoseconds(clock.nsecsElapsed()); }

    void note(const QString &step)
    {
        pasteboard.history.append(step);
        steps.insert(step, elapsed());
    }

    InMemoryAccessibilityTree::Field &field() { return tree.fields[fieldPath]; }

    std::shared_ptr<FocusedTarget> target()
    {
        auto target = std::make_shared<FocusedTarget>();
        target->pid = editorPid;
        target->application = workspace.application(editorPid);
        target->applicationName = QStringLiteral("Editor");
        target->element = InMemoryAccessibilityTree::element(fieldPath);
        target->role = AX::textField;
        return target;
    }

    QCoro::Task<InsertionResult> startInsertion(const FocusedTargetPtr &into)
    {
        clock.restart();
        return service->insert({.prompt = {}, .text = promptText, .variables = {}}, into);
    }

    InsertionResult insertInto(const FocusedTargetPtr &into) { return await(startInsertion(into)); }

    void prefer(InsertionMethod method) { preferences.setPreferredInsertionMethod(method); }

    void deny(bool accessibility, bool posting)
    {
        tree.trusted = !accessibility;
        keyEvents.allowed = !posting;
        permissions.refresh();
    }

    void expectClipboardKept() { EXPECT_EQ(pasteboard.content, richClipboard()); }

    void expectClipboardUntouched()
    {
        expectClipboardKept();
        EXPECT_THAT(pasteboard.history, testing::IsEmpty());
    }

    QTemporaryDir folder;
    UserDefaults defaults{folder.filePath(QStringLiteral("defaults.plist"))};
    PreferenceStore preferences{defaults};
    InMemoryAccessibilityTree tree;
    InMemoryPasteboard pasteboard;
    InMemoryWorkspace workspace;
    InMemoryKeyEvents keyEvents;
    AccessibilityService accessibility{tree, workspace};
    PermissionsService permissions{tree, keyEvents};
    std::unique_ptr<InsertionService> service =
        std::make_unique<InsertionService>(permissions, accessibility, preferences,
                                           InsertionService::Desktop{pasteboard, workspace, keyEvents, tree});

    QElapsedTimer clock;
    QMap<QString, std::chrono::nanoseconds> steps; ///< when each happened last
    std::chrono::nanoseconds restoredAt{0};
    QStringList pastedTexts;
    std::optional<qint64> applicationPastedInto;
};

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

// The steps of a paste

class ClipboardPasteTest : public InsertionServiceTest
{
protected:
    ClipboardPasteTest() { prefer(InsertionMethod::clipboardPaste); }
};

TEST_F(ClipboardPasteTest, stepsComeInOrderWithBothWaits)
{
    EXPECT_EQ(insertInto(target()), pastedInto(QStringLiteral("Editor")));

    EXPECT_THAT(pasteboard.history, ElementsAre(u"items"_qs, u"setTransientString"_qs, u"activated"_qs,
                                                u"chord"_qs, u"restore"_qs));
    EXPECT_GE(steps[u"chord"_qs] - steps[u"activated"_qs], 180ms);
    EXPECT_GE(restoredAt - steps[u"chord"_qs], 180ms);
    EXPECT_LT(restoredAt - steps[u"activated"_qs], 360ms + 500ms) << "there is no other delay";
}

TEST_F(ClipboardPasteTest, theEventLoopTurnsDuringTheWaits)
{
    int ticks = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&ticks] { ++ticks; });
    timer.start(10);

    insertInto(target());

    EXPECT_GT(ticks, 5);
}

TEST_F(ClipboardPasteTest, oneChordIsPostedIntoTheReactivatedApplicationWithTheTextOnTheClipboard)
{
    insertInto(target());

    EXPECT_THAT(workspace.activations, ElementsAre(editorPid));
    EXPECT_EQ(applicationPastedInto, editorPid);
    EXPECT_THAT(pastedTexts, ElementsAre(promptText));
    EXPECT_THAT(keyEvents.postedChords, ElementsAre(PasteConvention::standard));
}

TEST_F(ClipboardPasteTest, severalItemsOfSeveralTypesAreTheSameAfterwards)
{
    EXPECT_TRUE(insertInto(target()).succeeded);
    expectClipboardKept();
}

TEST_F(ClipboardPasteTest, anEmptyClipboardIsEmptyAgainAfterwards)
{
    pasteboard.content.clear();

    EXPECT_TRUE(insertInto(target()).succeeded);

    EXPECT_THAT(pastedTexts, ElementsAre(promptText));
    EXPECT_TRUE(pasteboard.content.isEmpty());
}

TEST_F(ClipboardPasteTest, aTargetWithoutANameIsTheCurrentApp)
{
    const auto nameless = target();
    nameless->applicationName.reset();

    EXPECT_EQ(insertInto(nameless), pastedInto(QStringLiteral("the current app")));
}

TEST_F(ClipboardPasteTest, aNameIsShownAsItStands)
{
    const auto odd = target();
    odd->applicationName = QStringLiteral("%1 & Söhne %L2");

    EXPECT_EQ(insertInto(odd).message, QStringLiteral("Prompt pasted into %1 & Söhne %L2."));
    workspace.refusesActivation = true;
    EXPECT_EQ(insertInto(odd).message,
              QStringLiteral("Brevix couldn't reactivate %1 & Söhne %L2. Copy instead."));
}

TEST_F(ClipboardPasteTest, anEmptyTextIsPastedToo)
{
    const RenderedPrompt empty{.prompt = {}, .text = QString(), .variables = {}};

    EXPECT_EQ(await(service->insert(empty, target())), pastedInto(QStringLiteral("Editor")));
    expectClipboardKept();
}

struct ConventionCase
{
    PasteConvention applications;
    std::optional<QString> subrole;
    PasteConvention expected;
};

TEST_F(ClipboardPasteTest, theChordIsTheOneThatTheApplicationOrItsFieldTakes)
{
    using Convention = PasteConvention;
    const ConventionCase cases[] = {
        {Convention::standard, std::nullopt, Convention::standard},
        {Convention::terminal, std::nullopt, Convention::terminal},
        {Convention::primarySelection, std::nullopt, Convention::primarySelection},
        {Convention::standard, AX::terminal, Convention::terminal},
        {Convention::primarySelection, AX::terminal, Convention::primarySelection},
    };
    for (const ConventionCase &each : cases) {
        const auto into = target();
        into->application->pasteConvention = each.applications;
        into->subrole = each.subrole;
        keyEvents.postedChords.clear();
        pasteboard.transientConventions.clear();

        EXPECT_TRUE(insertInto(into).succeeded);

        EXPECT_THAT(keyEvents.postedChords, ElementsAre(each.expected));
        EXPECT_THAT(pasteboard.transientConventions, ElementsAre(each.expected));
    }
}

// What can go wrong with a paste

TEST_F(ClipboardPasteTest, withoutPostingTheClipboardIsUntouched)
{
    deny(false, true);

    EXPECT_EQ(insertInto(target()), postingNotAllowed);

    expectClipboardUntouched();
    EXPECT_TRUE(workspace.activations.isEmpty());
}

TEST_F(ClipboardPasteTest, anApplicationThatHasQuitCannotBeReactivatedAndTheClipboardIsBackAtOnce)
{
    const auto into = target();
    workspace.running.remove(editorPid);

    EXPECT_EQ(insertInto(into), notReactivated(QStringLiteral("Editor")));

    expectClipboardKept();
    EXPECT_THAT(pasteboard.history, ElementsAre(u"items"_qs, u"setTransientString"_qs, u"restore"_qs));
    EXPECT_LT(elapsed(), 180ms) << "a failure does not wait";
    EXPECT_TRUE(keyEvents.postedChords.isEmpty());
}

TEST_F(ClipboardPasteTest, aTargetWithoutAnApplicationAndANameIsThePreviousApp)
{
    const auto into = target();
    into->application.reset();
    into->applicationName.reset();

    EXPECT_EQ(insertInto(into), notReactivated(QStringLiteral("the previous app")));

    expectClipboardKept();
    EXPECT_TRUE(workspace.activations.isEmpty());
    EXPECT_TRUE(keyEvents.postedChords.isEmpty());
}

TEST_F(ClipboardPasteTest, aRefusedActivationPostsNothing)
{
    workspace.refusesActivation = true;

    EXPECT_EQ(insertInto(target()).message, reactivationMessage);

    expectClipboardKept();
    EXPECT_TRUE(keyEvents.postedChords.isEmpty());
}

TEST_F(ClipboardPasteTest, aUserWhoHasMovedOnBeforeTheChordGetsNothingPasted)
{
    workspace.onActivation = [this] {
        QTimer::singleShot(50ms, &workspace, [this] { workspace.bringToFront(otherPid); });
    };

    EXPECT_EQ(insertInto(target()), notReactivated(QStringLiteral("Editor")));

    expectClipboardKept();
    EXPECT_TRUE(keyEvents.postedChords.isEmpty());
}

TEST_F(ClipboardPasteTest, aDesktopWithNothingInFrontGetsNothingPasted)
{
    workspace.onActivation = [this] { workspace.frontmost.reset(); };

    EXPECT_EQ(insertInto(target()), notReactivated(QStringLiteral("Editor")));

    expectClipboardKept();
    EXPECT_TRUE(keyEvents.postedChords.isEmpty());
}

TEST_F(ClipboardPasteTest, anotherWindowOfTheSameProcessGetsNothingPasted)
{
    workspace.running[editorPid].window = 7;
    const auto into = target();
    workspace.onActivation = [this] { workspace.running[editorPid].window = 8; };

    EXPECT_EQ(insertInto(into), notReactivated(QStringLiteral("Editor")));

    expectClipboardKept();
    EXPECT_TRUE(keyEvents.postedChords.isEmpty());
}

TEST_F(ClipboardPasteTest, anotherFieldOfTheSameWindowGetsNothingPasted)
{
    field().isFocused = false;

    EXPECT_EQ(insertInto(target()), notReactivated(QStringLiteral("Editor")));

    expectClipboardKept();
    EXPECT_TRUE(keyEvents.postedChords.isEmpty());
}

TEST_F(ClipboardPasteTest, aFieldThatHasTheFocusOrDoesNotTellIsPastedInto)
{
    for (const std::optional<bool> answer : {std::optional(true), std::optional<bool>()}) {
        field().isFocused = answer;
        EXPECT_EQ(insertInto(target()), pastedInto(QStringLiteral("Editor")));
    }
}

TEST_F(ClipboardPasteTest, aUserWhoMovesOnWhileModifiersAreHeldGetsNothingPasted)
{
    keyEvents.onHeldModifiers = [this] { workspace.bringToFront(otherPid); };

    EXPECT_EQ(insertInto(target()), notReactivated(QStringLiteral("Editor")));

    expectClipboardKept();
    EXPECT_TRUE(keyEvents.postedChords.isEmpty());
}

TEST_F(ClipboardPasteTest, aUserWhoMovesOnAfterTheChordIsNoFailure)
{
    keyEvents.onPaste = [this] { workspace.bringToFront(otherPid); };

    EXPECT_EQ(insertInto(target()), pastedInto(QStringLiteral("Editor")));
    expectClipboardKept();
}

TEST_F(ClipboardPasteTest, aChordThatCannotBePostedIsAFailureAndTheClipboardIsBack)
{
    keyEvents.fails = true;

    EXPECT_EQ(insertInto(target()), postingNotAllowed);

    expectClipboardKept();
    EXPECT_EQ(pasteboard.history.last(), u"restore"_qs);
}

TEST_F(ClipboardPasteTest, aClipboardWhoseOwnerHangsIsNotOverwrittenAndNothingIsPasted)
{
    pasteboard.isOwnerHung = true;

    const InsertionResult result = insertInto(target());

    EXPECT_EQ(result, InsertionResult::failure(InsertionFailureReason::unknown,
                                               u"Brevix couldn't save your clipboard, so nothing was pasted. "
                                               u"Copy instead to replace it."_qs));
    expectClipboardKept();
    EXPECT_THAT(pasteboard.history, ElementsAre(u"items"_qs));
    EXPECT_TRUE(workspace.activations.isEmpty());
    EXPECT_TRUE(keyEvents.postedChords.isEmpty());
}

TEST_F(ClipboardPasteTest, aClipboardThatRefusesTheTextIsPutBackAndNothingIsPasted)
{
    pasteboard.refusesText = true;

    const InsertionResult result = insertInto(target());

    EXPECT_FALSE(result.succeeded);
    EXPECT_EQ(result.failureReason, InsertionFailureReason::unknown);
    expectClipboardKept();
    EXPECT_TRUE(keyEvents.postedChords.isEmpty());
}

TEST_F(ClipboardPasteTest, twoPastesOneAfterTheOtherBothKeepTheClipboard)
{
    EXPECT_TRUE(insertInto(target()).succeeded);
    EXPECT_TRUE(insertInto(target()).succeeded);

    EXPECT_THAT(pastedTexts, ElementsAre(promptText, promptText));
    expectClipboardKept();
}

// The service goes while a paste is under way

TEST_F(ClipboardPasteTest, aServiceDestroyedInTheFirstWaitGivesTheClipboardBack)
{
    auto task = startInsertion(target());
    ASSERT_EQ(pasteboard.text(), promptText);
    ASSERT_TRUE(keyEvents.postedChords.isEmpty());

    service.reset();
    await(std::move(task));

    expectClipboardKept();
    EXPECT_LT(elapsed(), 180ms) << "an interrupted wait is over at once";
}

TEST_F(ClipboardPasteTest, aServiceDestroyedInTheSecondWaitGivesTheClipboardBack)
{
    auto task = startInsertion(target());
    ASSERT_TRUE(waitUntil([this] { return !keyEvents.postedChords.isEmpty(); }));
    ASSERT_EQ(pasteboard.text(), promptText);

    service.reset();
    await(std::move(task));

    expectClipboardKept();
    EXPECT_EQ(keyEvents.postedChords.size(), 1);
}

TEST_F(ClipboardPasteTest, aServiceDestroyedDuringTheActivationGivesTheClipboardBack)
{
    workspace.delay = 10ms;
    auto task = startInsertion(target());
    ASSERT_EQ(pasteboard.text(), promptText);

    service.reset();
    await(std::move(task));

    expectClipboardKept();
}

TEST_F(ClipboardPasteTest, aServiceDestroyedBeforeTheClipboardWasSavedNeitherTakesItNorPastes)
{
    pasteboard.delay = 10ms;
    auto task = startInsertion(target());

    service.reset();
    const InsertionResult result = await(std::move(task));

    EXPECT_FALSE(result.succeeded);
    expectClipboardKept();
    EXPECT_THAT(pasteboard.history, ElementsAre(u"items"_qs));
    EXPECT_TRUE(keyEvents.postedChords.isEmpty());
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
