// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppConfiguration.h"

#include "FirebaseBootstrap.h"
#include "Samples.h"

#include "Foundation/PropertyList.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

class AppConfigurationTest : public testing::Test
{
protected:
    void write(const QString &name, const QByteArray &bytes)
    {
        QFile file(folder.filePath(name + u".plist"_s));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    void writeOwn(const QVariantMap &list) { write(u"FirebaseConfig"_s, PropertyList::serialize(list)); }
    void writeIssued(const QVariantMap &list)
    {
        write(u"GoogleService-Info"_s, PropertyList::serialize(list));
    }
    AppConfiguration load() const { return AppConfiguration::load(folder.path()); }

    QTemporaryDir folder;
    const AppConfiguration &fallback = AppConfiguration::fallback();
};

QVariantMap allFirebaseFields(const QString &suffix)
{
    QVariantMap list;
    for (const QString &key : {u"API_KEY"_s, u"PROJECT_ID"_s, u"GCM_SENDER_ID"_s, u"GOOGLE_APP_ID"_s,
                               u"CLIENT_ID"_s, u"REVERSED_CLIENT_ID"_s, u"BUNDLE_ID"_s, u"STORAGE_BUCKET"_s})
        list.insert(key, QString(key + suffix));
    return list;
}

FirebaseRuntimeConfiguration expectedFirebase(const QString &suffix)
{
    return {u"API_KEY"_s + suffix,       u"PROJECT_ID"_s + suffix,    u"GCM_SENDER_ID"_s + suffix,
            u"GOOGLE_APP_ID"_s + suffix, u"CLIENT_ID"_s + suffix,     u"REVERSED_CLIENT_ID"_s + suffix,
            u"BUNDLE_ID"_s + suffix,     u"STORAGE_BUCKET"_s + suffix};
}

} // namespace

TEST_F(AppConfigurationTest, withoutListsEveryValueIsBuiltIn)
{
    EXPECT_EQ(load(), fallback);
    EXPECT_EQ(fallback.firebase.apiKey, u"REPLACE_WITH_FIREBASE_API_KEY"_s);
    EXPECT_EQ(fallback.firebase.googleAppID, u"REPLACE_WITH_MACOS_GOOGLE_APP_ID"_s);
    EXPECT_EQ(fallback.firebase.clientID, u"REPLACE_WITH_MACOS_CLIENT_ID.apps.googleusercontent.com"_s);
    EXPECT_EQ(fallback.firebase.reversedClientID, u"REPLACE_WITH_REVERSED_CLIENT_ID"_s);
    EXPECT_EQ(fallback.logicalLibraryAppID, u"brevix-app-fallback"_s);
    EXPECT_EQ(fallback.publicShareBaseURL.scheme(), u"https"_s);
    EXPECT_TRUE(fallback.publicShareBaseURL.path().isEmpty());
    EXPECT_FALSE(fallback.firebase.isConfigured());
}

TEST_F(AppConfigurationTest, theListsOfTheProgramAreSoundAndNotConfiguredYet)
{
    const AppConfiguration configuration = AppConfiguration::load();
    EXPECT_EQ(configuration.logicalLibraryAppID, u"brevix-app"_s);
    EXPECT_EQ(configuration.firebase, fallback.firebase);
    EXPECT_FALSE(configuration.firebase.isConfigured());
}

TEST_F(AppConfigurationTest, withoutAnInstalledFolderTheProgramsOwnListsCount)
{
    // The test program is installed nowhere.
    EXPECT_EQ(AppConfiguration::load(), AppConfiguration::load(u":/brevix"_s));
    const QString installed = QDir::cleanPath(QCoreApplication::applicationDirPath() + u"/../share/brevix"_s);
    ASSERT_FALSE(QFile::exists(installed)) << qPrintable(installed);
    ASSERT_TRUE(QDir().mkpath(installed));
    writeOwn({{u"LOGICAL_LIBRARY_APP_ID"_s, u"installed-app"_s}});
    ASSERT_TRUE(
        QFile::copy(folder.filePath(u"FirebaseConfig.plist"_s), installed + u"/FirebaseConfig.plist"_s));
    EXPECT_EQ(AppConfiguration::load().logicalLibraryAppID, u"installed-app"_s);
    QDir(installed).removeRecursively();
    QDir().rmdir(QFileInfo(installed).path());
}

TEST_F(AppConfigurationTest, theIssuedListGivesTheFirebaseFieldsAndOursTheRest)
{
    writeIssued(allFirebaseFields(u"1"_s));
    QVariantMap own = allFirebaseFields(u"2"_s);
    own.insert(u"LOGICAL_LIBRARY_APP_ID"_s, u"library"_s);
    own.insert(u"SUPPORT_EMAIL"_s, u"help@b.example"_s);
    own.insert(u"PUBLIC_SHARE_BASE_URL"_s, u"https://share.example/x"_s);
    writeOwn(own);
    const AppConfiguration configuration = load();
    EXPECT_EQ(configuration.firebase, expectedFirebase(u"1"_s));
    EXPECT_EQ(configuration.logicalLibraryAppID, u"library"_s);
    EXPECT_EQ(configuration.supportEmail, u"help@b.example"_s);
    EXPECT_EQ(configuration.publicShareBaseURL, QUrl(u"https://share.example/x"_s));
    EXPECT_TRUE(configuration.firebase.isConfigured());
}

