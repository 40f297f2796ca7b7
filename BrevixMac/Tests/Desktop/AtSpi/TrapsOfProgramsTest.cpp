// SPDX-License-Identifier: GPL-3.0-or-later
// Fields that must not be written directly, and targets that hang, die or come and go.
#include "AccessibleFields.h"

#include "Support/Waiting.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTimer>

namespace {

const QString kindPlain = QStringLiteral("plain");

class Traps : public AccessibleFields
{
protected:
    AccessibilityElement systemFocus()
    {
        const auto value = await(tree.attribute(tree.systemWideElement(), AX::focusedUIElement));
        return value ? std::get<AccessibilityElement>(*value) : AccessibilityElement();
    }

    WriteOutcome write(const AccessibilityElement &element, const QString &value)
    {
        return await(tree.setAttribute(element, AX::value, value));
    }

    void expectRefusal(const AccessibilityElement &element)
    {
        EXPECT_FALSE(await(tree.isAttributeSettable(element, AX::value)));
        EXPECT_EQ(await(tree.setAttribute(element, AX::value, QStringLiteral("must not arrive"))),
                  WriteOutcome::refused);
    }
};

/// Runs @p operation while a timer ticks, and gives the longest time the event loop stood still.
template <typename Operation>
std::chrono::milliseconds longestStandstill(Operation operation)
{
    QElapsedTimer sinceTick;
    qint64 longest = 0;
    QTimer ticker;
    QObject::connect(&ticker, &QTimer::timeout, &ticker,
                     [&] { longest = std::max(longest, sinceTick.restart()); });
    ticker.start(1);
    sinceTick.start();
    operation();
    return std::chrono::milliseconds(std::max(longest, sinceTick.elapsed()));
}

} // namespace

TEST_F(Traps, aReadOnlyFieldIsNotWritten)
{
    const Target target(QStringLiteral(QT_FIELDS), {QStringLiteral("readonly"), QStringLiteral("kept")});
    const auto element = focusedElement(target.pid(), AX::textArea);
    EXPECT_EQ(textAttribute(element, AX::value), QStringLiteral("kept"));
    expectRefusal(element);
    EXPECT_EQ(target.text(), QStringLiteral("kept"));
}

TEST_F(Traps, aSingleLineOfQtIsLeftToThePaste)
{
    const Target target(QStringLiteral(QT_FIELDS), {QStringLiteral("line"), QStringLiteral("kept")});
    const auto element = focusedElement(target.pid(), AX::textField);
    EXPECT_EQ(textAttribute(element, AX::subrole), std::nullopt);
    expectRefusal(element);
    EXPECT_EQ(target.text(), QStringLiteral("kept"));
}

TEST_F(Traps, aPasswordFieldOfQtIsSecureAndUnread)
{
    const Target target(QStringLiteral(QT_FIELDS), {QStringLiteral("password"), QStringLiteral("secret")});
    const auto element = focusedElement(target.pid(), AX::textField);
    EXPECT_EQ(textAttribute(element, AX::subrole), AX::secureTextField);
    EXPECT_EQ(textAttribute(element, AX::value), std::nullopt);
    expectRefusal(element);
}

TEST_F(Traps, aPasswordFieldOfGtkIsSecureAndUnread)
{
    if (!isInstalled(QStringLiteral("zenity")))
        GTEST_SKIP() << "zenity is not installed";
    const Target target(QStringLiteral("zenity"), {QStringLiteral("--password")});
    const auto element = focusedElement(target.pid(), AX::textField);
    EXPECT_EQ(textAttribute(element, AX::subrole), AX::secureTextField);
    EXPECT_EQ(textAttribute(element, AX::value), std::nullopt);
    EXPECT_EQ(range(element), std::nullopt);
    expectRefusal(element);
    EXPECT_EQ(target.text(QStringLiteral("password text")), QString());
}

