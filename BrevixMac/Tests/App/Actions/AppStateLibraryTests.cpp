// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppStateFixture.h"

// The library as the screens see it: ranked, selected, and proof against damaged data.

namespace {

QStringList idsOf(const QList<PromptItem> &prompts)
{
    QStringList ids;
    for (const PromptItem &prompt : prompts)
        ids.append(prompt.id);
    return ids;
}

QStringList idsOf(const QList<SkillItem> &skills)
{
    QStringList ids;
    for (const SkillItem &skill : skills)
        ids.append(skill.id);
    return ids;
}

class AppStateLibraryTest : public AppStateFixture
{
protected:
    AppStateLibraryTest()
    {
        server.categories = {{.id = u"work"_qs, .name = u"Work"_qs}, {.id = u"home"_qs, .name = u"Home"_qs}};
        server.prompts = {inOrder(prompt(u"apple"_qs, u"red fruit"_qs, u"work"_qs), 1),
                          inOrder(prompt(u"banana"_qs, u"yellow fruit"_qs, u"home"_qs), 2),
                          inOrder(prompt(u"cherry"_qs, u"red fruit"_qs, u"gone"_qs), 3)};
        server.skills = {skill(u"write"_qs, u"how to write"_qs),
                         skill(u"paint"_qs, u"how to paint in red"_qs)};
        server.skills[1].order = 1;
        focus(editorField);
    }

    static PromptItem inOrder(PromptItem prompt, qint64 order)
    {
        prompt.order = order;
        return prompt;
    }

    /// Uses @p item at a time of its own.
    template <typename Item>
    void copyOf(const Item &item)
    {
        time = time.addSecs(1);
        if constexpr (std::is_same_v<Item, PromptItem>)
            state->beginAction(item, PendingVariableAction::copy);
        else
            state->performSkillCopy(item);
    }

    PromptItem promptWithID(const QString &id)
    {
        for (const PromptItem &prompt : state->libraryPrompts()) {
            if (prompt.id == id)
                return prompt;
        }
        ADD_FAILURE() << "no prompt " << qPrintable(id);
        return {};
    }
};

} // namespace

// Derived lists

TEST_F(AppStateLibraryTest, visiblePromptsFollowTheQueryAndTheCategory)
{
    startWithLibrary();
    EXPECT_EQ(idsOf(state->visiblePrompts()), (QStringList{u"apple"_qs, u"banana"_qs, u"cherry"_qs}));

    state->setQuery(u" RED "_qs);
    EXPECT_EQ(idsOf(state->visiblePrompts()), (QStringList{u"apple"_qs, u"cherry"_qs}));

    state->setSelectedCategoryID(u"work"_qs);
    EXPECT_EQ(idsOf(state->visiblePrompts()), (QStringList{u"apple"_qs}));

    state->setQuery(u"nothing like it"_qs);
    EXPECT_TRUE(state->visiblePrompts().isEmpty());
}

TEST_F(AppStateLibraryTest, visibleSkillsFollowTheQueryAlone)
{
    startWithLibrary();
    state->setSelectedCategoryID(u"work"_qs);
    EXPECT_EQ(idsOf(state->visibleSkills()), (QStringList{u"write"_qs, u"paint"_qs}));

    state->setQuery(u"paint"_qs);
    EXPECT_EQ(idsOf(state->visibleSkills()), (QStringList{u"paint"_qs}));
}

TEST_F(AppStateLibraryTest, whatWasUsedLastComesFirst)
{
    startWithLibrary();
    copyOf(promptWithID(u"banana"_qs));
    copyOf(promptWithID(u"cherry"_qs));
    copyOf(state->librarySkills().last());

    EXPECT_EQ(idsOf(state->recentPromptItems()), (QStringList{u"cherry"_qs, u"banana"_qs}));
    EXPECT_EQ(idsOf(state->visiblePrompts()), (QStringList{u"cherry"_qs, u"banana"_qs, u"apple"_qs}));
    EXPECT_EQ(idsOf(state->visibleSkills()), (QStringList{u"paint"_qs, u"write"_qs}));
}

