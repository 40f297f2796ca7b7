// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AccessibilityService.h"
#include "AppConfiguration.h"
#include "AuthService.h"
#include "CloudEndpoints.h"
#include "DraftStore.h"
#include "FirebaseBootstrap.h"
#include "HotkeyService.h"
#include "InsertionService.h"
#include "LaunchAtLoginService.h"
#include "LibraryStore.h"
#include "Outcome.h"
#include "PermissionsService.h"
#include "PickerResults.h"
#include "PreferenceStore.h"
#include "PromptOptimizationService.h"
#include "RecentUsageStore.h"
#include "ShareConfirmation.h"
#include "UpdateService.h"

#include "Desktop/EventMonitor.h"

#include <QObject>

#include <functional>
#include <memory>

class Doctor;
class KeyCapture;
class LoginItem;
class SessionProbe;
class StatusItem;
class WebBrowser;
struct InstanceFacts;

/// The offer made after a failed insertion. Exactly one of prompt and skill is present.
struct InsertionRecovery
{
    RenderedPrompt renderedPrompt;
    std::optional<PromptItem> prompt = {};
    std::optional<SkillItem> skill = {};

    /// Label of the button that copies instead.
    QString actionTitle() const;

    bool operator==(const InsertionRecovery &) const = default;
};

/// Why the hotkey does not work, and what to do about it: two sentences without their full stops.
struct HotkeyProblem
{
    QString reason;
    QString advice;
};

/// What happens once a prompt's variables are filled.
enum class PendingVariableAction { insert, copy };

/// What AppState is built from. Everything referred to must outlive it.
struct AppEnvironment
{
    AppConfiguration configuration;
    CloudEndpoints endpoints;
    UserDefaults &defaults;
    HttpClient &http;
    AccessibilityTree &accessibilityTree;
    Pasteboard &pasteboard;
    Workspace &workspace;
    KeyEvents &keyEvents;
    EventMonitor &eventMonitor;
    HotKeys &hotKeys;
    WebAuthenticationSession &webAuthenticationSession;
    WebBrowser &webBrowser;
    KeyCapture &keyCapture;
    StatusItem &statusItem;
    LoginItem &loginItem;
    SessionProbe &sessionProbe;
    QString bundleIdentifier; ///< of this application
    qint64 processIdentifier; ///< of this application
    std::function<QDateTime()> now = &QDateTime::currentDateTimeUtc;
    QString draftFolder = {}; ///< where unsaved texts are kept; beside the defaults when empty
};

/// The application's one coordinator: owns the services and the observable state, and turns a hotkey press or
/// a click on a prompt into inserted or copied text. Main thread only. Nothing is thrown: every outcome is
/// state.
class AppState final : public QObject
{
    Q_OBJECT

public:
    enum class RootDestination { onboarding, library, settings };

    /// Age at which a remembered target is no longer used.
    static constexpr std::chrono::seconds externalTargetFreshness{30};

    /// Creates the services, observes them and starts up.
    explicit AppState(AppEnvironment environment);
    ~AppState() override;

    /// The application's own instance; null before it is made.
    static AppState *shared();

    // Observable state. Each setter publishes only a change.
    const QString &query() const { return m_query; }
    void setQuery(const QString &query);
    RootDestination rootDestination() const { return m_rootDestination; }
    void setRootDestination(RootDestination destination);
    const std::optional<QString> &selectedCategoryID() const { return m_selectedCategoryID; }
    void setSelectedCategoryID(const std::optional<QString> &id);
    const std::optional<QString> &selectedPromptID() const { return m_selectedPromptID; }
    void setSelectedPromptID(const std::optional<QString> &id);
    const std::optional<QString> &selectedSkillID() const { return m_selectedSkillID; }
    void setSelectedSkillID(const std::optional<QString> &id);
    const FocusedTargetPtr &focusedTarget() const { return m_focusedTarget; }
    const std::optional<PromptItem> &activeVariablePrompt() const { return m_activeVariablePrompt; }
    const VariableValues &variableValues() const { return m_variableValues; }
    void setVariableValue(const QString &name, const QString &value);
    const std::optional<InsertionResult> &lastInsertionResult() const { return m_lastInsertionResult; }
    void setLastInsertionResult(const std::optional<InsertionResult> &result);
    const std::optional<InsertionRecovery> &insertionRecovery() const { return m_insertionRecovery; }
    const std::optional<ShareConfirmation> &shareConfirmation() const { return m_shareConfirmation; }
    const std::optional<QString> &configurationIssue() const { return m_configurationIssue; }
    bool palettePresented() const { return m_palettePresented; }
    void setPalettePresented(bool presented);
    bool pickerAutoFocusSearch() const { return m_pickerAutoFocusSearch; }
    void setPickerAutoFocusSearch(bool autoFocus) { m_pickerAutoFocusSearch = autoFocus; }
    /// True from the start of an insertion until its result.
    bool isInserting() const { return m_insertionsUnderWay > 0; }
    /// Whether the program that the next insertion goes to has the keyboard.
    bool isTargetInFront() const;

