// SPDX-License-Identifier: GPL-3.0-or-later
#include "InsertionServiceFixture.h"

#include <QTimer>

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

} // namespace

// The steps of a paste

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
