// SPDX-License-Identifier: GPL-3.0-or-later
#include "PreferenceStore.h"

#include "Foundation/UserDefaults.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace {

PreferenceStore *sharedInstance = nullptr;

const QString preferredShortcutKey = QStringLiteral("preferredShortcut");
const QString launchAtLoginEnabledKey = QStringLiteral("launchAtLoginEnabled");
const QString showMenuBarIconKey = QStringLiteral("showMenuBarIcon");
const QString lastSignedInUserIDKey = QStringLiteral("lastSignedInUserID");
const QString onboardingCompletedKey = QStringLiteral("onboardingCompleted");
const QString preferredInsertionMethodKey = QStringLiteral("preferredInsertionMethod");
const QString hotkeyTipDismissedKey = QStringLiteral("hotkeyTipDismissed");

/// The stored form is a bare JSON text, which the parser takes only inside a list.
std::optional<InsertionMethod> insertionMethodFromJson(const QByteArray &json)
{
    const QJsonArray list = QJsonDocument::fromJson('[' + json + ']').array();
    if (list.size() != 1 || !list.first().isString())
        return std::nullopt;
    return insertionMethodFromRawValue(list.first().toString());
}

QByteArray toJson(InsertionMethod method)
{
    return '"' + rawValue(method).toUtf8() + '"';
}

KeyboardShortcut loadShortcut(const UserDefaults &defaults)
{
    const auto json = defaults.data(preferredShortcutKey);
    return (json ? KeyboardShortcut::fromJson(*json) : std::nullopt).value_or(KeyboardShortcut());
}

InsertionMethod loadInsertionMethod(const UserDefaults &defaults)
{
    const auto json = defaults.data(preferredInsertionMethodKey);
    return (json ? insertionMethodFromJson(*json) : std::nullopt).value_or(InsertionMethod::hybrid);
}

} // namespace

PreferenceStore::PreferenceStore(UserDefaults &defaults)
    : m_defaults(defaults)
    , m_preferredShortcut(loadShortcut(defaults))
    , m_launchAtLoginEnabled(defaults.boolean(launchAtLoginEnabledKey).value_or(false))
    , m_showMenuBarIcon(defaults.boolean(showMenuBarIconKey).value_or(true))
    , m_lastSignedInUserID(defaults.text(lastSignedInUserIDKey))
    , m_onboardingCompleted(defaults.boolean(onboardingCompletedKey).value_or(false))
    , m_preferredInsertionMethod(loadInsertionMethod(defaults))
    , m_hotkeyTipDismissed(defaults.boolean(hotkeyTipDismissedKey).value_or(false))
{
    if (!sharedInstance)
        sharedInstance = this;
}

PreferenceStore::~PreferenceStore()
{
    if (sharedInstance == this)
        sharedInstance = nullptr;
}

PreferenceStore *PreferenceStore::shared()
{
    return sharedInstance;
}

void PreferenceStore::setPreferredShortcut(const KeyboardShortcut &shortcut)
{
    m_preferredShortcut = shortcut;
    Q_EMIT preferredShortcutChanged();
    m_defaults.setData(preferredShortcutKey, m_preferredShortcut.toJson());
}

void PreferenceStore::setLaunchAtLoginEnabled(bool enabled)
{
    m_launchAtLoginEnabled = enabled;
    Q_EMIT launchAtLoginEnabledChanged();
    saveBoolean(launchAtLoginEnabledKey, m_launchAtLoginEnabled);
}

void PreferenceStore::setShowMenuBarIcon(bool shown)
{
    m_showMenuBarIcon = shown;
    Q_EMIT showMenuBarIconChanged();
    saveBoolean(showMenuBarIconKey, m_showMenuBarIcon);
}

void PreferenceStore::setLastSignedInUserID(const std::optional<QString> &userID)
{
    m_lastSignedInUserID = userID;
    Q_EMIT lastSignedInUserIDChanged();
    if (m_lastSignedInUserID)
        m_defaults.setText(lastSignedInUserIDKey, *m_lastSignedInUserID);
    else
        m_defaults.remove(lastSignedInUserIDKey);
}

void PreferenceStore::setOnboardingCompleted(bool completed)
{
    m_onboardingCompleted = completed;
    Q_EMIT onboardingCompletedChanged();
    saveBoolean(onboardingCompletedKey, m_onboardingCompleted);
}

void PreferenceStore::setPreferredInsertionMethod(InsertionMethod method)
{
    m_preferredInsertionMethod = method;
    Q_EMIT preferredInsertionMethodChanged();
    m_defaults.setData(preferredInsertionMethodKey, toJson(m_preferredInsertionMethod));
}

void PreferenceStore::setHotkeyTipDismissed(bool dismissed)
{
    m_hotkeyTipDismissed = dismissed;
    Q_EMIT hotkeyTipDismissedChanged();
    saveBoolean(hotkeyTipDismissedKey, m_hotkeyTipDismissed);
}

// What is written is the property as the observers left it, so that memory and disk cannot disagree.
void PreferenceStore::saveBoolean(const QString &key, bool value)
{
    m_defaults.setBoolean(key, value);
}
