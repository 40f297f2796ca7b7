// SPDX-License-Identifier: GPL-3.0-or-later
#include "SettingsView.h"

#include "AppState.h"
#include "ChoiceRow.h"
#include "ContentScrollArea.h"
#include "CopyFeedback.h"
#include "DiagnosticsRows.h"
#include "Doctor.h"
#include "DoctorRows.h"
#include "SettingsCard.h"
#include "SettingsRow.h"
#include "ShortcutCaptureMonitor.h"
#include "ShortcutRecorderView.h"
#include "StatusChip.h"
#include "ThemedButton.h"
#include "ThemedSwitch.h"
#include "UpdateRow.h"

#include <QButtonGroup>
#include <QHideEvent>
#include <QShowEvent>
#include <QVBoxLayout>

namespace {

constexpr int cardGap = 16;
constexpr int topMargin = 6;
constexpr int bottomMargin = 22;
constexpr int leastHeight = 120;
constexpr int widestColumn = 640;

const QString nothingToGrant =
    QStringLiteral("Nothing is missing. This desktop has no settings page for it.");
const QString askedTheDesktop = QStringLiteral(
    "The desktop was asked to switch accessibility on. What works in this session is listed below.");
const QString cannotPostKeys =
    QStringLiteral("This desktop has no consent to ask for. The report below says what to do.");

const QString keyLegend = QStringLiteral("⌘ is the Super key, ⌥ the Alt key.");

ThemedButton *makeButton(const QString &text)
{
    auto *button = new ThemedButton(ThemedButton::Kind::quiet, text);
    button->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    return button;
}

/// "Name · address", as far as the session has them.
QString details(const BrevixUserSession &user)
{
    QStringList parts;
    for (const auto &part : {user.displayName, user.email}) {
        if (part && !part->isEmpty())
            parts.append(*part);
    }
    return parts.join(QStringLiteral(" · "));
}

} // namespace

SettingsView::SettingsView(AppState &appState, QWidget *parent)
    : QWidget(parent)
    , m_appState(appState)
    , m_content(new QWidget)
    , m_column(new QVBoxLayout)
{
    setAccessibleName(QStringLiteral("Settings"));
    makeScrollArea();
    addAccount();
    addGeneral();
    addShortcut();
    addInsertion();
    addSystemAccess();
    addUpdates();
    addAdvanced();
    m_column->addStretch();
    observe();
    refresh();
}

void SettingsView::makeScrollArea()
{
    constexpr int halo = Theme::haloWidth;
    m_column->setContentsMargins(0, topMargin, 0, bottomMargin);
    m_column->setSpacing(Theme::shared().scaled(cardGap));
    auto *frame = new QWidget;
    frame->setLayout(m_column);
    frame->setMaximumWidth(Theme::shared().scaled(widestColumn));
    connect(&Theme::shared(), &Theme::changed, frame, [this, frame] {
        m_column->setSpacing(Theme::shared().scaled(cardGap));
        frame->setMaximumWidth(Theme::shared().scaled(widestColumn));
    });
    auto *middle = new QHBoxLayout(m_content);
    middle->setContentsMargins(Theme::margin, 0, 0, 0);
    middle->addWidget(frame);
    auto *area = new ContentScrollArea(m_content, leastHeight, Theme::margin, this);
    area->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, halo, 0, 0);
    layout->addWidget(area);
}

SettingsCard *SettingsView::addCard(const QString &title)
{
    auto *card = new SettingsCard(title, m_content);
    m_cards.append(card);
    m_column->addWidget(card);
    return card;
}

void SettingsView::addAccount()
{
    m_account = new SettingsRow({});
    m_signIn = makeButton(QStringLiteral("Sign In"));
    m_signOut = makeButton(QStringLiteral("Sign Out"));
    m_cancelSignIn = makeButton(QStringLiteral("Cancel"));
    m_copyLink = makeButton(QStringLiteral("Copy Link"));
    for (ThemedButton *button : {m_copyLink, m_cancelSignIn, m_signIn, m_signOut})
        m_account->addControl(button);
    addCard(QStringLiteral("Account"))->addRow(m_account);
    connect(m_signIn, &QPushButton::clicked, this, [this] { m_appState.signIn(window()->isVisible()); });
    connect(m_signOut, &QPushButton::clicked, this, [this] { m_appState.signOut(); });
    connect(m_cancelSignIn, &QPushButton::clicked, this, [this] { m_appState.authService().cancelSignIn(); });
    tellWhetherCopied(*m_copyLink, [this] {
        const auto &pending = m_appState.authService().pendingAuthorization();
        return pending && m_appState.copyText(QString::fromUtf8(pending->url.toEncoded()));
    });
}

