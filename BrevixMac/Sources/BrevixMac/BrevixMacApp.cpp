// SPDX-License-Identifier: GPL-3.0-or-later
#include "BrevixMacApp.h"

#include "AccessibleRoles.h"
#include "AppDelegate.h"
#include "AppState.h"
#include "AppWindows.h"
#include "Doctor.h"
#include "HeapUpkeep.h"
#include "InstanceService.h"
#include "MenuBarController.h"

#include "Desktop/DesktopSession.h"
#include "Desktop/Freedesktop/AutostartEntry.h"
#include "Desktop/WebAuthenticationSession.h"
#include "Foundation/HttpClient.h"
#include "Foundation/UserDefaults.h"
#include "LocalCloud/LocalCloud.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDebug>
#include <QFileInfo>
#include <QProcessEnvironment>
#include <QStandardPaths>
#include <QTimer>

namespace {

/// What a login starts: this very program, in the mode it runs in.
AutostartEntry::Application loginApplication(BrevixMacApp::Library library)
{
    const bool isLocal = library == BrevixMacApp::Library::local;
    return {.id = BrevixMacApp::bundleIdentifier(),
            .name = QStringLiteral("Brevix"),
            .comment = QStringLiteral("Put your prompts into any text field"),
            .program = QCoreApplication::applicationFilePath(),
            .arguments = isLocal ? QStringList{QStringLiteral("--local")} : QStringList()};
}

/// Answers @p call with what @p doctor finds.
void reportTo(const QDBusMessage &call, Doctor &doctor)
{
    const auto reply = [&doctor, call] {
        const QString report = QString::fromUtf8(doctor.report().toJson());
        QDBusConnection::sessionBus().send(call.createReply(report));
    };
    QObject::connect(&doctor, &Doctor::examined, &doctor, reply, Qt::SingleShotConnection);
    doctor.examine();
}

/// Set while the user of the local mode is signed out, so that the next start does not sign them in unasked.
const QString localSignedOutKey = QStringLiteral("localSignedOut");

AppConfiguration localConfiguration(const QUrl &origin)
{
    AppConfiguration configuration = AppConfiguration::fallback();
    configuration.firebase.apiKey = QStringLiteral("local-api-key");
    configuration.firebase.projectID = QStringLiteral("brevix-local");
    configuration.firebase.googleAppID = QStringLiteral("1:1:linux:local");
    configuration.firebase.clientID = QStringLiteral("brevix-local-client");
    configuration.firebase.reversedClientID = QStringLiteral("app.brevix.local");
    configuration.logicalLibraryAppID = QStringLiteral("brevix-app-local");
    configuration.publicShareBaseURL = origin;
    return configuration;
}

LocalCloud::Options localCloudOptions()
{
    const AppConfiguration configuration = localConfiguration({});
    LocalCloud::Options options;
    options.dataFolder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                         QStringLiteral("/brevix/cloud");
    options.projectID = configuration.firebase.projectID;
    options.apiKey = configuration.firebase.apiKey;
    options.libraryAppID = configuration.logicalLibraryAppID;
    options.clientID = configuration.firebase.clientID;
    options.redirectScheme = configuration.firebase.reversedClientID;
    QString problem;
    options.model = Cloud::ModelOptions::fromEnvironment(QProcessEnvironment::systemEnvironment(), problem);
    if (!problem.isEmpty())
        qWarning().noquote() << "Prompts are optimized by rules:" << problem;
    return options;
}

StoredAuthSession storedSession(const LocalCloud::Session &session)
{
    return {.uid = session.uid,
            .email = session.email,
            .displayName = session.displayName,
            .photoURLString = {},
            .firebaseIDToken = session.idToken,
            .refreshToken = session.refreshToken,
            .expiresAt = session.expiresAt};
}

} // namespace

struct BrevixMacApp::Parts
{
    explicit Parts(Library library)
        : isFirstStart(!QFileInfo::exists(UserDefaults::pathForDomain(defaultsDomain(library))))
        , defaults(UserDefaults::pathForDomain(defaultsDomain(library)))
        , draftFolder(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + u'/' +
                      defaultsDomain(library) + u"/drafts")
        , loginItem(loginApplication(library))
    {
    }