// A GTK 3 entry holds 64 KiB at most and drops the rest without a word.
TEST_F(Traps, aFieldThatIsTooShortForTheTextKeepsItsOldText)
{
    if (!isInstalled(QStringLiteral("zenity")))
        GTEST_SKIP() << "zenity is not installed";
    const Target target(QStringLiteral("zenity"),
                        {QStringLiteral("--entry"), QStringLiteral("--entry-text=begin end")});
    const auto element = focusedElement(target.pid(), AX::textField);
    ASSERT_TRUE(select(element, {6, 0}));
    EXPECT_FALSE(insert(element, QStringLiteral("0123456789").repeated(10000)));
    EXPECT_EQ(target.text(), QStringLiteral("begin end"));
}

TEST_F(Traps, aTerminalIsKnownAndLeftToThePaste)
{
    if (!isInstalled(QStringLiteral("xfce4-terminal")))
        GTEST_SKIP() << "xfce4-terminal is not installed";
    const Target target(QStringLiteral("xfce4-terminal"),
                        {QStringLiteral("--disable-server"), QStringLiteral("--command=cat")});
    const auto element = focusedElement(target.pid(), AX::textArea);
    EXPECT_EQ(textAttribute(element, AX::subrole), AX::terminal);
    expectRefusal(element);
}

TEST_F(Traps, aFieldOfChromiumIsReadAndLeftToThePaste)
{
    if (!isInstalled(QStringLiteral("chromium")))
        GTEST_SKIP() << "chromium is not installed";
    QTemporaryDir folder;
    QFile page(folder.filePath(QStringLiteral("page.html")));
    ASSERT_TRUE(page.open(QIODevice::WriteOnly));
    page.write("<!doctype html><meta charset=utf-8><textarea autofocus rows=5>in 😀 the page</textarea>");
    page.close();
    const Target target(QStringLiteral("chromium"),
                        {QStringLiteral("--no-sandbox"), QStringLiteral("--force-renderer-accessibility"),
                         QStringLiteral("--disable-gpu"), QStringLiteral("--disable-quic"),
                         QStringLiteral("--no-first-run"), QStringLiteral("--disable-background-networking"),
                         QStringLiteral("--disable-component-update"), QStringLiteral("--disable-sync"),
                         QStringLiteral("--user-data-dir=") + folder.filePath(QStringLiteral("profile")),
                         QStringLiteral("file://") + page.fileName()});
    const auto element = focusedElement(target.pid(), AX::textArea);
    EXPECT_EQ(textAttribute(element, AX::value), QStringLiteral("in 😀 the page"));
    EXPECT_TRUE(select(element, {4, 0}));
    // The renderer moves the caret after the reply.
    EXPECT_TRUE(waitUntil([&] { return range(element) == TextRange{4, 0}; }));
    expectRefusal(element);
    EXPECT_EQ(textAttribute(element, AX::value), QStringLiteral("in 😀 the page"));
}

TEST_F(Traps, aFieldThatCutsWhatItIsGivenKeepsItsOldText)
{
    const Target target(QStringLiteral(QT_FIELDS), {QStringLiteral("short"), QStringLiteral("0123456789")});
    const auto element = focusedElement(target.pid(), AX::textArea);
    ASSERT_TRUE(select(element, {5, 0}));
    EXPECT_FALSE(insert(element, QStringLiteral("abcdef")));
    EXPECT_EQ(target.text(), QStringLiteral("0123456789"));
}

