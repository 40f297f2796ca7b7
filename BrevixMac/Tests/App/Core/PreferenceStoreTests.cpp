// SPDX-License-Identifier: GPL-3.0-or-later
#include "PreferenceStore.h"

#include "Samples.h"

#include "Foundation/UserDefaults.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

class PreferenceStoreTest : public testing::Test
{
protected:
    QTemporaryDir folder;
    UserDefaults defaults{folder.filePath(u"preferences.plist"_s)};
};

} // namespace

TEST_F(PreferenceStoreTest, aFreshInstallationHasTheDefaults)
{
    const PreferenceStore store(defaults);
    EXPECT_EQ(store.preferredShortcut(), (KeyboardShortcut{35, 0x120000}));
    EXPECT_EQ(store.preferredInsertionMethod(), InsertionMethod::hybrid);
    EXPECT_TRUE(store.showMenuBarIcon());
    EXPECT_FALSE(store.launchAtLoginEnabled());
    EXPECT_FALSE(store.onboardingCompleted());
    EXPECT_FALSE(store.hotkeyTipDismissed());
    EXPECT_EQ(store.lastSignedInUserID(), std::nullopt);
}

TEST_F(PreferenceStoreTest, everyValueSurvivesARestartUnderItsKeyAndForm)
{
    {
        PreferenceStore store(defaults);
        store.setPreferredShortcut({49, KeyboardShortcut::control});
        store.setLaunchAtLoginEnabled(true);
        store.setShowMenuBarIcon(false);
        store.setLastSignedInUserID(u"user"_s);
        store.setOnboardingCompleted(true);
        store.setPreferredInsertionMethod(InsertionMethod::clipboardPaste);
        store.setHotkeyTipDismissed(true);
    }
    defaults.waitForWrites();
    UserDefaults reread(defaults.filePath());
    const QJsonObject shortcut =
        QJsonDocument::fromJson(reread.data(u"preferredShortcut"_s).value()).object();
    EXPECT_EQ(shortcut.value(u"keyCode").toInt(), 49);
    EXPECT_EQ(shortcut.value(u"modifiers").toInt(), 0x40000);
    EXPECT_EQ(reread.data(u"preferredInsertionMethod"_s), QByteArray("\"clipboardPaste\""));
    EXPECT_EQ(reread.boolean(u"launchAtLoginEnabled"_s), true);
    EXPECT_EQ(reread.boolean(u"showMenuBarIcon"_s), false);
    EXPECT_EQ(reread.boolean(u"onboardingCompleted"_s), true);
    EXPECT_EQ(reread.boolean(u"hotkeyTipDismissed"_s), true);
    EXPECT_EQ(reread.text(u"lastSignedInUserID"_s), u"user"_s);

    const PreferenceStore store(reread);
    EXPECT_EQ(store.preferredShortcut(), (KeyboardShortcut{49, KeyboardShortcut::control}));
    EXPECT_EQ(store.preferredInsertionMethod(), InsertionMethod::clipboardPaste);
    EXPECT_FALSE(store.showMenuBarIcon());
    EXPECT_TRUE(store.launchAtLoginEnabled());
    EXPECT_TRUE(store.onboardingCompleted());
    EXPECT_TRUE(store.hotkeyTipDismissed());
    EXPECT_EQ(store.lastSignedInUserID(), u"user"_s);
}

TEST_F(PreferenceStoreTest, assigningAnAbsentUserRemovesTheKey)
{
    PreferenceStore store(defaults);
    store.setLastSignedInUserID(u"user"_s);
    store.setLastSignedInUserID(std::nullopt);
    EXPECT_EQ(defaults.text(u"lastSignedInUserID"_s), std::nullopt);
    EXPECT_EQ(PreferenceStore(defaults).lastSignedInUserID(), std::nullopt);
}

TEST_F(PreferenceStoreTest, mistypedValuesReadAsDefaultsAndAreLeftAlone)
{
    defaults.setText(u"showMenuBarIcon"_s, u"false"_s);
    defaults.setText(u"launchAtLoginEnabled"_s, u"true"_s);
    defaults.setText(u"preferredShortcut"_s, u"{\"keyCode\":1,\"modifiers\":0}"_s);
    defaults.setText(u"preferredInsertionMethod"_s, u"\"copiedOnly\""_s);
    defaults.setBoolean(u"lastSignedInUserID"_s, true);
    const PreferenceStore store(defaults);
    EXPECT_TRUE(store.showMenuBarIcon());
    EXPECT_FALSE(store.launchAtLoginEnabled());
    EXPECT_EQ(store.preferredShortcut(), KeyboardShortcut());
    EXPECT_EQ(store.preferredInsertionMethod(), InsertionMethod::hybrid);
    EXPECT_EQ(store.lastSignedInUserID(), std::nullopt);
    EXPECT_EQ(defaults.text(u"showMenuBarIcon"_s), u"false"_s);
}

TEST_F(PreferenceStoreTest, unreadableMethodsReadAsHybrid)
{
    for (const char *json : {"", "hybrid", "\"paste\"", "[\"copiedOnly\"]", "\"copiedOnly\",\"copiedOnly\"",
                             "3", "\"copiedOnly", "\xff\xfe"}) {
        defaults.setData(u"preferredInsertionMethod"_s, json);
        EXPECT_EQ(PreferenceStore(defaults).preferredInsertionMethod(), InsertionMethod::hybrid) << json;
    }
}

TEST_F(PreferenceStoreTest, observersHearOfAChangeBeforeItIsWritten)
{
    PreferenceStore store(defaults);
    std::optional<bool> shown, written;
    QObject::connect(&store, &PreferenceStore::showMenuBarIconChanged, &store, [&] {
        shown = store.showMenuBarIcon();
        written = defaults.boolean(u"showMenuBarIcon"_s);
    });
    store.setShowMenuBarIcon(false);
    EXPECT_EQ(shown, false);
    EXPECT_EQ(written, std::nullopt);
    EXPECT_EQ(defaults.boolean(u"showMenuBarIcon"_s), false);
}

TEST_F(PreferenceStoreTest, assigningTheValueItHasWritesIt)
{
    PreferenceStore store(defaults);
    store.setOnboardingCompleted(false);
    EXPECT_EQ(defaults.boolean(u"onboardingCompleted"_s), false);
}

TEST(SharedPreferences, areTheFirstStoreWhileItLives)
{
    const QTemporaryDir folder;
    UserDefaults defaults(folder.filePath(u"defaults.plist"_s));
    EXPECT_EQ(PreferenceStore::shared(), nullptr);
    {
        const PreferenceStore first(defaults);
        const PreferenceStore second(defaults);
        EXPECT_EQ(PreferenceStore::shared(), &first);
    }
    EXPECT_EQ(PreferenceStore::shared(), nullptr);
}