TEST_F(AppConfigurationTest, ourListAloneGivesEverything)
{
    writeOwn(allFirebaseFields(u"2"_s));
    EXPECT_EQ(load().firebase, expectedFirebase(u"2"_s));
}

TEST_F(AppConfigurationTest, aFieldThatTheIssuedListLacksIsBuiltInAndNotOurs)
{
    QVariantMap issued = allFirebaseFields(u"1"_s);
    issued.remove(u"CLIENT_ID"_s);
    writeIssued(issued);
    writeOwn(allFirebaseFields(u"2"_s));
    EXPECT_EQ(load().firebase.clientID, fallback.firebase.clientID);
    EXPECT_FALSE(load().firebase.isConfigured());
}

TEST_F(AppConfigurationTest, theIssuedListAloneLeavesTheRestBuiltIn)
{
    writeIssued(allFirebaseFields(u"1"_s));
    EXPECT_EQ(load().logicalLibraryAppID, u"brevix-app-fallback"_s);
    EXPECT_EQ(load().supportEmail, fallback.supportEmail);
    EXPECT_EQ(load().publicShareBaseURL, fallback.publicShareBaseURL);
}

TEST_F(AppConfigurationTest, onlyTextsCountAndEmptyOnesDo)
{
    QVariantMap issued = allFirebaseFields(u"1"_s);
    issued.insert(u"API_KEY"_s, 5);
    issued.insert(u"PROJECT_ID"_s, QString());
    issued.insert(u"BUNDLE_ID"_s, QByteArray("data"));
    writeIssued(issued);
    EXPECT_EQ(load().firebase.apiKey, fallback.firebase.apiKey);
    EXPECT_EQ(load().firebase.projectID, QString());
    EXPECT_EQ(load().firebase.bundleID, fallback.firebase.bundleID);
}

TEST_F(AppConfigurationTest, damagedListsCountAsMissing)
{
    write(u"FirebaseConfig"_s, "not a list");
    write(u"GoogleService-Info"_s, "<?xml version=\"1.0\"?><plist version=\"1.0\"><array/></plist>");
    EXPECT_EQ(load(), fallback);
}

TEST_F(AppConfigurationTest, shareAddressesAreTrimmedAndFallBackInTurn)
{
    const QUrl share(u"https://share.example"_s), web(u"https://web.example"_s);
    const std::tuple<QVariant, QVariant, QUrl> rows[] = {
        {u" https://share.example\n"_s, u"https://web.example"_s, share},
        {u"   "_s, u"https://web.example"_s, web},
        {5, u"https://web.example"_s, web},
        {u"https://bad host"_s, u"https://web.example"_s, web},
        {u""_s, u" "_s, fallback.publicShareBaseURL},
    };
    for (const auto &[shareText, webText, expected] : rows) {
        writeOwn({{u"PUBLIC_SHARE_BASE_URL"_s, shareText}, {u"PUBLIC_WEB_BASE_URL"_s, webText}});
        EXPECT_EQ(load().publicShareBaseURL, expected);
    }
}

TEST_F(AppConfigurationTest, placeholdersInFourFieldsMeanNotConfigured)
{
    using F = FirebaseRuntimeConfiguration;
    const F real = expectedFirebase(u""_s);
    for (QString F::*field : {&F::apiKey, &F::googleAppID, &F::clientID, &F::reversedClientID}) {
        F placeholder = real;
        placeholder.*field = u"xREPLACEx"_s;
        EXPECT_FALSE(placeholder.isConfigured());
        placeholder.*field = u"replace"_s;
        EXPECT_TRUE(placeholder.isConfigured());
    }
    for (QString F::*field : {&F::projectID, &F::gcmSenderID, &F::bundleID, &F::storageBucket}) {
        F placeholder = real;
        placeholder.*field = u"REPLACE"_s;
        EXPECT_TRUE(placeholder.isConfigured());
    }
}

TEST_F(AppConfigurationTest, theBootstrapSaysWhatIsMissing)
{
    FirebaseBootstrap bootstrap(fallback);
    EXPECT_EQ(bootstrap.statusMessage(), std::nullopt);
    bootstrap.check();
    EXPECT_EQ(bootstrap.statusMessage(),
              u"Add BrevixMac/Sources/BrevixMac/Resources/GoogleService-Info.plist or update the fallback "
              u"FirebaseConfig.plist with valid native macOS Firebase values."_s);
    AppConfiguration configured = fallback;
    configured.firebase = expectedFirebase(u""_s);
    FirebaseBootstrap sound(configured);
    sound.check();
    EXPECT_EQ(sound.statusMessage(), std::nullopt);
}