    // The services.
    const AppConfiguration &configuration() const { return m_environment.configuration; }
    PreferenceStore &preferences() { return *m_preferences; }
    PermissionsService &permissions() { return *m_permissions; }
    RecentUsageStore &recents() { return *m_recents; }
    DraftStore &draftStore() { return *m_draftStore; }
    HotkeyService &hotkeyService() { return *m_hotkeyService; }
    KeyCapture &keyCapture() { return m_environment.keyCapture; }
    WebBrowser &webBrowser() { return m_environment.webBrowser; }
    AuthService &authService() { return *m_authService; }
    LibraryStore &libraryStore() { return *m_libraryStore; }
    UpdateService &updateService() { return *m_updateService; }
    Doctor &doctor() { return *m_doctor; }

    /// Shows and hides the picker panel; installed by the panel's owner.
    std::function<void()> presentPaletteAction;
    std::function<void()> dismissPaletteAction;

    // Opening the picker.
    void handlePaletteInvocation(bool allowCachedTarget);
    /// What the hotkey runs: the same with the search field focused.
    void handleHotkey();
    /// The same for another window that inserts: captures the target and resets, then calls @p present in
    /// place of showing the picker.
    void handleWindowInvocation(std::function<void()> present);

    // Actions on prompts and skills.
    void beginAction(const PromptItem &prompt, PendingVariableAction action);
    void confirmVariableAction();
    /// Closes the variable form; nothing is inserted or copied.
    void cancelVariableAction();
    void insertRaw(const PromptItem &prompt);
    void performCopy(const RenderedPrompt &rendered);
    void use(const SkillItem &skill);
    void performSkillCopy(const SkillItem &skill);
    void copyFailedInsertion();
    void ensurePromptSelection();

    // What the editors ask for. Each ends with a value or with a text for the user; when the user signs out
    // or this object dies meanwhile, with a problem that no view is left to show.
    QCoro::Task<Outcome<PromptCategory>> createCategory(QString name, QString colorHex);
    QCoro::Task<Outcome<PromptItem>> createPrompt(QString title, QString text, QString categoryID);
    QCoro::Task<Outcome<SkillItem>> createSkill(QString title, QString text,
                                                std::optional<QString> sourceFilename);
    QCoro::Task<Outcome<QString>> optimize(QString prompt);

    // Sharing: the link ends up on the clipboard; lastInsertionResult() and shareConfirmation() tell. Of two
    // that run at the same time the later to finish is shown.
    QCoro::Task<> share(const PromptItem &prompt);
    QCoro::Task<> share(const SkillItem &skill);
    QCoro::Task<> share(const PromptCategory &category);
    /// Closes the banner if it still shows @p confirmation; in any case when none is named.
    void dismissShareConfirmation(const std::optional<ShareConfirmation> &confirmation);

    // Derived values.
    CategoriesByID categoriesByID() const;
    /// The library's prompts and skills, each identifier once: a list with two of the same would stop the
    /// rankers.
    const QList<PromptItem> &libraryPrompts() const { return m_libraryPrompts; }
    const QList<SkillItem> &librarySkills() const { return m_librarySkills; }
    QList<PromptItem> visiblePrompts() const;
    QList<SkillItem> visibleSkills() const;
    QList<PromptItem> recentPromptItems() const;
    std::optional<PromptItem> selectedPrompt() const;
    QList<PickerResultSection> resultSections() const;
    /// The library's categories, each identifier once.
    QList<PromptCategory> libraryCategories() const;
    QList<PickerResult> libraryResults(const QString &query, const LibraryFilter &filter) const;
    PickerTargetStatus targetStatus() const;
    QString hotkeyLabel() const;
    /// Nothing while the hotkey works.
    std::optional<HotkeyProblem> hotkeyProblem() const;

    // Start-up, permissions, account.
    /// Makes @p shortcut the hotkey and remembers it. When the session refuses it, the hotkey stays what it
    /// was and shortcutProblem() says why.
    void updateShortcut(const KeyboardShortcut &shortcut);
    const std::optional<QString> &shortcutProblem() const { return m_shortcutProblem; }
    void setShortcutProblem(const std::optional<QString> &problem);
    /// Puts @p text on the clipboard; false when it refuses. No outcome is set: no prompt was copied.
    bool copyText(const QString &text);
    /// Starts Brevix at login or no longer. A failure leaves the preference and becomes
    /// lastInsertionResult().
    void setLaunchAtLogin(bool enabled);
    /// Reads from the session whether Brevix starts at login: the user may have changed that elsewhere.
    void refreshLaunchAtLogin();
    void requestPostEventPermission();
    void requestAccessibilityPermission();
    void signIn(bool hasPresentingWindow);
    void cancelSignIn();
    /// Copies the address of the sign-in page that waits. False without one, or when the clipboard refuses.
    bool copyAuthorizationLink();
    void signOut();
    void updateOnboardingState();
    /// The application has come to the front.
    void applicationDidBecomeActive();
    /// Remembers from now on where the user was last in other applications. Once is enough.
    void startExternalFocusTracking();

Q_SIGNALS:
    void queryChanged();
    void rootDestinationChanged();
    void selectionChanged();
    void focusedTargetChanged();
    void activeVariablePromptChanged();
    void variableValuesChanged();
    void lastInsertionResultChanged();
    void insertionRecoveryChanged();
    void shareConfirmationChanged();
    void configurationIssueChanged();
    void shortcutProblemChanged();
    void palettePresentedChanged();
    void isInsertingChanged();
    /// An insertion has succeeded: whatever window it was started in is done.
    void insertionFinished();
    /// After insertionRecovery() was set.
    void insertionFailed();
    /// The library, the recents or their order have changed: lists must be read again.
    void libraryChanged();

private:
    void observeState();
    void bootstrap();
    InstanceFacts instanceFacts() const;
    void registerHotkey(const KeyboardShortcut &shortcut);
    HotkeyProblem problemWith(const KeyboardShortcut &shortcut) const;

