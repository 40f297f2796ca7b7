// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppStateFixture.h"

namespace {

InMemoryAccessibilityTree::Field textFieldOf(qint64 pid)
{
    return {.pid = pid, .role = AX::textField, .value = QString(), .selectedRange = TextRange{0, 0}};
}

AppConfiguration completeConfiguration()
{
    AppConfiguration configuration = AppConfiguration::fallback();
    configuration.firebase.apiKey = QStringLiteral("key");
    configuration.firebase.projectID = QStringLiteral("project");
    configuration.firebase.googleAppID = QStringLiteral("1:1:app");
    configuration.firebase.clientID = QStringLiteral("client");
    configuration.firebase.reversedClientID = QStringLiteral("tneilc");
    return configuration;
}

} // namespace

AppStateFixture::AppStateFixture()
    : configuration(completeConfiguration())
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
    state.reset(); // there is one at a time
    state = std::make_unique<AppState>(AppEnvironment{.configuration = configuration,
                                                      .endpoints = CloudEndpoints::local(server.origin()),
                                                      .defaults = defaults,
                                                      .http = http,
                                                      .accessibilityTree = tree,
                                                      .pasteboard = pasteboard,
                                                      .workspace = workspace,
                                                      .keyEvents = keyEvents,
                                                      .eventMonitor = eventMonitor,
                                                      .hotKeys = hotKeys,
                                                      .webAuthenticationSession = webAuthenticationSession,
                                                      .keyCapture = keyCapture,
                                                      .statusItem = statusItem,
                                                      .loginItem = loginItem,
                                                      .bundleIdentifier = bundleIdentifier,
                                                      .processIdentifier = ownPid,
                                                      .now = [this] { return time; }});
    state->presentPaletteAction = [this] { ++presented; };
    state->dismissPaletteAction = [this] { ++dismissed; };
    return *state;
}

void AppStateFixture::storeSession()
{
    const StoredAuthSession session{.uid = QStringLiteral("user"),
                                    .firebaseIDToken = QStringLiteral("token"),
                                    .refreshToken = QStringLiteral("refresh"),
                                    .expiresAt = time.addDays(1)};
    defaults.setData(AuthService::storageKey, session.toJson());
}

AppState &AppStateFixture::startWithLibrary()
{
    storeSession();
    start();
    EXPECT_TRUE(
        waitUntil([this] { return state->libraryStore().syncState().kind == SyncState::Kind::synced; }));
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