    bool isFirstStart;
    std::optional<QString> problem;
    // In the order of dependence: each may use those above it.
    UserDefaults defaults;
    QString draftFolder;
    HttpClient http;
    DesktopSession desktop;
    AutostartEntry loginItem;
    std::unique_ptr<LocalCloud> localCloud;
    std::unique_ptr<AppState> appState;
    std::unique_ptr<HeapUpkeep> heapUpkeep;
    std::unique_ptr<AppDelegate> delegate;
    std::unique_ptr<MenuBarController> menuBar;
    std::unique_ptr<AppWindows> windows;
    std::unique_ptr<QObject> waiting; ///< for the local library to be open; what is asked for meanwhile:
    std::function<void()> asked;

    void makeState(const AppConfiguration &configuration, const CloudEndpoints &endpoints)
    {
        appState = std::make_unique<AppState>(AppEnvironment{
            .configuration = configuration,
            .endpoints = endpoints,
            .defaults = defaults,
            .http = http,
            .accessibilityTree = desktop.accessibilityTree(),
            .pasteboard = desktop.pasteboard(),
            .workspace = desktop.workspace(),
            .keyEvents = desktop.keyEvents(),
            .eventMonitor = desktop.eventMonitor(),
            .hotKeys = desktop.hotKeys(),
            .webAuthenticationSession = desktop.webAuthenticationSession(),
            .webBrowser = desktop.webBrowser(),
            .keyCapture = desktop.keyCapture(),
            .statusItem = desktop.statusItem(),
            .loginItem = loginItem,
            .sessionProbe = desktop.probe(),
            .bundleIdentifier = bundleIdentifier(),
            .processIdentifier = QCoreApplication::applicationPid(),
            .draftFolder = draftFolder,
        });
        heapUpkeep = std::make_unique<HeapUpkeep>(*appState);
    }

    /// The library server that BREVIX_SERVER names, else the real services.
    void useCloud(const QProcessEnvironment &environment)
    {
        const QUrl origin(environment.value(QStringLiteral("BREVIX_SERVER")), QUrl::StrictMode);
        const auto server = CloudEndpoints::server(origin);
        if (server)
            makeState(localConfiguration(origin), *server);
        else if (environment.value(QStringLiteral("BREVIX_SERVER")).isEmpty())
            makeState(AppConfiguration::load(), CloudEndpoints::production(environment));
        else
            problem = QStringLiteral("BREVIX_SERVER must be like https://library.example.org");
    }

    bool startLocalCloud()
    {
        localCloud = std::make_unique<LocalCloud>(localCloudOptions());
        return localCloud->start() || failLocally();
    }

    bool failLocally()
    {
        problem = QStringLiteral("the local library cannot be opened: ") + localCloud->errorString();
        return false;
    }

    /// Takes up the local library, whose database is open.
    bool useLocalCloud()
    {
        if (!defaults.boolean(localSignedOutKey).value_or(false) && !signInLocally())
            return false;
        const QUrl origin = localCloud->origin();
        makeState(localConfiguration(origin), CloudEndpoints::local(origin));
        followLocalSignIn();
        return true;
    }

    /// Leaves a session of the local user where a sign-in would have left it.
    bool signInLocally()
    {
        const LocalCloud::Session session = localCloud->issueLocalSession();
        if (session.idToken.isEmpty())
            return failLocally();
        const auto json = defaults.data(AuthService::storageKey);
        const auto former = json ? StoredAuthSession::fromJson(*json) : std::nullopt;
        if (!former || former->uid == session.uid) // somebody else signed in on the local sign-in page stays
            defaults.setData(AuthService::storageKey, storedSession(session).toJson());
        return true;
    }

    /// Remembers the last thing that was asked for while there is nobody yet to do it.
    void holdBack(InstanceService &instance)
    {
        waiting = std::make_unique<QObject>();
        for (const auto request : {&InstanceService::toggleRequested, &InstanceService::paletteRequested,
                                   &InstanceService::showRequested, &InstanceService::settingsRequested})
            QObject::connect(&instance, request, waiting.get(), [this, &instance, request] {
                asked = [&instance, request] { (instance.*request)(); };
            });
    }