void SettingsView::addGeneral()
{
    m_login = new ThemedSwitch(QStringLiteral("Open at login"));
    m_icon = new ThemedSwitch(QStringLiteral("Menu bar icon"));
    m_loginRow = new SettingsRow(m_login->accessibleName(),
                                 QStringLiteral("Start Brevix automatically after you sign in to your Mac."));
    auto *iconRow = new SettingsRow(m_icon->accessibleName(),
                                    QStringLiteral("Keep Brevix visible in the macOS menu bar."));
    m_loginRow->addControl(m_login);
    iconRow->addControl(m_icon);
    m_login->setAccessibleDescription(m_loginRow->subtitle());
    m_icon->setAccessibleDescription(iconRow->subtitle());
    SettingsCard *card = addCard(QStringLiteral("General"));
    card->addRow(m_loginRow);
    card->addRow(iconRow);
    connect(m_login, &QCheckBox::clicked, this, [this](bool enabled) {
        m_appState.setLaunchAtLogin(enabled);
        const auto &result = m_appState.lastInsertionResult();
        const bool hasFailed = m_appState.preferences().launchAtLoginEnabled() != enabled;
        m_loginProblem = hasFailed && result ? result->message : QString();
        refreshGeneral();
    });
    connect(m_icon, &QCheckBox::clicked, this,
            [this](bool shown) { m_appState.preferences().setShowMenuBarIcon(shown); });
}

void SettingsView::addShortcut()
{
    m_shortcutRow = new SettingsRow(QStringLiteral("Global shortcut"),
                                    u"Default is "_qs + KeyboardShortcut().displayLabel());
    m_recorder = new ShortcutRecorderView(m_appState.keyCapture(), [this](const KeyboardShortcut &shortcut) {
        m_appState.updateShortcut(shortcut);
    });
    m_shortcutRow->addControl(m_recorder);
    addCard(QStringLiteral("Shortcut"))->addRow(m_shortcutRow);
    connect(m_recorder, &ShortcutRecorderView::refused, this, &SettingsView::onRefused);
    connect(m_recorder, &ShortcutRecorderView::isRecordingChanged, this, &SettingsView::refreshShortcut);
}

void SettingsView::addInsertion()
{
    SettingsCard *card = addCard(QStringLiteral("Insertion"));
    card->addRow(new SettingsRow(QStringLiteral("Preferred method"),
                                 QStringLiteral("Choose how Brevix places text into the focused field.")));
    auto *group = new QButtonGroup(this);
    for (const InsertionMethod method : allInsertionMethods) {
        auto *row = new ChoiceRow(::title(method), description(method));
        m_methods[method] = row;
        group->addButton(row);
        card->addRow(row);
        // By any way, the arrow keys included.
        connect(row, &QRadioButton::toggled, this, [this, method](bool isChosen) {
            if (isChosen && m_appState.preferences().preferredInsertionMethod() != method)
                m_appState.preferences().setPreferredInsertionMethod(method);
        });
    }
}

SettingsView::Permission SettingsView::addPermission(SettingsCard *card, const QString &title,
                                                     const QString &subtitle)
{
    auto *row = new SettingsRow(title, subtitle);
    const Permission permission{
        .row = row, .chip = new StatusChip, .button = makeButton(QStringLiteral("Open Settings"))};
    permission.button->setMinimumWidth(permission.button->sizeHint().width());
    permission.button->setAccessibleDescription(title);
    row->addControl(permission.chip);
    row->addControl(permission.button);
    card->addRow(row);
    return permission;
}

