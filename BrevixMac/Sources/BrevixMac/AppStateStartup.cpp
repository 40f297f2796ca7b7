// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppState.h"
#include "Doctor.h"

#include "Desktop/AccessibilityTree.h"
#include "Desktop/HotKeys.h"
#include "Desktop/KeyEvents.h"
#include "Desktop/Pasteboard.h"
#include "Desktop/StatusItem.h"
#include "Desktop/Workspace.h"

#include "Foundation/UserDefaults.h"

#include <QFileInfo>
#include <QPointer>

// How the application comes up and stays ready: the services, the onboarding rule, the hotkey, and the memory
// of the field the user was in last.

namespace {

using namespace std::chrono_literals;

// A field takes a moment to become the focused one after a click or key; a window takes longer to bring its
// field back.
constexpr auto captureDelayAfterInput = 80ms;
constexpr auto captureDelayAfterActivation = 140ms;

AppState *sharedInstance = nullptr;

QString draftFolder(const AppEnvironment &environment)
{
    if (!environment.draftFolder.isEmpty())
        return environment.draftFolder;
    return QFileInfo(environment.defaults.filePath()).absolutePath() + QStringLiteral("/drafts");
}

} // namespace

AppState::AppState(AppEnvironment environment)
    : m_environment(std::move(environment))
    , m_preferences(std::make_unique<PreferenceStore>(m_environment.defaults))
    , m_permissions(
          std::make_unique<PermissionsService>(m_environment.accessibilityTree, m_environment.keyEvents))
    , m_recents(std::make_unique<RecentUsageStore>(m_environment.defaults, m_environment.now))
    , m_draftStore(std::make_unique<DraftStore>(draftFolder(m_environment)))
    , m_hotkeyService(std::make_unique<HotkeyService>(m_environment.hotKeys))
    , m_launchAtLoginService(std::make_unique<LaunchAtLoginService>(m_environment.loginItem))
    , m_firebaseBootstrap(std::make_unique<FirebaseBootstrap>(m_environment.configuration))
    , m_authService(std::make_unique<AuthService>(m_environment.configuration, m_environment.endpoints,
                                                  m_environment.http, m_environment.defaults,
                                                  m_environment.webAuthenticationSession, m_environment.now))
    , m_libraryStore(std::make_unique<LibraryStore>(m_environment.configuration, m_environment.endpoints,
                                                    *m_authService, m_environment.http, m_environment.now))
    , m_promptOptimizationService(std::make_unique<PromptOptimizationService>(
          m_environment.configuration, m_environment.endpoints, *m_authService, m_environment.http))
    , m_updateService(std::make_unique<UpdateService>(m_environment.configuration.updates,
                                                      QStringLiteral(BREVIX_VERSION), m_environment.http,
                                                      m_environment.defaults, m_environment.now))
    , m_accessibilityService(std::make_unique<AccessibilityService>(
          m_environment.accessibilityTree, m_environment.workspace, m_environment.now))
    , m_insertionService(std::make_unique<InsertionService>(
          *m_permissions, *m_accessibilityService, *m_preferences,
          InsertionService::Desktop{m_environment.pasteboard, m_environment.workspace,
                                    m_environment.keyEvents, m_environment.accessibilityTree}))
{
    if (!sharedInstance)
        sharedInstance = this;
    m_doctor = std::make_unique<Doctor>(
        m_environment.sessionProbe, [this] { return instanceFacts(); },
        m_environment.configuration.firebase.reversedClientID);
    observeState();
    bootstrap();
}

InstanceFacts AppState::instanceFacts() const
{
    return {.shortcut = m_preferences->preferredShortcut(),
            .hasHotkeys = m_environment.hotKeys.isAvailable(),
            .isHotkeyHeld = m_hotkeyService->isRegistered(),
            .isTrusted = m_environment.accessibilityTree.isProcessTrusted(),
            .isPostingAllowed = m_environment.keyEvents.isPostingAllowed(),
            .isTrayIconShown = m_environment.statusItem.isShown(),
            .method = m_preferences->preferredInsertionMethod()};
}

AppState::~AppState()
{
    if (sharedInstance == this)
        sharedInstance = nullptr;
}

AppState *AppState::shared()
{
    return sharedInstance;
}

