// SPDX-License-Identifier: GPL-3.0-or-later
#include "InsertionOutcome.h"

#include <gtest/gtest.h>

#include <tuple>

using namespace Qt::StringLiterals;

TEST(InsertionMethod, isListedStoredAndDescribedAsTheTableSays)
{
    const std::tuple<InsertionMethod, QString, QString, QString> rows[] = {
        {InsertionMethod::hybrid, u"hybrid"_s, u"Hybrid"_s,
         u"Try Accessibility first, then fall back to clipboard-preserving paste."_s},
        {InsertionMethod::accessibility, u"accessibility"_s, u"Accessibility"_s,
         u"Insert directly through macOS Accessibility when the target field supports it."_s},
        {InsertionMethod::clipboardPaste, u"clipboardPaste"_s, u"Clipboard Paste"_s,
         u"Paste through the clipboard while restoring your previous clipboard afterward."_s},
        {InsertionMethod::copiedOnly, u"copiedOnly"_s, u"Copy Only"_s,
         u"Copy the result and leave insertion to you."_s},
    };
    ASSERT_EQ(std::size(rows), allInsertionMethods.size());
    for (size_t index = 0; index < std::size(rows); ++index) {
        const auto &[method, raw, name, line] = rows[index];
        EXPECT_EQ(allInsertionMethods[index], method);
        EXPECT_EQ(rawValue(method), raw);
        EXPECT_EQ(title(method), name);
        EXPECT_EQ(description(method), line);
        EXPECT_EQ(insertionMethodFromRawValue(raw), method);
    }
}

TEST(InsertionMethod, doesNotComeFromAnUnknownText)
{
    for (const QString &text : {u""_s, u"Hybrid"_s, u"hybrid "_s, u"paste"_s})
        EXPECT_EQ(insertionMethodFromRawValue(text), std::nullopt) << qPrintable(text);
}

TEST(InsertionFailureReason, isNamedLikeItsCase)
{
    const std::pair<InsertionFailureReason, QString> rows[] = {
        {InsertionFailureReason::noFocusedTarget, u"noFocusedTarget"_s},
        {InsertionFailureReason::accessibilityUnavailable, u"accessibilityUnavailable"_s},
        {InsertionFailureReason::postEventUnavailable, u"postEventUnavailable"_s},
        {InsertionFailureReason::unsupportedTarget, u"unsupportedTarget"_s},
        {InsertionFailureReason::secureField, u"secureField"_s},
        {InsertionFailureReason::appReactivationFailed, u"appReactivationFailed"_s},
        {InsertionFailureReason::notConfigured, u"notConfigured"_s},
        {InsertionFailureReason::unknown, u"unknown"_s},
    };
    for (const auto &[reason, raw] : rows)
        EXPECT_EQ(rawValue(reason), raw);
}

TEST(InsertionResult, hasAReasonOrAMethodNeverBoth)
{
    const auto success = InsertionResult::success(InsertionMethod::clipboardPaste, u"Inserted."_s);
    EXPECT_TRUE(success.succeeded);
    EXPECT_EQ(success.method, InsertionMethod::clipboardPaste);
    EXPECT_EQ(success.failureReason, std::nullopt);
    const auto failure = InsertionResult::failure(InsertionFailureReason::secureField, u"No."_s);
    EXPECT_FALSE(failure.succeeded);
    EXPECT_EQ(failure.method, std::nullopt);
    EXPECT_EQ(failure.failureReason, InsertionFailureReason::secureField);
}