void SettingsView::addSystemAccess()
{
    SettingsCard *card = addCard(QStringLiteral("System Access"));
    m_accessibility =
        addPermission(card, QStringLiteral("Accessibility"),
                      QStringLiteral("Required to read the focused text field and insert directly."));
    m_postEvent = addPermission(card, QStringLiteral("Keyboard event posting"),
                                QStringLiteral("Required for clipboard paste fallback."));
    auto *status = new SettingsRow(QStringLiteral("Permission status"));
    m_recheck = makeButton(QStringLiteral("Re-check"));
    status->addControl(m_recheck);
    card->addRow(status);
    m_doctor = new DoctorRows(m_appState.doctor(), *card, this);
    connect(m_accessibility.button, &QPushButton::clicked, this, [this] {
        m_appState.requestAccessibilityPermission();
        m_accessibility.row->setNote(m_appState.permissions().accessibilityGranted() ? nothingToGrant
                                                                                     : askedTheDesktop,
                                     Theme::Color::secondary);
    });
    connect(m_postEvent.button, &QPushButton::clicked, this, [this] {
        m_appState.requestPostEventPermission();
        m_postEvent.row->setNote(m_appState.permissions().postEventGranted() ? nothingToGrant
                                                                             : cannotPostKeys,
                                 Theme::Color::secondary);
    });
    connect(m_recheck, &QPushButton::clicked, this, [this] {
        m_appState.permissions().refresh();
        m_appState.updateOnboardingState();
    });
}

void SettingsView::addUpdates()
{
    m_updates = new UpdateRow(m_appState.updateService(), m_appState.webBrowser());
    addCard(QStringLiteral("Updates"))->addRow(m_updates);
}

void SettingsView::addAdvanced()
{
    m_diagnostics = new DiagnosticsRows(m_appState, *addCard(QStringLiteral("Advanced")), this);
}

void SettingsView::observe()
{
    AuthService &auth = m_appState.authService();
    connect(&auth, &AuthService::currentUserChanged, this, &SettingsView::refreshAccount);
    connect(&auth, &AuthService::isAuthenticatingChanged, this, &SettingsView::refreshAccount);
    connect(&auth, &AuthService::authErrorMessageChanged, this, &SettingsView::refreshAccount);
    connect(&auth, &AuthService::pendingAuthorizationChanged, this, &SettingsView::refreshAccount);
    PreferenceStore &preferences = m_appState.preferences();
    connect(&preferences, &PreferenceStore::launchAtLoginEnabledChanged, this, &SettingsView::refreshGeneral);
    connect(&preferences, &PreferenceStore::showMenuBarIconChanged, this, &SettingsView::refreshGeneral);
    connect(&preferences, &PreferenceStore::preferredShortcutChanged, this, &SettingsView::refreshShortcut);
    connect(&preferences, &PreferenceStore::preferredInsertionMethodChanged, this,
            &SettingsView::refreshMethods);
    connect(&m_appState, &AppState::shortcutProblemChanged, this, &SettingsView::refreshShortcut);
    connect(&m_appState.hotkeyService(), &HotkeyService::registrationChanged, this,
            &SettingsView::refreshShortcut);
    PermissionsService &permissions = m_appState.permissions();
    connect(&permissions, &PermissionsService::accessibilityGrantedChanged, this,
            &SettingsView::refreshPermissions);
    connect(&permissions, &PermissionsService::postEventGrantedChanged, this,
            &SettingsView::refreshPermissions);
}

void SettingsView::refresh()
{
    m_appState.refreshLaunchAtLogin();
    refreshAccount();
    refreshGeneral();
    refreshShortcut();
    refreshMethods();
    refreshPermissions();
    m_diagnostics->refresh();
}

void SettingsView::focusFirst()
{
    for (ThemedButton *button : {m_signIn, m_signOut, m_cancelSignIn}) {
        if (button->isVisibleTo(this) && button->isEnabled()) {
            button->setFocus(Qt::TabFocusReason);
            return;
        }
    }
}

void SettingsView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (!event->spontaneous())
        forgetNotes();
    refresh();
    m_appState.doctor().examine();
}

void SettingsView::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    if (!event->spontaneous())
        m_diagnostics->collapse();
}