TEST_F(AppStateLibraryTest, usedPromptsThatHaveLeftTheLibraryAreNotRecent)
{
    startWithLibrary();
    copyOf(prompt(u"deleted"_qs, u"text"_qs));
    copyOf(promptWithID(u"apple"_qs));

    EXPECT_EQ(idsOf(state->recentPromptItems()), (QStringList{u"apple"_qs}));
}

TEST_F(AppStateLibraryTest, pickerSectionsShowTheRecentUsesAndThenTheMatches)
{
    startWithLibrary();
    EXPECT_EQ(state->resultSections().size(), 2);
    copyOf(promptWithID(u"banana"_qs));

    ASSERT_EQ(state->resultSections().size(), 1);
    EXPECT_EQ(state->resultSections().first().id, u"recent"_qs);
    EXPECT_EQ(state->resultSections().first().subtitle, state->libraryStore().syncState().title());

    state->setQuery(u"fruit"_qs);
    ASSERT_EQ(state->resultSections().size(), 1);
    EXPECT_EQ(state->resultSections().first().id, u"prompts"_qs);
    EXPECT_EQ(state->resultSections().first().results.size(), 3);
}

TEST_F(AppStateLibraryTest, listsAreToBeReadAgainAfterAUse)
{
    startWithLibrary();
    int changes = 0;
    QObject::connect(state.get(), &AppState::libraryChanged, state.get(), [&changes] { ++changes; });

    copyOf(promptWithID(u"apple"_qs));
    EXPECT_EQ(changes, 1);
    copyOf(state->librarySkills().first());
    EXPECT_EQ(changes, 2);
}

// The recorded category

TEST_F(AppStateLibraryTest, aUseIsRecordedWithTheNameOfItsCategory)
{
    startWithLibrary();

    resultOf([this] { state->insertRaw(promptWithID(u"apple"_qs)); });
    EXPECT_EQ(state->recents().recents().first().categoryName, u"Work"_qs);

    copyOf(promptWithID(u"banana"_qs));
    EXPECT_EQ(state->recents().recents().first().categoryName, u"Home"_qs);
}

TEST_F(AppStateLibraryTest, aUseOfAPromptWhoseCategoryIsGoneIsRecordedWithoutOne)
{
    startWithLibrary();

    copyOf(promptWithID(u"cherry"_qs));

    EXPECT_EQ(state->recents().recents().first().categoryName, std::nullopt);
}

TEST_F(AppStateLibraryTest, aFailedPromptThatIsCopiedIsRecordedWithTheNameOfItsCategory)
{
    startWithLibrary();
    refuseInsertion();
    resultOf([this] { state->insertRaw(promptWithID(u"apple"_qs)); });

    state->copyFailedInsertion();

    EXPECT_EQ(state->recents().recents().first().categoryName, u"Work"_qs);
}

// Selection

TEST_F(AppStateLibraryTest, withoutASelectionTheFirstVisiblePromptIsSelected)
{
    startWithLibrary();
    state->setQuery(u"yellow"_qs);

    state->ensurePromptSelection();

    EXPECT_EQ(state->selectedPromptID(), u"banana"_qs);
    ASSERT_TRUE(state->selectedPrompt());
    EXPECT_EQ(state->selectedPrompt()->id, u"banana"_qs);
}

TEST_F(AppStateLibraryTest, aSelectionThatNamesNoPromptIsReplaced)
{
    startWithLibrary();
    state->setSelectedPromptID(u"deleted"_qs);
    EXPECT_EQ(state->selectedPrompt(), std::nullopt);

    state->ensurePromptSelection();

    EXPECT_EQ(state->selectedPromptID(), u"apple"_qs);
}

TEST_F(AppStateLibraryTest, aValidSelectionIsLeftAloneAlsoWhenItIsNotVisible)
{
    startWithLibrary();
    state->setSelectedPromptID(u"cherry"_qs);
    state->setQuery(u"yellow"_qs);

    state->ensurePromptSelection();

    EXPECT_EQ(state->selectedPromptID(), u"cherry"_qs);
}

