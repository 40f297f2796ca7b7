// SPDX-License-Identifier: GPL-3.0-or-later
#include "PromptTemplateParser.h"

#include "Samples.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

QStringList names(const QString &text)
{
    QStringList result;
    for (const VariableToken &token : PromptTemplateParser::variables(text))
        result.append(token.name);
    return result;
}

QString rendered(const QString &text, const VariableValues &values)
{
    return PromptTemplateParser::render(makePrompt(u"p"_s, u"t"_s, text), values).text;
}

struct FindCase
{
    const char *what;
    QString text;
    QStringList names;
};

struct RenderCase
{
    const char *what;
    QString text;
    VariableValues values;
    QString result;
};

} // namespace

TEST(PromptTemplateParser, findsEachDistinctTrimmedNameOnceInOrder)
{
    const FindCase cases[] = {
        {"nothing", u""_s, {}},
        {"no braces", u"plain text"_s, {}},
        {"single braces", u"{a} }} {"_s, {}},
        {"repeated, with spaces", u"{{a}} {{ b }} {{a}}"_s, {u"a"_s, u"b"_s}},
        {"the same name with and without spaces", u"{{ a }}{{a}}"_s, {u"a"_s}},
        {"three braces", u"{{{x}}}"_s, {u"x"_s}},
        {"five braces", u"{{{{{x}}}}}"_s, {u"x"_s}},
        {"empty", u"{{}}"_s, {}},
        {"blank", u"{{  }} {{\n}}"_s, {}},
        {"case", u"{{Name}}{{name}}"_s, {u"Name"_s, u"name"_s}},
        {"inner space", u"{{a b}}"_s, {u"a b"_s}},
        {"line break", u"{{first\nsecond}}"_s, {u"first\nsecond"_s}},
        {"brace inside", u"{{a{b}} {{c}d}} {{e}}"_s, {u"e"_s}},
        {"field after an unfinished one", u"{{a {{b}}"_s, {u"b"_s}},
        {"unfinished", u"{{a}} {{b"_s, {u"a"_s}},
        {"one closing brace at the end", u"{{a}"_s, {}},
        {"adjacent", u"{{a}}{{b}}"_s, {u"a"_s, u"b"_s}},
        {"no-break space is white space", u"{{\u00a0a\u2003}}"_s, {u"a"_s}},
        {"beyond the basic plane", u"{{😀}}"_s, {u"😀"_s}},
        {"unpaired surrogate elsewhere", u"{{a}}"_s + QChar(0xd800) + u"{{b}}"_s, {u"a"_s, u"b"_s}},
    };
    for (const FindCase &test : cases)
        EXPECT_EQ(names(test.text), test.names) << test.what;
}

TEST(PromptTemplateParser, replacesTheExactPlaceholders)
{
    const RenderCase cases[] = {
        {"none", u"plain"_s, {{u"a"_s, u"x"_s}}, u"plain"_s},
        {"twice", u"{{a}}{{a}}"_s, {{u"a"_s, u"x"_s}}, u"xx"_s},
        {"spaced form stays", u"{{ a }}"_s, {{u"a"_s, u"x"_s}}, u"{{ a }}"_s},
        {"both forms", u"{{ a }} {{a}}"_s, {{u"a"_s, u"x"_s}}, u"{{ a }} x"_s},
        {"no value", u"{{a}} {{b}}"_s, {{u"b"_s, u"x"_s}}, u"{{a}} x"_s},
        {"empty value", u"<{{a}}>"_s, {{u"a"_s, QString()}}, u"<>"_s},
        {"inner space", u"{{a b}}"_s, {{u"a b"_s, u"x"_s}}, u"x"_s},
        {"value with a later placeholder",
         u"{{a}} {{b}}"_s,
         {{u"a"_s, u"{{b}}"_s}, {u"b"_s, u"x"_s}},
         u"x x"_s},
        {"value with an earlier placeholder",
         u"{{a}} {{b}}"_s,
         {{u"a"_s, u"x"_s}, {u"b"_s, u"{{a}}"_s}},
         u"x {{a}}"_s},
        {"value with its own placeholder", u"{{a}}"_s, {{u"a"_s, u"{{a}}"_s}}, u"{{a}}"_s},
        {"no pattern characters", u"{{a.b}} {{axb}}"_s, {{u"a.b"_s, u"\\1$&"_s}}, u"\\1$& {{axb}}"_s},
        {"case", u"{{A}}{{a}}"_s, {{u"a"_s, u"x"_s}}, u"{{A}}x"_s},
        {"three braces", u"{{{x}}}"_s, {{u"x"_s, u"y"_s}}, u"{y}"_s},
    };
    for (const RenderCase &test : cases)
        EXPECT_EQ(rendered(test.text, test.values), test.result) << test.what;
}

TEST(PromptTemplateParser, aRenderedPromptKeepsThePromptAndEveryValueAsEntered)
{
    const PromptItem prompt = makePrompt(u"p"_s, u"t"_s, u"{{a}}"_s, u"c"_s, 4);
    const VariableValues values{{u"a"_s, u" x "_s}, {u"unknown"_s, u"y"_s}};
    const RenderedPrompt result = PromptTemplateParser::render(prompt, values);
    EXPECT_EQ(result.prompt, prompt);
    EXPECT_EQ(result.text, u" x "_s);
    EXPECT_EQ(result.variables, values);
}

TEST(PromptTemplateParser, hostileTextsTakeLinearTime)
{
    QElapsedTimer timer;
    timer.start();
    EXPECT_TRUE(names(QString(1'000'000, u'{')).isEmpty());
    EXPECT_TRUE(names(u"{{a"_s.repeated(300'000)).isEmpty());
    EXPECT_LT(timer.elapsed(), 2000);
}

TEST(PromptTemplateParser, valuesThatMultiplyEachOtherDoNotGrowWithoutEnd)
{
    QString text;
    VariableValues values;
    for (int number = 0; number < 64; ++number) {
        text += u"{{v%1}}"_s.arg(number);
        values.insert(u"v%1"_s.arg(number), u"{{v%1}}{{v%1}}"_s.arg(number + 1));
    }
    const QString result = rendered(text, values);
    EXPECT_LE(result.size(), PromptTemplateParser::maximumRenderedLength);
    EXPECT_GT(result.size(), PromptTemplateParser::maximumRenderedLength / 4);
    EXPECT_TRUE(result.contains(u"{{v"_s)) << "what does not fit keeps its placeholder";
}