/// What an attempt of an earlier visit has left may be put right by now.
void SettingsView::forgetNotes()
{
    m_loginProblem.clear();
    m_appState.setShortcutProblem({});
    for (const Permission &permission : {m_accessibility, m_postEvent})
        permission.row->setNote({}, Theme::Color::secondary);
}

void SettingsView::refreshAccount()
{
    const AuthService &auth = m_appState.authService();
    const auto &user = auth.currentUser();
    const auto &pending = auth.pendingAuthorization();
    m_account->setTitle(user ? QStringLiteral("Signed in") : QStringLiteral("Not signed in"));
    m_account->setSubtitle(user ? details(*user)
                                : QStringLiteral("Sign in with Google to sync your Brevix library."));
    if (auth.authErrorMessage())
        m_account->setNote(*auth.authErrorMessage(), Theme::Color::danger);
    else if (pending && pending->isBrowserMissing)
        m_account->setNote(QStringLiteral("No browser could be opened. Copy the link and open it in one."),
                           Theme::Color::warning);
    else
        m_account->setNote({}, Theme::Color::secondary);
    m_signIn->setBusy(auth.isAuthenticating());
    m_signIn->setLabel(auth.isAuthenticating() ? QStringLiteral("Signing In...") : QStringLiteral("Sign In"));
    m_signIn->setEnabled(!auth.isAuthenticating());
    showAccountButtons(user ? QList{m_signOut} : buttonsWithoutUser());
}

QList<ThemedButton *> SettingsView::buttonsWithoutUser() const
{
    const AuthService &auth = m_appState.authService();
    QList<ThemedButton *> shown;
    if (auth.pendingAuthorization())
        shown.append(m_copyLink);
    if (auth.isAuthenticating())
        shown.append(m_cancelSignIn);
    shown.append(m_signIn);
    return shown;
}

/// The focus goes from a button that vanishes to the one that takes its place, not to some switch below.
void SettingsView::showAccountButtons(const QList<ThemedButton *> &shown)
{
    const QList<ThemedButton *> all{m_copyLink, m_cancelSignIn, m_signIn, m_signOut};
    auto *focused = qobject_cast<ThemedButton *>(window()->focusWidget());
    for (ThemedButton *button : shown)
        button->show();
    if (all.contains(focused) && !shown.contains(focused))
        shown.last()->setFocus(Qt::OtherFocusReason);
    for (ThemedButton *button : all)
        button->setVisible(shown.contains(button));
}

void SettingsView::refreshGeneral()
{
    m_login->setChecked(m_appState.preferences().launchAtLoginEnabled());
    m_icon->setChecked(m_appState.preferences().showMenuBarIcon());
    m_loginRow->setNote(m_loginProblem, Theme::Color::danger);
}

void SettingsView::refreshShortcut()
{
    m_recorder->setShortcut(m_appState.preferences().preferredShortcut());
    const bool isRecording = m_recorder->monitor().isRecording();
    if (const auto &problem = m_appState.shortcutProblem(); problem && !isRecording)
        m_shortcutRow->setNote(*problem, Theme::Color::danger);
    else if (const auto inTheWay = m_appState.hotkeyProblem(); inTheWay && !isRecording)
        m_shortcutRow->setNote(inTheWay->reason + u". " + inTheWay->advice + u'.', Theme::Color::warning);
    else
        m_shortcutRow->setNote(keyLegend, Theme::Color::secondary);
}

void SettingsView::onRefused(const QString &reason)
{
    m_shortcutRow->setNote(reason, Theme::Color::warning);
}

void SettingsView::refreshMethods()
{
    m_methods.at(m_appState.preferences().preferredInsertionMethod())->setChecked(true);
}

void SettingsView::refreshPermissions()
{
    const auto show = [](const Permission &permission, bool isGranted) {
        permission.chip->describe(isGranted ? StatusChip::Tint::success : StatusChip::Tint::warning,
                                  isGranted ? QStringLiteral("Granted") : QStringLiteral("Needed"));
        permission.button->setLabel(isGranted ? QStringLiteral("Open Settings") : QStringLiteral("Request"));
    };
    show(m_accessibility, m_appState.permissions().accessibilityGranted());
    show(m_postEvent, m_appState.permissions().postEventGranted());
}
