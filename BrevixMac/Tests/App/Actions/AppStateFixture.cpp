// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppStateFixture.h"

namespace {

InMemoryAccessibilityTree::Field textFieldOf(qint64 pid)
{
    return {.pid = pid, .role = AX::textField, .value = QString(), .selectedRange = TextRange{0, 0}};
}

} // namespace

AppStateFixture::AppStateFixture()
{
    workspace.addApplication(ownPid, QStringLiteral("Brevix"), bundleIdentifier);
    workspace.addApplication(editorPid, QStringLiteral("Editor"), QStringLiteral("org.example.Editor"));
    workspace.addApplication(browserPid, QStringLiteral("Browser"));
    tree.fields = {{ownField, textFieldOf(ownPid)},
                   {editorField, textFieldOf(editorPid)},
                   {browserField, textFieldOf(browserPid)}};
    tree.focusedPathByApplication = {
        {ownPid, ownField}, {editorPid, editorField}, {browserPid, browserField}};
}

AppStateFixture::~AppStateFixture() = default;

AppState &AppStateFixture::start()
{
    AppBench::start();
    state->presentPaletteAction = [this] { ++presented; };
    state->dismissPaletteAction = [this] { ++dismissed; };
    return *state;
}

AppState &AppStateFixture::startWithLibrary()
{
    storeSession();
    start();
    EXPECT_TRUE(waitForLibrary());
    return *state;
}

void AppStateFixture::focus(const QString &path)
{
    tree.focusedPath = path.isEmpty() ? std::nullopt : std::optional(path);
}

void AppStateFixture::switchTo(qint64 pid)
{
    focus(tree.focusedPathByApplication.value(pid));
    workspace.bringToFront(pid);
}

void AppStateFixture::openPicker(bool allowCachedTarget)
{
    const int before = presented;
    state->handlePaletteInvocation(allowCachedTarget);
    EXPECT_TRUE(waitUntil([this, before] { return presented > before; }));
}

InsertionResult AppStateFixture::resultOf(const std::function<void()> &action)
{
    state->setLastInsertionResult({});
    action();
    EXPECT_TRUE(waitUntil([this] { return !state->isInserting() && state->lastInsertionResult(); }));
    return state->lastInsertionResult().value_or(InsertionResult{});
}

void AppStateFixture::refuseInsertion()
{
    for (auto &field : tree.fields)
        field.isSettable = false;
    keyEvents.allowed = false;
    state->permissions().refresh();
}

PromptItem AppStateFixture::prompt(const QString &id, const QString &text, const QString &categoryID)
{
    return {.id = id, .title = u"Title of " + id, .text = text, .categoryID = categoryID};
}

SkillItem AppStateFixture::skill(const QString &id, const QString &text)
{
    return {.id = id, .title = u"Title of " + id, .text = text};
}