    void letThrough()
    {
        waiting.reset();
        if (asked)
            asked();
    }

    /// Remembers across starts whether the local user is signed in.
    void followLocalSignIn()
    {
        AuthService &auth = appState->authService();
        QObject::connect(&auth, &AuthService::currentUserChanged, &auth, [this, &auth] {
            if (auth.currentUser())
                defaults.remove(localSignedOutKey);
            else
                defaults.setBoolean(localSignedOutKey, true);
        });
    }
};

BrevixMacApp::BrevixMacApp(InstanceService &instance, Library library, const Failed &failed)
    : m_parts(std::make_unique<Parts>(library))
{
    HeapUpkeep::mapLargeBuffers();
    AccessibleRoles::install();
    Parts &parts = *m_parts;
    if (library == Library::cloud) {
        parts.useCloud(QProcessEnvironment::systemEnvironment());
        if (!parts.problem)
            run(instance);
        return;
    }
    if (!parts.startLocalCloud())
        return;
    parts.holdBack(instance);
    parts.localCloud->whenOpened([this, &instance, failed](bool isUsable) {
        if (!(isUsable ? m_parts->useLocalCloud() : m_parts->failLocally())) {
            failed(*m_parts->problem);
            return;
        }
        run(instance);
        m_parts->letThrough();
    });
}

void BrevixMacApp::run(InstanceService &instance)
{
    Parts &parts = *m_parts;
    parts.delegate = std::make_unique<AppDelegate>(*parts.appState, parts.desktop.pasteboard());
    parts.delegate->applicationDidFinishLaunching();
    parts.menuBar = std::make_unique<MenuBarController>(parts.desktop.statusItem(), parts.desktop.workspace(),
                                                        parts.desktop.eventMonitor());
    parts.menuBar->install(*parts.appState);
    parts.windows = std::make_unique<AppWindows>(*parts.appState, parts.desktop.workspace(), *parts.menuBar);
    QObject::connect(parts.menuBar.get(), &MenuBarController::quitRequested, parts.delegate.get(),
                     &AppDelegate::quit);
    QObject::connect(&instance, &InstanceService::toggleRequested, parts.menuBar.get(),
                     &MenuBarController::togglePickerWithFocus);
    QObject::connect(&instance, &InstanceService::paletteRequested, parts.windows.get(),
                     &AppWindows::showPalette);
    QObject::connect(&instance, &InstanceService::settingsRequested, parts.windows.get(),
                     &AppWindows::showSettings);
    QObject::connect(&instance, &InstanceService::doctorRequested, parts.appState.get(),
                     [&parts](const QDBusMessage &call) { reportTo(call, parts.appState->doctor()); });
    QObject::connect(&instance, &InstanceService::showRequested, parts.appState.get(),
                     &AppState::handleHotkey);
    QObject::connect(&instance, &InstanceService::openRequested, &parts.desktop.webAuthenticationSession(),
                     &WebAuthenticationSession::openURL);
    if (parts.isFirstStart) // a new user must see that something has started
        QTimer::singleShot(0, parts.appState.get(),
                           [&parts] { parts.appState->handlePaletteInvocation(true); });
}

BrevixMacApp::~BrevixMacApp() = default;

std::optional<QString> BrevixMacApp::problem() const
{
    return m_parts->problem;
}

void BrevixMacApp::quit()
{
    if (m_parts->delegate)
        m_parts->delegate->quit();
    else
        QCoreApplication::quit();
}

QString BrevixMacApp::defaultsDomain(Library library)
{
    return library == Library::local ? QStringLiteral("brevix-local") : QStringLiteral("brevix");
}

QString BrevixMacApp::signInScheme(Library library)
{
    const bool isOwnServer = library == Library::local || !qEnvironmentVariableIsEmpty("BREVIX_SERVER");
    const AppConfiguration configuration = isOwnServer ? localConfiguration({}) : AppConfiguration::load();
    return configuration.firebase.reversedClientID;
}

QString BrevixMacApp::bundleIdentifier()
{
    return QStringLiteral("app.brevix.Brevix");
}
