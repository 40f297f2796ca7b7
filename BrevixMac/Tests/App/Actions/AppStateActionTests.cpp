// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppStateFixture.h"

// What a chosen prompt or skill leads to.

namespace {

const QString promptCopied = QStringLiteral("Prompt copied to clipboard.");
const InsertionResult copied = InsertionResult::success(InsertionMethod::copiedOnly, promptCopied);

class AppStateActionTest : public AppStateFixture
{
protected:
    AppStateActionTest()
    {
        start();
        focus(editorField);
    }

    void fillIn(const PromptItem &prompt, PendingVariableAction action, const VariableValues &values)
    {
        state->beginAction(prompt, action);
        for (auto value = values.cbegin(); value != values.cend(); ++value)
            state->setVariableValue(value.key(), value.value());
    }

    const PromptItem plain = prompt(QStringLiteral("plain"), QStringLiteral("Hello."));
    const PromptItem templated =
        prompt(QStringLiteral("templated"), QStringLiteral("Hi {{name}}, {{name}}!"));
    const SkillItem haiku = skill(QStringLiteral("haiku"), QStringLiteral("Write about {{season}}."));
};

} // namespace

// Prompts without variables

TEST_F(AppStateActionTest, aPromptWithoutVariablesIsInsertedAtOnceAndThePickerCloses)
{
    openPicker();

    const InsertionResult result =
        resultOf([this] { state->beginAction(plain, PendingVariableAction::insert); });

    EXPECT_EQ(result.method, InsertionMethod::accessibility);
    EXPECT_EQ(field(editorField).value, QStringLiteral("Hello."));
    EXPECT_EQ(state->recents().recentIDs(), QStringList{plain.id});
    EXPECT_FALSE(state->palettePresented());
    EXPECT_EQ(dismissed, 1);
    EXPECT_EQ(state->insertionRecovery(), std::nullopt);
}

TEST_F(AppStateActionTest, aPromptWithoutVariablesIsCopiedAtOnceAndThePickerStaysOpen)
{
    openPicker();

    state->beginAction(plain, PendingVariableAction::copy);

    EXPECT_EQ(state->lastInsertionResult(), copied);
    EXPECT_EQ(pasteboard.text(), QStringLiteral("Hello."));
    EXPECT_EQ(state->activeVariablePrompt(), std::nullopt);
    EXPECT_EQ(state->recents().recentIDs(), QStringList{plain.id});
    EXPECT_TRUE(state->palettePresented());
    EXPECT_EQ(dismissed, 0);
    EXPECT_EQ(field(editorField).value, QString());
}

TEST_F(AppStateActionTest, aCopyThatTheSessionRefusesIsReportedAsACopyNevertheless)
{
    pasteboard.refusesText = true;

    state->beginAction(plain, PendingVariableAction::copy);

    EXPECT_EQ(state->lastInsertionResult(), copied);
}

TEST_F(AppStateActionTest, actionsWorkWithoutAPanel)
{
    state->presentPaletteAction = nullptr;
    state->dismissPaletteAction = nullptr;

    EXPECT_TRUE(resultOf([this] { state->insertRaw(plain); }).succeeded);
    state->handlePaletteInvocation(true);
    EXPECT_TRUE(waitUntil([this] { return state->palettePresented(); }));
}

// Filling variables

TEST_F(AppStateActionTest, aRepeatedVariableIsAskedForOnceAndStartsEmpty)
{
    state->beginAction(templated, PendingVariableAction::insert);

    EXPECT_EQ(state->activeVariablePrompt(), templated);
    EXPECT_EQ(state->variableValues(), (VariableValues{{u"name"_qs, QString()}}));
    EXPECT_EQ(state->lastInsertionResult(), std::nullopt);
    EXPECT_EQ(field(editorField).value, QString());
    EXPECT_TRUE(state->recents().recentIDs().isEmpty());
}