void AppState::observeState()
{
    connect(m_authService.get(), &AuthService::currentUserChanged, this, [this] {
        const std::optional<BrevixUserSession> user = m_authService->currentUser();
        m_preferences->setLastSignedInUserID(user ? std::optional(user->uid) : std::nullopt);
        if (user) {
            m_libraryStore->bind(user->uid);
        } else {
            m_libraryStore->unbind();
            m_promptOptimizationService->cancel();
        }
        updateOnboardingState();
    });
    // The user comes back from the browser and should see what came of it.
    connect(m_authService.get(), &AuthService::signInReturned, this, [this] {
        if (!m_palettePresented)
            handlePaletteInvocation(true);
    });
    connect(m_permissions.get(), &PermissionsService::accessibilityGrantedChanged, this,
            &AppState::updateOnboardingState);
    connect(m_permissions.get(), &PermissionsService::postEventGrantedChanged, this,
            &AppState::updateOnboardingState);

    connect(m_libraryStore.get(), &LibraryStore::categoriesChanged, this, &AppState::libraryChanged);
    connect(m_libraryStore.get(), &LibraryStore::promptsChanged, this, &AppState::readLibrary);
    connect(m_libraryStore.get(), &LibraryStore::skillsChanged, this, &AppState::readLibrary);
    connect(m_libraryStore.get(), &LibraryStore::syncStateChanged, this, &AppState::libraryChanged);
    connect(m_recents.get(), &RecentUsageStore::recentsChanged, this, &AppState::libraryChanged);
    connect(m_recents.get(), &RecentUsageStore::recentSkillsChanged, this, &AppState::libraryChanged);
}

void AppState::bootstrap()
{
    m_firebaseBootstrap->check();
    m_configurationIssue = m_firebaseBootstrap->statusMessage();
    Q_EMIT configurationIssueChanged();
    m_authService->start();
    m_permissions->refresh();
    registerHotkey(m_preferences->preferredShortcut());
    refreshLaunchAtLogin();
    startExternalFocusTracking();
    rememberFrontmostExternalApplication();
    if (m_preferences->onboardingCompleted())
        setRootDestination(RootDestination::library);
    updateOnboardingState();
}

void AppState::registerHotkey(const KeyboardShortcut &shortcut)
{
    m_hotkeyService->registerHotkey(shortcut, [self = QPointer<AppState>(this)] {
        if (self)
            self->handleHotkey();
    });
}

HotkeyProblem AppState::problemWith(const KeyboardShortcut &shortcut) const
{
    const QString advice = QStringLiteral("Bind the command \u201cbrevix toggle\u201d to a key in your "
                                          "desktop's keyboard settings instead");
    if (!m_environment.hotKeys.isAvailable())
        return {.reason = QStringLiteral("This session has no global shortcuts"), .advice = advice};
    return {.reason = shortcut.displayLabel() + u" is held by another application", .advice = advice};
}

std::optional<HotkeyProblem> AppState::hotkeyProblem() const
{
    return m_hotkeyService->wasRefused() ? std::optional(problemWith(m_preferences->preferredShortcut()))
                                         : std::nullopt;
}

void AppState::updateShortcut(const KeyboardShortcut &shortcut)
{
    const KeyboardShortcut previous = m_preferences->preferredShortcut();
    registerHotkey(shortcut);
    if (!m_hotkeyService->isRegistered() && shortcut != previous) {
        registerHotkey(previous);
        const HotkeyProblem problem = problemWith(shortcut);
        const bool hasHotkeys = m_environment.hotKeys.isAvailable();
        const QString rest = hasHotkeys ? QStringLiteral("The shortcut stays as it was") : problem.advice;
        setShortcutProblem(problem.reason + u". " + rest + u'.');
        return;
    }
    m_preferences->setPreferredShortcut(shortcut);
    setShortcutProblem({});
}

void AppState::setShortcutProblem(const std::optional<QString> &problem)
{
    if (problem == m_shortcutProblem)
        return;
    m_shortcutProblem = problem;
    Q_EMIT shortcutProblemChanged();
}

bool AppState::copyText(const QString &text)
{
    return m_insertionService->copy(text);
}

void AppState::setLaunchAtLogin(bool enabled)
{
    if (const auto problem = m_launchAtLoginService->setEnabled(enabled)) {
        setLastInsertionResult(InsertionResult::failure(InsertionFailureReason::unknown, *problem));
        return;
    }
    m_preferences->setLaunchAtLoginEnabled(enabled);
}

