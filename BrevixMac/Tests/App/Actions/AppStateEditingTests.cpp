// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppStateFixture.h"

using namespace Qt::StringLiterals;

namespace {

using Fault = FaultyServer::Reply::Fault;

class AppStateEditingTest : public AppStateFixture
{
};

} // namespace

TEST_F(AppStateEditingTest, whatIsCreatedComesBackAndIsInTheLibrary)
{
    startWithLibrary();
    const Outcome<PromptCategory> category = await(state->createCategory(u"Work"_s, u"#112233"_s));
    EXPECT_EQ(category.value, (PromptCategory{u"new1"_s, u"Work"_s, u"#112233"_s, 0, time}));
    EXPECT_EQ(category.problem, QString());
    EXPECT_TRUE(state->categoriesByID().contains(u"new1"_s));

    const Outcome<PromptItem> prompt = await(state->createPrompt(u"Mail"_s, u"Hi"_s, u"new1"_s));
    EXPECT_EQ(prompt.value, (PromptItem{u"new2"_s, u"Mail"_s, u"Hi"_s, u"new1"_s, 0, time}));
    EXPECT_EQ(state->libraryPrompts().value(0), prompt.value);

    const Outcome<SkillItem> skill = await(state->createSkill(u"Review"_s, u"Look"_s, u"r.md"_s));
    EXPECT_EQ(skill.value, (SkillItem{u"new3"_s, u"Review"_s, u"Look"_s, u"r.md"_s, 0, time}));
    EXPECT_EQ(state->librarySkills().value(0), skill.value);
}

TEST_F(AppStateEditingTest, aProblemIsTheUsersText)
{
    startWithLibrary();
    const FaultyServer::Reply refusal{.status = 403, .body = R"({"error": {"message": "No."}})"};
    for (const char *collection : {"categories", "prompts", "skills"})
        server.replyOnce(collection, refusal);
    EXPECT_EQ(await(state->createCategory(u"N"_s, u"#1"_s)), (Outcome<PromptCategory>{{}, u"No."_s}));
    EXPECT_EQ(await(state->createPrompt(u"T"_s, u"X"_s, u"c"_s)), (Outcome<PromptItem>{{}, u"No."_s}));
    EXPECT_EQ(await(state->createSkill(u"T"_s, u"X"_s, {})), (Outcome<SkillItem>{{}, u"No."_s}));
}

TEST_F(AppStateEditingTest, withoutAUserThereIsAProblemAtOnce)
{
    start();
    const QString signIn = u"Sign in before creating or sharing prompts, skills, or categories."_s;
    EXPECT_EQ(await(state->createCategory(u"N"_s, u"#1"_s)).problem, signIn);
    EXPECT_EQ(await(state->createPrompt(u"T"_s, u"X"_s, u"c"_s)).problem, signIn);
    EXPECT_EQ(await(state->createSkill(u"T"_s, u"X"_s, {})).problem, signIn);
    EXPECT_EQ(await(state->optimize(u"x"_s)).problem, u"You're not signed in."_s);
    EXPECT_TRUE(server.requests().isEmpty());
}

TEST_F(AppStateEditingTest, anOptimizedTextComesBack)
{
    startWithLibrary();
    server.reply("optimizePrompt", {.body = R"({"result": {"text": "Better."}})"});
    EXPECT_EQ(await(state->optimize(u"x"_s)), (Outcome<QString>{u"Better."_s, {}}));
    server.reply("optimizePrompt", {.status = 500, .body = ""});
    EXPECT_EQ(await(state->optimize(u"x"_s)),
              (Outcome<QString>{{}, u"AI optimization returned HTTP 500."_s}));
    EXPECT_EQ(await(state->optimize(u" "_s)).problem, u"Write prompt text before optimizing."_s);
}

TEST_F(AppStateEditingTest, signingOutMeanwhileEndsEachInAProblem)
{
    const QString cancelled = u"The request was cancelled."_s;
    startWithLibrary();
    for (const char *path : {"categories", "prompts", "skills", "optimizePrompt"})
        server.reply(path, {.fault = Fault::stall});
    auto prompt = state->createPrompt(u"T"_s, u"X"_s, u"c"_s);
    auto text = state->optimize(u"x"_s);
    const qsizetype before = server.requests().size();
    ASSERT_TRUE(waitUntil([&] { return server.requests().size() == before + 2; }));

    state->signOut();

    EXPECT_EQ(await(std::move(prompt)).problem, cancelled);
    EXPECT_EQ(await(std::move(text)).problem, cancelled);
    EXPECT_TRUE(state->libraryPrompts().isEmpty());
    EXPECT_EQ(state->libraryStore().syncState(), SyncState::idle());
}

TEST_F(AppStateEditingTest, aStateThatDiesMeanwhileEndsEachInAProblem)
{
    startWithLibrary();
    for (const char *path : {"categories", "prompts", "skills", "optimizePrompt"})
        server.reply(path, {.fault = Fault::stall});
    auto category = state->createCategory(u"N"_s, u"#1"_s);
    auto prompt = state->createPrompt(u"T"_s, u"X"_s, u"c"_s);
    auto skill = state->createSkill(u"T"_s, u"X"_s, {});
    auto text = state->optimize(u"x"_s);
    const qsizetype before = server.requests().size();
    ASSERT_TRUE(waitUntil([&] { return server.requests().size() == before + 4; }));

    state.reset();

    const QString cancelled = u"The request was cancelled."_s;
    EXPECT_EQ(await(std::move(category)).problem, cancelled);
    EXPECT_EQ(await(std::move(prompt)).problem, cancelled);
    EXPECT_EQ(await(std::move(skill)).problem, cancelled);
    EXPECT_EQ(await(std::move(text)).problem, cancelled);
}