TEST_F(AppStateActionTest, anotherPromptsFormStartsWithItsOwnVariablesOnly)
{
    fillIn(templated, PendingVariableAction::insert, {{u"name"_qs, u"Ann"_qs}});

    state->beginAction(prompt(u"other"_qs, u"{{a}}{{name}}"_qs), PendingVariableAction::insert);

    EXPECT_EQ(state->variableValues(), (VariableValues{{u"a"_qs, QString()}, {u"name"_qs, QString()}}));
}

TEST_F(AppStateActionTest, confirmedValuesAreInsertedAndTheFormCloses)
{
    fillIn(templated, PendingVariableAction::insert, {{u"name"_qs, u"Ann"_qs}});

    EXPECT_TRUE(resultOf([this] { state->confirmVariableAction(); }).succeeded);

    EXPECT_EQ(field(editorField).value, QStringLiteral("Hi Ann, Ann!"));
    EXPECT_EQ(state->activeVariablePrompt(), std::nullopt);
    EXPECT_TRUE(state->variableValues().isEmpty());
    EXPECT_EQ(state->recents().recentIDs(), QStringList{templated.id});
    EXPECT_EQ(dismissed, 1);
}

TEST_F(AppStateActionTest, confirmedValuesAreCopiedAndTheFormCloses)
{
    openPicker();
    fillIn(templated, PendingVariableAction::copy, {{u"name"_qs, u"Ann"_qs}});

    state->confirmVariableAction();

    EXPECT_EQ(state->lastInsertionResult(), copied);
    EXPECT_EQ(pasteboard.text(), QStringLiteral("Hi Ann, Ann!"));
    EXPECT_EQ(state->activeVariablePrompt(), std::nullopt);
    EXPECT_TRUE(state->variableValues().isEmpty());
    EXPECT_TRUE(state->palettePresented());
    EXPECT_EQ(dismissed, 0);
}

TEST_F(AppStateActionTest, aValueLeftEmptyReplacesItsVariableWithNothing)
{
    state->beginAction(templated, PendingVariableAction::copy);

    state->confirmVariableAction();

    EXPECT_EQ(pasteboard.text(), QStringLiteral("Hi , !"));
}

TEST_F(AppStateActionTest, confirmingWithoutAPromptDoesNothing)
{
    state->confirmVariableAction();

    EXPECT_FALSE(state->isInserting());
    EXPECT_EQ(state->lastInsertionResult(), std::nullopt);
    EXPECT_TRUE(pasteboard.history.isEmpty());
}

TEST_F(AppStateActionTest, aCancelledFormInsertsAndCopiesNothing)
{
    fillIn(templated, PendingVariableAction::copy, {{u"name"_qs, u"Ann"_qs}});

    state->cancelVariableAction();
    state->confirmVariableAction();

    EXPECT_EQ(state->activeVariablePrompt(), std::nullopt);
    EXPECT_TRUE(state->variableValues().isEmpty());
    EXPECT_TRUE(pasteboard.history.isEmpty());
}

TEST_F(AppStateActionTest, aFailedInsertionKeepsTheFormAndItsValuesAndOffersACopy)
{
    openPicker();
    refuseInsertion();
    fillIn(templated, PendingVariableAction::insert, {{u"name"_qs, u"Ann"_qs}});

    const InsertionResult result = resultOf([this] { state->confirmVariableAction(); });

    EXPECT_EQ(result.failureReason, InsertionFailureReason::postEventUnavailable);
    EXPECT_EQ(state->activeVariablePrompt(), templated);
    EXPECT_EQ(state->variableValues(), (VariableValues{{u"name"_qs, u"Ann"_qs}}));
    ASSERT_TRUE(state->insertionRecovery());
    EXPECT_EQ(state->insertionRecovery()->prompt, templated);
    EXPECT_EQ(state->insertionRecovery()->skill, std::nullopt);
    EXPECT_EQ(state->insertionRecovery()->renderedPrompt.text, QStringLiteral("Hi Ann, Ann!"));
    EXPECT_EQ(state->insertionRecovery()->renderedPrompt.variables,
              (VariableValues{{u"name"_qs, u"Ann"_qs}}));
    EXPECT_TRUE(state->palettePresented());
    EXPECT_EQ(dismissed, 0);
    EXPECT_TRUE(state->recents().recentIDs().isEmpty());
}