void AppState::refreshLaunchAtLogin()
{
    const bool isEnabled = m_launchAtLoginService->isEnabled();
    if (isEnabled != m_preferences->launchAtLoginEnabled())
        m_preferences->setLaunchAtLoginEnabled(isEnabled);
}

void AppState::requestAccessibilityPermission()
{
    m_permissions->requestAccessibility();
    updateOnboardingState();
}

void AppState::requestPostEventPermission()
{
    m_permissions->requestPostEvent();
    updateOnboardingState();
}

void AppState::signIn(bool hasPresentingWindow)
{
    // A named coroutine would have to guard against this object dying meanwhile; the signals of the service
    // already lead to updateOnboardingState() when the user changes.
    detach(m_authService->signIn(hasPresentingWindow), "signing in");
}

void AppState::cancelSignIn()
{
    m_authService->cancelSignIn();
}

bool AppState::copyAuthorizationLink()
{
    const auto &pending = m_authService->pendingAuthorization();
    if (!pending)
        return false;
    m_environment.pasteboard.clearContents();
    return m_environment.pasteboard.setString(pending->url.toString(QUrl::FullyEncoded));
}

void AppState::signOut()
{
    m_authService->signOut();
}

void AppState::updateOnboardingState()
{
    const bool isReady = !m_configurationIssue && m_permissions->accessibilityGranted() &&
                         m_permissions->postEventGranted() && m_authService->currentUser();
    if (isReady) {
        m_preferences->setOnboardingCompleted(true);
        if (m_rootDestination == RootDestination::onboarding)
            setRootDestination(RootDestination::library);
        return;
    }
    if (!m_preferences->onboardingCompleted())
        setRootDestination(RootDestination::onboarding);
}

void AppState::applicationDidBecomeActive()
{
    m_permissions->refresh();
    updateOnboardingState();
    m_permissions->scheduleFollowUpRefreshes();
}

// Focus tracking

bool AppState::isOwnBundle(const std::optional<QString> &bundleID) const
{
    return !m_environment.bundleIdentifier.isEmpty() && bundleID == m_environment.bundleIdentifier;
}

bool AppState::isExternalApplication(const RunningApplication &application) const
{
    return application.processIdentifier != m_environment.processIdentifier &&
           !isOwnBundle(application.bundleIdentifier);
}

FocusedTargetPtr AppState::usableExternalTarget(const FocusedTargetPtr &target)
{
    if (!target || target->pid == m_environment.processIdentifier)
        return nullptr;
    if (isOwnBundle(target->bundleID))
        return nullptr;
    m_lastExternalFocusedTarget = target;
    if (target->application)
        m_lastExternalApplication = target->application;
    return target;
}

void AppState::rememberFrontmostExternalApplication()
{
    const std::optional<RunningApplication> frontmost = m_environment.workspace.frontmostApplication();
    if (frontmost && isExternalApplication(*frontmost))
        m_lastExternalApplication = frontmost;
}

void AppState::startExternalFocusTracking()
{
    if (m_focusMonitor)
        return;
    const auto captureAfter = [this](std::chrono::milliseconds delay) {
        detach(externalFocusCapture(delay, m_tasks.token()), "remembering the focused field");
    };
    m_focusMonitor = m_environment.eventMonitor.addGlobalMonitor(
        MonitoredEvent::pointerRelease | MonitoredEvent::keyRelease,
        [captureAfter](const MonitoredEvent &) { captureAfter(captureDelayAfterInput); });
    connect(&m_environment.workspace, &Workspace::didActivateApplication, this, [this, captureAfter] {
        rememberFrontmostExternalApplication();
        captureAfter(captureDelayAfterActivation);
    });
}

QCoro::Task<> AppState::externalFocusCapture(std::chrono::milliseconds delay, std::stop_token token)
{
    co_await sleepFor(delay, token);
    if (!token.stop_requested())
        co_await rememberCurrentExternalFocusedTarget(token);
}

QCoro::Task<> AppState::rememberCurrentExternalFocusedTarget(std::stop_token token)
{
    if (m_permissions->accessibilityGranted()) {
        const FocusedTargetPtr captured = co_await m_accessibilityService->captureFocusedTarget();
        if (token.stop_requested() || usableExternalTarget(captured))
            co_return;
    }
    rememberFrontmostExternalApplication();
}