TEST_F(Traps, aStoppedTargetCostsOneDeadlineAndTheEventLoopTurns)
{
    Target target(QStringLiteral(QT_FIELDS), {kindPlain, QStringLiteral("kept")});
    const auto element = focusedElement(target.pid(), AX::textArea);
    target.stop();
    QElapsedTimer timer;
    timer.start();
    const auto standstill = longestStandstill([&] {
        EXPECT_FALSE(await(tree.attribute(tree.applicationElement(target.pid()), AX::focusedUIElement)));
    });
    EXPECT_LT(timer.elapsed(), 600);
    EXPECT_LT(standstill.count(), 100);
    std::printf("stopped target: capture gave up after %lld ms, longest standstill %lld ms\n",
                static_cast<long long>(timer.elapsed()), static_cast<long long>(standstill.count()));
    timer.restart();
    EXPECT_FALSE(insert(element, QStringLiteral("late")));
    EXPECT_FALSE(textAttribute(element, AX::role));
    EXPECT_LT(timer.elapsed(), 100) << "a slow program must not cost a deadline for every question";
    target.resume();
    EXPECT_TRUE(waitUntil([&] { return textAttribute(element, AX::role) == AX::textArea; },
                          std::chrono::seconds(10)));
    EXPECT_EQ(target.text(), QStringLiteral("kept"));
}

// What was not heard of one write used to be told of the next one as well, although nothing of it was sent.
TEST_F(Traps, onlyAWriteThatWasSentAndNotAnsweredHasAnUnknownOutcome)
{
    Target target(QStringLiteral(QT_FIELDS), {QStringLiteral("stopping"), QStringLiteral("kept")});
    const auto element = focusedElement(target.pid(), AX::textArea);
    EXPECT_EQ(write(element, QStringLiteral("kept, more")), WriteOutcome::unknown);
    EXPECT_FALSE(await(tree.isAttributeSettable(element, AX::value)));
    EXPECT_EQ(write(element, QStringLiteral("kept, other")), WriteOutcome::refused);
    target.resume();
    EXPECT_TRUE(waitUntil([&] { return textAttribute(element, AX::value) == QStringLiteral("kept, more"); },
                          std::chrono::seconds(10)));
    EXPECT_EQ(write(element, QStringLiteral("kept, more, most")), WriteOutcome::done);
    EXPECT_EQ(target.text(), QStringLiteral("kept, more, most"));
}

TEST_F(Traps, aProgramThatEndsWithAWriteUnansweredTakesItWithIt)
{
    Target target(QStringLiteral(QT_FIELDS), {QStringLiteral("stopping"), QStringLiteral("kept")});
    const auto element = focusedElement(target.pid(), AX::textArea);
    auto unanswered = tree.setAttribute(element, AX::value, QStringLiteral("kept, more"));
    ASSERT_TRUE(waitUntil([&] { return target.isStopped(); }));
    target.kill();
    EXPECT_EQ(await(std::move(unanswered)), WriteOutcome::refused);
    EXPECT_EQ(write(element, QStringLiteral("kept, other")), WriteOutcome::refused);
}

TEST_F(Traps, aTargetThatDiesBetweenCaptureAndInsertionGivesNothing)
{
    Target target(QStringLiteral(QT_FIELDS), {kindPlain, QStringLiteral("text")});
    const auto element = focusedElement(target.pid(), AX::textArea);
    ASSERT_EQ(textAttribute(element, AX::value), QStringLiteral("text"));
    const qint64 pid = target.pid();
    target.kill();
    EXPECT_EQ(await(tree.setAttribute(element, AX::value, QStringLiteral("more text"))),
              WriteOutcome::refused);
    EXPECT_FALSE(await(tree.isAttributeSettable(element, AX::value)));
    EXPECT_FALSE(await(tree.attribute(element, AX::role)));
    EXPECT_TRUE(waitUntil(
        [&] { return !await(tree.attribute(tree.applicationElement(pid), AX::focusedUIElement)); }));
}

TEST_F(Traps, anElementOfAnotherKindOrWithAnImpossibleNameGivesNothing)
{
    const AccessibilityElement foreign{.kind = AccessibilityElement::Kind::node,
                                       .owner = QStringLiteral("memory"),
                                       .path = QStringLiteral("field")};
    for (const auto &element : {AccessibilityElement{}, foreign, tree.systemWideElement()}) {
        EXPECT_FALSE(await(tree.attribute(element, AX::role)));
        EXPECT_FALSE(await(tree.attribute(element, AX::value)));
        EXPECT_FALSE(await(tree.processIdentifier(element)));
        expectRefusal(element);
    }
    EXPECT_EQ(textAttribute(tree.applicationElement(1), AX::role), AX::application);
    EXPECT_EQ(await(tree.processIdentifier(tree.applicationElement(77))), 77);
}