TEST_F(AppStateLibraryTest, withNothingVisibleNothingIsSelected)
{
    startWithLibrary();
    state->setSelectedPromptID(u"deleted"_qs);
    state->setQuery(u"nothing like it"_qs);

    state->ensurePromptSelection();

    EXPECT_EQ(state->selectedPromptID(), std::nullopt);
}

// Damaged data

TEST_F(AppStateLibraryTest, repeatedIdentifiersInTheLibraryAreShownOnceAndTheFirstCounts)
{
    server.prompts.append(inOrder(prompt(u"apple"_qs, u"another text"_qs), 9));
    server.skills.append(server.skills.first());
    server.categories.append({.id = u"work"_qs, .name = u"Work again"_qs, .order = 5});
    startWithLibrary();
    copyOf(promptWithID(u"apple"_qs));

    EXPECT_EQ(idsOf(state->libraryPrompts()), (QStringList{u"apple"_qs, u"banana"_qs, u"cherry"_qs}));
    EXPECT_EQ(promptWithID(u"apple"_qs).text, u"red fruit"_qs);
    EXPECT_EQ(state->librarySkills().size(), 2);
    EXPECT_EQ(state->categoriesByID().value(u"work"_qs).name, u"Work"_qs);
    EXPECT_EQ(state->visiblePrompts().size(), 3);
    EXPECT_EQ(state->visibleSkills().size(), 2);
    EXPECT_EQ(state->resultSections().size(), 1);
    EXPECT_EQ(state->selectedPrompt(), std::nullopt);
}

TEST_F(AppStateLibraryTest, repeatedIdentifiersInTheRecentsDoNotStopTheProgram)
{
    const auto record = [](const char *id, int lastUsedAt) -> QByteArray {
        return QByteArray(R"({"id":")") + id + R"(","title":"T","preview":"P","lastUsedAt":)" +
               QByteArray::number(lastUsedAt) + '}';
    };
    defaults.setData(u"recentPromptRecords"_qs,
                     '[' + record("apple", 3) + ',' + record("cherry", 2) + ',' + record("apple", 1) + ']');
    defaults.setData(u"recentSkillRecords"_qs, '[' + record("paint", 2) + ',' + record("paint", 1) + ']');

    startWithLibrary();

    EXPECT_EQ(idsOf(state->recentPromptItems()), (QStringList{u"apple"_qs, u"cherry"_qs}));
    EXPECT_EQ(idsOf(state->visiblePrompts()), (QStringList{u"apple"_qs, u"cherry"_qs, u"banana"_qs}));
    EXPECT_EQ(idsOf(state->visibleSkills()), (QStringList{u"paint"_qs, u"write"_qs}));
    EXPECT_EQ(state->resultSections().size(), 1);
}

TEST_F(AppStateLibraryTest, anEmptyLibraryHasNothingToShow)
{
    server.categories.clear();
    server.prompts.clear();
    server.skills.clear();

    startWithLibrary();

    EXPECT_TRUE(state->visiblePrompts().isEmpty());
    EXPECT_TRUE(state->resultSections().isEmpty());
    state->ensurePromptSelection();
    EXPECT_EQ(state->selectedPromptID(), std::nullopt);
}

// The target row

TEST_F(AppStateLibraryTest, theTargetRowTellsWhetherTextCanGoIn)
{
    start();
    focus({});
    openPicker();
    EXPECT_EQ(state->targetStatus().title, u"No editable field captured"_qs);
    EXPECT_EQ(state->targetStatus().detail, u"Click a text field, then press ⇧⌘P."_qs);

    switchTo(editorPid);
    openPicker();
    EXPECT_TRUE(state->targetStatus().ready);
    EXPECT_EQ(state->targetStatus().appName, u"Editor"_qs);

    field(editorField).subrole = AX::secureTextField;
    openPicker();
    EXPECT_EQ(state->targetStatus().title, u"Password fields are not supported"_qs);

    keyEvents.allowed = false;
    openPicker();
    EXPECT_EQ(state->targetStatus().title, u"Permissions needed"_qs);
}
