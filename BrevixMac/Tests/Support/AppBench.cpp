// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppBench.h"

#include "Waiting.h"

namespace {

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

AppBench::AppBench()
    : configuration(completeConfiguration())
{
}

AppBench::~AppBench() = default;

void AppBench::storeSession(const QString &userID, const QString &firebaseIDToken)
{
    const StoredAuthSession session{.uid = userID,
                                    .email = email,
                                    .displayName = displayName,
                                    .photoURLString = {},
                                    .firebaseIDToken = firebaseIDToken,
                                    .refreshToken = QStringLiteral("refresh"),
                                    .expiresAt = time.addDays(1)};
    defaults.setData(AuthService::storageKey, session.toJson());
}

AppState &AppBench::start()
{
    appState.reset(); // there is one at a time
    appState = std::make_unique<AppState>(AppEnvironment{.configuration = configuration,
                                                         .endpoints = endpoints,
                                                         .defaults = defaults,
                                                         .http = http,
                                                         .accessibilityTree = tree,
                                                         .pasteboard = pasteboard,
                                                         .workspace = workspace,
                                                         .keyEvents = keyEvents,
                                                         .eventMonitor = eventMonitor,
                                                         .hotKeys = hotKeys,
                                                         .webAuthenticationSession = webAuthenticationSession,
                                                         .webBrowser = webBrowser,
                                                         .keyCapture = keyCapture,
                                                         .statusItem = statusItem,
                                                         .loginItem = loginItem,
                                                         .sessionProbe = sessionProbe,
                                                         .bundleIdentifier = bundleIdentifier,
                                                         .processIdentifier = ownPid,
                                                         .now = [this] { return time; }});
    return *appState;
}

bool AppBench::waitForLibrary()
{
    return waitUntil([this] { return appState->libraryStore().syncState().kind == SyncState::Kind::synced; });
}