// Qt tells that its window has lost the focus only some 100 ms later, and nothing at all when the focus is
// back by then; so the first program is given the time to notice that it was left.
TEST_F(Traps, theSystemsFocusFollowsTheFrontWindow)
{
    const Target first(QStringLiteral(QT_FIELDS), {kindPlain, QStringLiteral("first")});
    const auto firstField = focusedElement(first.pid(), AX::textArea);
    const Target second(QStringLiteral(QT_FIELDS), {kindPlain, QStringLiteral("second")});
    const auto secondField = focusedElement(second.pid(), AX::textArea);
    EXPECT_TRUE(waitUntil([&] { return systemFocus() == secondField; }));
    EXPECT_TRUE(waitUntil([&] { return !first.witness().value(QStringLiteral("isFocused")).toBool(); }));
    bringToFront(first.pid());
    EXPECT_TRUE(waitUntil([&] { return systemFocus() == firstField; }));
}

TEST_F(Traps, aWindowThatIsLeftForAMomentIsInFrontAgainByTheWindowSystemsWord)
{
    const Target first(QStringLiteral(QT_FIELDS), {kindPlain, QStringLiteral("first")});
    const auto firstField = focusedElement(first.pid(), AX::textArea);
    const Target second(QStringLiteral(QT_FIELDS), {kindPlain, QStringLiteral("second")});
    const auto secondField = focusedElement(second.pid(), AX::textArea);
    tree.applicationActivated(second.pid());
    EXPECT_EQ(systemFocus(), secondField);
    bringToFront(first.pid());
    tree.applicationActivated(first.pid());
    EXPECT_EQ(systemFocus(), firstField);
}

TEST_F(Traps, aFieldKnowsWhetherItHasTheFocusWithinItsProgram)
{
    const Target two(QStringLiteral(QT_FIELDS), {QStringLiteral("two"), QStringLiteral("first")});
    const auto first = focusedElement(two.pid(), AX::textField);
    EXPECT_EQ(await(tree.isFocused(first)), true);
    // Leaving its window makes this program give the focus to its second field.
    const Target other(QStringLiteral(QT_FIELDS), {kindPlain, QStringLiteral("other")});
    focusedElement(other.pid(), AX::textArea);
    // It is given the time to notice, as above.
    EXPECT_TRUE(waitUntil([&] { return !two.witness().value(QStringLiteral("isFocused")).toBool(); }));
    bringToFront(two.pid());
    EXPECT_TRUE(waitUntil([&] { return await(tree.isFocused(first)) == false; }));
    const auto second = focusedElement(two.pid(), AX::textField);
    EXPECT_NE(second, first);
    EXPECT_EQ(await(tree.isFocused(second)), true);
}

TEST_F(Traps, aFieldThatIsGoneHasNoFocusAndAHungProgramDoesNotTell)
{
    Target target(QStringLiteral(QT_FIELDS), {kindPlain, QStringLiteral("text")});
    const auto element = focusedElement(target.pid(), AX::textArea);
    EXPECT_EQ(await(tree.isFocused(element)), true);
    auto gone = element;
    gone.path += QStringLiteral("99999");
    EXPECT_EQ(await(tree.isFocused(gone)), false);
    EXPECT_EQ(await(tree.isFocused(tree.applicationElement(target.pid()))), std::nullopt);
    target.stop();
    EXPECT_EQ(await(tree.isFocused(element)), std::nullopt);
    target.resume();
}

