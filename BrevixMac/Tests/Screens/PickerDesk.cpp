// SPDX-License-Identifier: GPL-3.0-or-later
#include "PickerDesk.h"

#include "Support/Waiting.h"

#include <stdexcept>

PickerDesk::PickerDesk()
{
    email = QStringLiteral("ann@example.com");
    workspace.addApplication(editorPid, QStringLiteral("Text Editor"), QStringLiteral("org.example.Editor"));
    workspace.frontmost = editorPid;
    tree.fields.insert(QStringLiteral("/field"), {.pid = editorPid,
                                                  .role = QStringLiteral("AXTextArea"),
                                                  .subrole = {},
                                                  .value = QString(),
                                                  .selectedRange = TextRange{},
                                                  .isSettable = true,
                                                  .acceptsWrites = true});
    tree.focusedPath = QStringLiteral("/field");
}

void PickerDesk::addSampleLibrary()
{
    server.addCategory(QStringLiteral("outreach"), QStringLiteral("Outreach"), QStringLiteral("#8b5cf6"));
    server.addCategory(QStringLiteral("hiring"), QStringLiteral("Hiring"), QStringLiteral("#10b981"));
    server.addCategory(QStringLiteral("engineering"), QStringLiteral("Engineering"),
                       QStringLiteral("#3b82f6"));
    server.addPrompt(
        QStringLiteral("cold"), QStringLiteral("Cold outreach follow-up"),
        QStringLiteral(
            "Hi {{name}},\nfollowing up on my note about the {{topic}}. Would a short call this week "
            "be of use? I can show what changed since we last spoke.\n\nBest,\n{{your_name}}"),
        QStringLiteral("outreach"));
    server.addPrompt(
        QStringLiteral("interview"), QStringLiteral("Follow-up after interview"),
        QStringLiteral("Thank you for the conversation today. I especially liked how the team works."),
        QStringLiteral("hiring"));
    server.addPrompt(
        QStringLiteral("notes"), QStringLiteral("Meeting notes to actions"),
        QStringLiteral(
            "Turn these notes into action items, each with an owner: {{notes}}. Follow the order."),
        QStringLiteral("engineering"));
    server.addPrompt(QStringLiteral("decline"), QStringLiteral("Kind decline"),
                     QStringLiteral("Thank you for thinking of me. I cannot take this on now."));
    server.addSkill(
        QStringLiteral("reviewer"), QStringLiteral("Senior code reviewer"),
        QStringLiteral(
            "You review changes for correctness first, then for clarity. Follow the project's style."));
}

void PickerDesk::start()
{
    if (!isConfigured)
        configuration = AppConfiguration::fallback();
    if (isSignedIn)
        storeSession();
    AppBench::start();
    if (isSignedIn && waitsForLibrary && !waitForLibrary())
        throw std::runtime_error("the library did not arrive");
}

void PickerDesk::press()
{
    bool isPresented = false;
    const auto present = appState->presentPaletteAction;
    appState->presentPaletteAction = [&] {
        isPresented = true;
        if (present)
            present();
    };
    appState->handleHotkey();
    const bool wasPresented = waitUntil([&] { return isPresented; });
    appState->presentPaletteAction = present;
    if (!wasPresented)
        throw std::runtime_error("the picker was not presented");
}