TEST_F(AppStateActionTest, openingThePickerAgainClosesTheFormAndForgetsTheOutcome)
{
    refuseInsertion();
    fillIn(templated, PendingVariableAction::insert, {{u"name"_qs, u"Ann"_qs}});
    resultOf([this] { state->confirmVariableAction(); });
    state->setQuery(QStringLiteral("search"));

    openPicker();

    EXPECT_EQ(state->activeVariablePrompt(), std::nullopt);
    EXPECT_TRUE(state->variableValues().isEmpty());
    EXPECT_EQ(state->lastInsertionResult(), std::nullopt);
    EXPECT_EQ(state->insertionRecovery(), std::nullopt);
    EXPECT_EQ(state->query(), QString());
}

TEST_F(AppStateActionTest, aPromptInsertedAsItIsKeepsItsPlaceholders)
{
    EXPECT_TRUE(resultOf([this] { state->insertRaw(templated); }).succeeded);

    EXPECT_EQ(field(editorField).value, templated.text);
    EXPECT_EQ(state->activeVariablePrompt(), std::nullopt);
    EXPECT_EQ(state->recents().recentIDs(), QStringList{templated.id});
}

TEST_F(AppStateActionTest, aNewActionForgetsTheOutcomeOfTheLast)
{
    refuseInsertion();
    resultOf([this] { state->insertRaw(plain); });
    ASSERT_TRUE(state->insertionRecovery());

    state->beginAction(templated, PendingVariableAction::insert);

    EXPECT_EQ(state->lastInsertionResult(), std::nullopt);
    EXPECT_EQ(state->insertionRecovery(), std::nullopt);
}

// When an insertion fails

TEST_F(AppStateActionTest, aPromptWithoutATargetFailsWithAnOfferToCopyIt)
{
    focus({});

    const InsertionResult result = resultOf([this] { state->insertRaw(plain); });

    EXPECT_EQ(result.failureReason, InsertionFailureReason::noFocusedTarget);
    ASSERT_TRUE(state->insertionRecovery());
    EXPECT_EQ(state->insertionRecovery()->actionTitle(), QStringLiteral("Copy Prompt Instead"));
    EXPECT_EQ(state->focusedTarget(), nullptr);
}

TEST_F(AppStateActionTest, aSkillWithoutATargetFailsWithAnOfferToCopyIt)
{
    focus({});

    const InsertionResult result = resultOf([this] { state->use(haiku); });

    EXPECT_EQ(result.failureReason, InsertionFailureReason::noFocusedTarget);
    ASSERT_TRUE(state->insertionRecovery());
    EXPECT_EQ(state->insertionRecovery()->actionTitle(), QStringLiteral("Copy Skill Instead"));
    EXPECT_EQ(state->insertionRecovery()->skill, haiku);
    EXPECT_EQ(state->insertionRecovery()->prompt, std::nullopt);
}

TEST_F(AppStateActionTest, theOfferToCopyAFailedPromptCopiesAndRecordsIt)
{
    openPicker();
    refuseInsertion();
    resultOf([this] { state->insertRaw(plain); });

    state->copyFailedInsertion();

    EXPECT_EQ(state->lastInsertionResult(), copied);
    EXPECT_EQ(pasteboard.text(), plain.text);
    EXPECT_EQ(state->recents().recentIDs(), QStringList{plain.id});
    EXPECT_EQ(state->insertionRecovery(), std::nullopt);
    EXPECT_TRUE(state->palettePresented());
}