TEST_F(Traps, aFieldThatUndoesWhatItsUserDidNotTypeIsLeftAsItWas)
{
    const Target target(QStringLiteral(QT_FIELDS), {QStringLiteral("resetting"), QStringLiteral("own text")});
    const auto element = focusedElement(target.pid(), AX::textArea);
    EXPECT_FALSE(insert(element, QStringLiteral("foreign ")));
    EXPECT_EQ(target.text(), QStringLiteral("own text"));
}

TEST_F(Traps, aFieldThatAcceptsAnEditAndDoesNotCarryItOutIsNotTakenForWritten)
{
    const Target target(QStringLiteral(QT_FIELDS), {QStringLiteral("deaf"), QStringLiteral("own text")});
    const auto element = focusedElement(target.pid(), AX::textArea);
    ASSERT_TRUE(await(tree.isAttributeSettable(element, AX::value))) << "the pretence is not convincing";
    EXPECT_EQ(await(tree.setAttribute(element, AX::value, QStringLiteral("foreign own text"))),
              WriteOutcome::refused)
        << "the paste must take over";
    EXPECT_EQ(target.text(), QStringLiteral("own text"));
}

TEST_F(Traps, aFieldThatIsNoLongerOnScreenIsNotWritten)
{
    const Target two(QStringLiteral(QT_FIELDS), {QStringLiteral("hiding"), QStringLiteral("first")});
    const auto field = focusedElement(two.pid(), AX::textArea);
    const Target other(QStringLiteral(QT_FIELDS), {kindPlain, QStringLiteral("other")});
    focusedElement(other.pid(), AX::textArea);
    EXPECT_TRUE(waitUntil([&] { return !await(tree.isAttributeSettable(field, AX::value)); }));
    expectRefusal(field);
}

TEST_F(Traps, aProgramWithoutAccessibilityInFrontLeavesNothingFocused)
{
    const Target field(QStringLiteral(QT_FIELDS), {kindPlain, QStringLiteral("behind")});
    const auto element = focusedElement(field.pid(), AX::textArea);
    tree.applicationActivated(QCoreApplication::applicationPid() + 100000);
    EXPECT_FALSE(await(tree.attribute(tree.systemWideElement(), AX::focusedUIElement)));
    tree.applicationActivated(field.pid());
    const auto value = await(tree.attribute(tree.systemWideElement(), AX::focusedUIElement));
    ASSERT_TRUE(value);
    EXPECT_EQ(std::get<AccessibilityElement>(*value), element);
}

TEST_F(Traps, aTreeThatComesLaterFindsTheFieldThatHasTheFocusAlready)
{
    const QString plain = kindPlain;
    const Target field(QStringLiteral(QT_FIELDS), {plain, QStringLiteral("early")});
    const auto element = focusedElement(field.pid(), AX::textArea);
    AtSpiAccessibilityTree later;
    ASSERT_TRUE(waitUntil([&] { return later.isProcessTrusted(); }));
    const auto value = await(later.attribute(later.applicationElement(field.pid()), AX::focusedUIElement));
    ASSERT_TRUE(value);
    EXPECT_EQ(std::get<AccessibilityElement>(*value), element);
}

TEST_F(Traps, aTreeThatEndsWithQuestionsOpenLeavesNoTrace)
{
    Target target(QStringLiteral(QT_FIELDS), {kindPlain, QStringLiteral("text")});
    const auto element = focusedElement(target.pid(), AX::textArea);
    auto brief = std::make_unique<AtSpiAccessibilityTree>();
    ASSERT_TRUE(waitUntil([&] { return brief->isProcessTrusted(); }));
    target.stop();
    auto question = brief->attribute(element, AX::value);
    auto write = brief->setAttribute(element, AX::value, QStringLiteral("other"));
    brief.reset();
    EXPECT_FALSE(await(std::move(question)));
    EXPECT_EQ(await(std::move(write)), WriteOutcome::refused);
    target.resume();
    EXPECT_EQ(target.text(), QStringLiteral("text"));
}
