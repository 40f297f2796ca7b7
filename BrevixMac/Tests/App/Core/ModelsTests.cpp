// SPDX-License-Identifier: GPL-3.0-or-later
#include "Samples.h"

#include "Models.h"

#include <gtest/gtest.h>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

const QDateTime instant = utc(9, 30);

PromptItem fullPrompt()
{
    return {.id = u"p"_s,
            .title = u"t"_s,
            .text = u"x"_s,
            .categoryID = u"c"_s,
            .order = 3,
            .createdAt = instant};
}

SkillItem fullSkill()
{
    return {.id = u"s"_s,
            .title = u"t"_s,
            .text = u"x"_s,
            .sourceFilename = u"f.md"_s,
            .order = 3,
            .createdAt = instant};
}

PromptCategory fullCategory()
{
    return {.id = u"c"_s, .name = u"n"_s, .colorHex = u"ff0000"_s, .order = 3, .createdAt = instant};
}

template <typename Item>
void expectEveryFieldCounts(const Item &item, const std::vector<std::function<void(Item &)>> &changes)
{
    const Item copy = item;
    EXPECT_EQ(copy, item);
    EXPECT_EQ(qHash(copy), qHash(item));
    for (size_t index = 0; index < changes.size(); ++index) {
        Item changed = item;
        changes[index](changed);
        EXPECT_FALSE(changed == item) << "change " << index;
        EXPECT_NE(qHash(changed), qHash(item)) << "change " << index;
    }
}

} // namespace

TEST(Models, everyFieldOfAPromptCounts)
{
    expectEveryFieldCounts<PromptItem>(fullPrompt(),
                                       {
                                           [](PromptItem &item) { item.id = u"q"_s; },
                                           [](PromptItem &item) { item.title = u"q"_s; },
                                           [](PromptItem &item) { item.text = u"q"_s; },
                                           [](PromptItem &item) { item.categoryID = u"q"_s; },
                                           [](PromptItem &item) { item.order = 4; },
                                           [](PromptItem &item) { item.createdAt.reset(); },
                                           [](PromptItem &item) { item.createdAt = instant.addMSecs(1); },
                                       });
}

TEST(Models, everyFieldOfASkillCounts)
{
    expectEveryFieldCounts<SkillItem>(fullSkill(),
                                      {
                                          [](SkillItem &item) { item.id = u"q"_s; },
                                          [](SkillItem &item) { item.title = u"q"_s; },
                                          [](SkillItem &item) { item.text = u"q"_s; },
                                          [](SkillItem &item) { item.sourceFilename.reset(); },
                                          [](SkillItem &item) { item.sourceFilename = QString(); },
                                          [](SkillItem &item) { item.order = 4; },
                                          [](SkillItem &item) { item.createdAt.reset(); },
                                      });
}

TEST(Models, everyFieldOfACategoryCounts)
{
    expectEveryFieldCounts<PromptCategory>(fullCategory(),
                                           {
                                               [](PromptCategory &item) { item.id = u"q"_s; },
                                               [](PromptCategory &item) { item.name = u"q"_s; },
                                               [](PromptCategory &item) { item.colorHex.reset(); },
                                               [](PromptCategory &item) { item.colorHex = QString(); },
                                               [](PromptCategory &item) { item.order = 4; },
                                               [](PromptCategory &item) { item.createdAt.reset(); },
                                           });
}

TEST(Models, anAbsentColourDiffersFromAnEmptyOne)
{
    PromptCategory absent = makeCategory(u"c"_s, u"n"_s);
    PromptCategory empty = absent;
    empty.colorHex = QString();
    EXPECT_EQ(absent, makeCategory(u"c"_s, u"n"_s));
    EXPECT_FALSE(absent == empty);
}

TEST(Models, theSameInstantInAnotherZoneIsEqualAndHashesEqually)
{
    PromptItem here = fullPrompt();
    here.createdAt = instant.toOffsetFromUtc(7200);
    EXPECT_EQ(here, fullPrompt());
    EXPECT_EQ(qHash(here), qHash(fullPrompt()));
}

TEST(Models, tokensAreTheirNames)
{
    EXPECT_EQ(VariableToken{u"a"_s}, VariableToken{u"a"_s});
    EXPECT_FALSE(VariableToken{u"a"_s} == VariableToken{u"A"_s});
    EXPECT_EQ(qHash(VariableToken{u"a"_s}), qHash(u"a"_s));
}

TEST(Models, everyFieldOfARenderedPromptCounts)
{
    const RenderedPrompt rendered{.prompt = fullPrompt(), .text = u"x"_s, .variables = {{u"a"_s, u"1"_s}}};
    expectEveryFieldCounts<RenderedPrompt>(rendered,
                                           {
                                               [](RenderedPrompt &item) { item.prompt.id = u"q"_s; },
                                               [](RenderedPrompt &item) { item.text = u"q"_s; },
                                               [](RenderedPrompt &item) { item.variables.clear(); },
                                               [](RenderedPrompt &item) {
                                                   item.variables = {{u"a"_s, u"2"_s}};
                                               },
                                           });
}