TEST_F(AppStateActionTest, theOfferToCopyAFailedSkillRecordsTheSkillAndNoPrompt)
{
    refuseInsertion();
    resultOf([this] { state->use(haiku); });

    state->copyFailedInsertion();

    EXPECT_EQ(state->lastInsertionResult(), copied);
    EXPECT_EQ(pasteboard.text(), haiku.text);
    EXPECT_EQ(state->recents().recentSkillIDs(), QStringList{haiku.id});
    EXPECT_TRUE(state->recents().recentIDs().isEmpty());
    EXPECT_EQ(state->insertionRecovery(), std::nullopt);
}

TEST_F(AppStateActionTest, withoutAFailedInsertionThereIsNothingToCopy)
{
    state->copyFailedInsertion();

    EXPECT_EQ(state->lastInsertionResult(), std::nullopt);
    EXPECT_TRUE(pasteboard.history.isEmpty());
}

TEST_F(AppStateActionTest, aCopyOfAnotherPromptEndsTheOffer)
{
    refuseInsertion();
    resultOf([this] { state->insertRaw(plain); });

    state->performCopy({.prompt = templated, .text = templated.text, .variables = {}});

    EXPECT_EQ(state->insertionRecovery(), std::nullopt);
}

TEST_F(AppStateActionTest, aSuccessEndsTheOffer)
{
    refuseInsertion();
    resultOf([this] { state->insertRaw(plain); });
    field(editorField).isSettable = true;

    EXPECT_TRUE(resultOf([this] { state->insertRaw(plain); }).succeeded);

    EXPECT_EQ(state->insertionRecovery(), std::nullopt);
}

// Skills

TEST_F(AppStateActionTest, aSkillIsInsertedAsItStandsAndThePickerCloses)
{
    openPicker();

    EXPECT_TRUE(resultOf([this] { state->use(haiku); }).succeeded);

    EXPECT_EQ(field(editorField).value, haiku.text);
    EXPECT_EQ(state->recents().recentSkillIDs(), QStringList{haiku.id});
    EXPECT_TRUE(state->recents().recentIDs().isEmpty());
    EXPECT_FALSE(state->palettePresented());
    EXPECT_EQ(dismissed, 1);
}

TEST_F(AppStateActionTest, aSkillGoesToTheInserterWrappedAsAPrompt)
{
    SkillItem full = haiku;
    full.order = 7;
    full.createdAt = time;
    refuseInsertion();

    resultOf([this, full] { state->use(full); });

    ASSERT_TRUE(state->insertionRecovery());
    const RenderedPrompt expected{.prompt = {.id = QStringLiteral("skill:haiku"),
                                             .title = full.title,
                                             .text = full.text,
                                             .categoryID = QStringLiteral("skills"),
                                             .order = 7,
                                             .createdAt = time},
                                  .text = full.text,
                                  .variables = {}};
    EXPECT_EQ(state->insertionRecovery()->renderedPrompt, expected);
}

TEST_F(AppStateActionTest, skillsLeaveTheVariableFormAlone)
{
    fillIn(templated, PendingVariableAction::insert, {{u"name"_qs, u"Ann"_qs}});

    resultOf([this] { state->use(haiku); });
    state->performSkillCopy(haiku);

    EXPECT_EQ(state->activeVariablePrompt(), templated);
    EXPECT_EQ(state->variableValues(), (VariableValues{{u"name"_qs, u"Ann"_qs}}));
}

TEST_F(AppStateActionTest, aCopiedSkillIsRecordedAndThePickerStaysOpen)
{
    openPicker();

    state->performSkillCopy(haiku);

    EXPECT_EQ(state->lastInsertionResult(), copied);
    EXPECT_EQ(pasteboard.text(), haiku.text);
    EXPECT_EQ(state->recents().recentSkillIDs(), QStringList{haiku.id});
    EXPECT_TRUE(state->palettePresented());
    EXPECT_EQ(dismissed, 0);
}