    QCoro::Task<> invokePalette(bool allowCachedTarget, std::function<void()> present, std::stop_token token);
    QCoro::Task<FocusedTargetPtr> resolvedInsertionTarget(bool allowCachedTarget, std::stop_token token);
    QCoro::Task<FocusedTargetPtr> targetFromLastExternalApplication(std::stop_token token);
    FocusedTargetPtr freshLastExternalFocusedTarget() const;
    QCoro::Task<> performInsertion(RenderedPrompt rendered, std::stop_token token);
    QCoro::Task<> performSkillInsertion(SkillItem skill, std::stop_token token);
    /// Resolves the target, inserts, stores the result.
    QCoro::Task<InsertionResult> insertIntoCurrentTarget(RenderedPrompt rendered, std::stop_token token);
    void finishCopy(const QString &text);
    QCoro::Task<> performShare(QString title, QCoro::Task<QUrl> link, std::stop_token token);
    void finishShare(const QString &title, const QUrl &url);
    void failShare(const QString &message);
    void recordUse(const PromptItem &prompt);
    void runPendingAction(const RenderedPrompt &rendered);
    void clearOutcome();
    void readLibrary();
    void closeVariableForm();
    void dismissPalette();

    QCoro::Task<> externalFocusCapture(std::chrono::milliseconds delay, std::stop_token token);
    QCoro::Task<> rememberCurrentExternalFocusedTarget(std::stop_token token);
    bool isOwnBundle(const std::optional<QString> &bundleID) const;
    bool isExternalApplication(const RunningApplication &application) const;
    FocusedTargetPtr usableExternalTarget(const FocusedTargetPtr &target);
    void rememberFrontmostExternalApplication();

    void setFocusedTarget(const FocusedTargetPtr &target);
    void setInsertionRecovery(const std::optional<InsertionRecovery> &recovery);
    void setShareConfirmation(const std::optional<ShareConfirmation> &confirmation);
    void beginInserting();
    void endInserting();

    AppEnvironment m_environment;

    QString m_query;
    RootDestination m_rootDestination = RootDestination::onboarding;
    std::optional<QString> m_selectedCategoryID;
    std::optional<QString> m_selectedPromptID;
    std::optional<QString> m_selectedSkillID;
    FocusedTargetPtr m_focusedTarget;
    std::optional<PromptItem> m_activeVariablePrompt;
    VariableValues m_variableValues;
    std::optional<InsertionResult> m_lastInsertionResult;
    std::optional<InsertionRecovery> m_insertionRecovery;
    std::optional<ShareConfirmation> m_shareConfirmation;
    std::optional<QString> m_configurationIssue;
    std::optional<QString> m_shortcutProblem;
    bool m_palettePresented = false;
    bool m_pickerAutoFocusSearch = false;
    int m_insertionsUnderWay = 0;
    PendingVariableAction m_pendingVariableAction = PendingVariableAction::insert;

    std::unique_ptr<PreferenceStore> m_preferences;
    std::unique_ptr<PermissionsService> m_permissions;
    std::unique_ptr<RecentUsageStore> m_recents;
    std::unique_ptr<DraftStore> m_draftStore;
    std::unique_ptr<HotkeyService> m_hotkeyService;
    std::unique_ptr<LaunchAtLoginService> m_launchAtLoginService;
    std::unique_ptr<FirebaseBootstrap> m_firebaseBootstrap;
    std::unique_ptr<AuthService> m_authService;
    std::unique_ptr<LibraryStore> m_libraryStore;
    std::unique_ptr<PromptOptimizationService> m_promptOptimizationService;
    std::unique_ptr<UpdateService> m_updateService;
    std::unique_ptr<AccessibilityService> m_accessibilityService;
    std::unique_ptr<InsertionService> m_insertionService;
    std::unique_ptr<Doctor> m_doctor;

    QList<PromptItem> m_libraryPrompts; ///< the library's, each identifier once
    QList<SkillItem> m_librarySkills;

    std::unique_ptr<EventMonitor::Subscription> m_focusMonitor;
    FocusedTargetPtr m_lastExternalFocusedTarget;
    std::optional<RunningApplication> m_lastExternalApplication;

    // Keep last: they stop the coroutines before the other members die.
    TaskScope m_invocationTasks;
    TaskScope m_searchTasks; ///< of the library as it is now
    TaskScope m_tasks;
};