TEST_F(AppStateActionTest, aSkillActionEndsTheOfferOfTheLastInsertion)
{
    refuseInsertion();
    resultOf([this] { state->insertRaw(plain); });
    ASSERT_TRUE(state->insertionRecovery());
    tree.delay = std::chrono::milliseconds(5);

    state->use(haiku);
    EXPECT_EQ(state->insertionRecovery(), std::nullopt) << "at once, not only with the result";
    ASSERT_TRUE(waitUntil([this] { return !state->isInserting(); }));
    EXPECT_TRUE(state->insertionRecovery());

    state->performSkillCopy(haiku);
    EXPECT_EQ(state->insertionRecovery(), std::nullopt);
}

// While an insertion is under way

TEST_F(AppStateActionTest, anInsertionIsUnderWayUntilItsResult)
{
    tree.delay = std::chrono::milliseconds(5);
    int changes = 0;
    QObject::connect(state.get(), &AppState::isInsertingChanged, state.get(), [&changes] { ++changes; });

    state->insertRaw(plain);
    EXPECT_TRUE(state->isInserting());
    ASSERT_TRUE(waitUntil([this] { return !state->isInserting(); }));

    EXPECT_EQ(changes, 2);
    EXPECT_TRUE(state->lastInsertionResult());
}

TEST_F(AppStateActionTest, ofTwoInsertionsTheOneThatStillRunsCounts)
{
    tree.delay = std::chrono::milliseconds(5);
    int results = 0;
    QObject::connect(&state->recents(), &RecentUsageStore::recentsChanged, state.get(),
                     [&results] { ++results; });
    QList<std::pair<bool, int>> changes; // whether one is under way, and how many are done by then
    QObject::connect(state.get(), &AppState::isInsertingChanged, state.get(), [&] {
        changes.append({state->isInserting(), results});
    });
    state->insertRaw(plain);
    ASSERT_FALSE(waitUntil([] { return false; }, std::chrono::milliseconds(8)));
    state->insertRaw(templated);

    ASSERT_TRUE(waitUntil([&] { return results == 2 && !state->isInserting(); }));
    ASSERT_EQ(changes.size(), 2) << "it stays under way from the first to the last";
    EXPECT_TRUE(changes.first().first);
    EXPECT_FALSE(changes.last().first);
    EXPECT_GE(changes.last().second, 1) << "and does not end with the first";
}

// What is published

TEST_F(AppStateActionTest, settersPublishOnlyChanges)
{
    int changes = 0;
    const auto count = [&changes] { ++changes; };
    QObject::connect(state.get(), &AppState::queryChanged, state.get(), count);
    QObject::connect(state.get(), &AppState::selectionChanged, state.get(), count);
    QObject::connect(state.get(), &AppState::variableValuesChanged, state.get(), count);
    QObject::connect(state.get(), &AppState::palettePresentedChanged, state.get(), count);
    QObject::connect(state.get(), &AppState::lastInsertionResultChanged, state.get(), count);
    const std::function<void()> setters[] = {
        [this] { state->setQuery(u"x"_qs); },
        [this] { state->setSelectedCategoryID(u"x"_qs); },
        [this] { state->setSelectedPromptID(u"x"_qs); },
        [this] { state->setSelectedSkillID(u"x"_qs); },
        [this] { state->setVariableValue(u"x"_qs, QString()); },
        [this] { state->setPalettePresented(true); },
        [this] { state->setLastInsertionResult(copied); },
    };
    for (const auto &set : setters) {
        changes = 0;
        set();
        EXPECT_EQ(changes, 1);
        set();
        EXPECT_EQ(changes, 1);
    }
}

TEST(InsertionRecovery, offersWhatWasBeingInserted)
{
    const InsertionRecovery forPrompt{.renderedPrompt = {}, .prompt = PromptItem{}};
    const InsertionRecovery forSkill{.renderedPrompt = {}, .skill = SkillItem{}};

    EXPECT_EQ(forPrompt.actionTitle(), QStringLiteral("Copy Prompt Instead"));
    EXPECT_EQ(forSkill.actionTitle(), QStringLiteral("Copy Skill Instead"));
}
