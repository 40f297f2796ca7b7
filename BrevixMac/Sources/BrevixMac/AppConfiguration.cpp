// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppConfiguration.h"

#include "ProgrammingError.h"

#include "Foundation/PropertyList.h"
#include "Foundation/Text.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace {

using OptionalList = std::optional<QVariantMap>;

const QString ownListName = QStringLiteral("FirebaseConfig");
const QString issuedListName = QStringLiteral("GoogleService-Info");

OptionalList loadPlist(const QString &resourceFolder, const QString &name)
{
    return PropertyList::readDictionary(resourceFolder + u'/' + name + u".plist");
}

/// The text under @p key, an empty one included; @p fallback when there is none.
QString textValue(const OptionalList &list, const QString &key, const QString &fallback)
{
    if (!list)
        return fallback;
    const QVariant value = list->value(key);
    return value.typeId() == QMetaType::QString ? value.toString() : fallback;
}

std::optional<QUrl> urlValue(const OptionalList &list, const QString &key)
{
    const QString text = Text::trimmed(textValue(list, key, QString()));
    if (text.isEmpty())
        return std::nullopt;
    const QUrl url(text, QUrl::StrictMode);
    return url.isValid() ? std::optional(url) : std::nullopt;
}

QUrl shareBaseURL(const OptionalList &list)
{
    if (const auto url = urlValue(list, QStringLiteral("PUBLIC_SHARE_BASE_URL")))
        return *url;
    if (const auto url = urlValue(list, QStringLiteral("PUBLIC_WEB_BASE_URL")))
        return *url;
    return AppConfiguration::fallback().publicShareBaseURL;
}

/// Nothing without an address: such a build asks nobody. A key that is none leaves feeds nobody can sign.
UpdateConfiguration updatesFrom(const OptionalList &list)
{
    const QString key = Text::trimmed(textValue(list, QStringLiteral("UPDATE_PUBLIC_KEY"), QString()));
    return {.feedURL = urlValue(list, QStringLiteral("UPDATE_FEED_URL")),
            .publicKey = QByteArray::fromBase64(key.toLatin1())};
}

FirebaseRuntimeConfiguration firebaseFrom(const OptionalList &list)
{
    const FirebaseRuntimeConfiguration &fallback = AppConfiguration::fallback().firebase;
    return {
        .apiKey = textValue(list, QStringLiteral("API_KEY"), fallback.apiKey),
        .projectID = textValue(list, QStringLiteral("PROJECT_ID"), fallback.projectID),
        .gcmSenderID = textValue(list, QStringLiteral("GCM_SENDER_ID"), fallback.gcmSenderID),
        .googleAppID = textValue(list, QStringLiteral("GOOGLE_APP_ID"), fallback.googleAppID),
        .clientID = textValue(list, QStringLiteral("CLIENT_ID"), fallback.clientID),
        .reversedClientID = textValue(list, QStringLiteral("REVERSED_CLIENT_ID"), fallback.reversedClientID),
        .bundleID = textValue(list, QStringLiteral("BUNDLE_ID"), fallback.bundleID),
        .storageBucket = textValue(list, QStringLiteral("STORAGE_BUCKET"), fallback.storageBucket),
    };
}

AppConfiguration makeFallback()
{
    const QUrl origin(QStringLiteral("https://brevix.example"), QUrl::StrictMode);
    if (!origin.isValid())
        stopOnProgrammingError(QStringLiteral("the built-in share origin is no URL"));
    return {
        .firebase =
            {
                .apiKey = QStringLiteral("REPLACE_WITH_FIREBASE_API_KEY"),
                .projectID = QStringLiteral("brevix-library"),
                .gcmSenderID = QStringLiteral("104729318264"),
                .googleAppID = QStringLiteral("REPLACE_WITH_MACOS_GOOGLE_APP_ID"),
                .clientID = QStringLiteral("REPLACE_WITH_MACOS_CLIENT_ID.apps.googleusercontent.com"),
                .reversedClientID = QStringLiteral("REPLACE_WITH_REVERSED_CLIENT_ID"),
                .bundleID = QStringLiteral("app.brevix.Brevix"),
                .storageBucket = QStringLiteral("brevix-library.appspot.com"),
            },
        .logicalLibraryAppID = QStringLiteral("brevix-app-fallback"),
        .supportEmail = QStringLiteral("support@brevix.example"),
        .publicShareBaseURL = origin,
    };
}

/// Where an installation keeps its two lists, so that they can be filled in without building anew.
QString installedFolder()
{
    return QDir::cleanPath(QCoreApplication::applicationDirPath() + u"/../share/brevix");
}

bool holdsAList(const QString &folder)
{
    return QFileInfo::exists(folder + u'/' + issuedListName + u".plist") ||
           QFileInfo::exists(folder + u'/' + ownListName + u".plist");
}

} // namespace

bool FirebaseRuntimeConfiguration::isConfigured() const
{
    const auto isPlaceholder = [](const QString &value) { return value.contains(u"REPLACE"); };
    return !isPlaceholder(apiKey) && !isPlaceholder(googleAppID) && !isPlaceholder(clientID) &&
           !isPlaceholder(reversedClientID);
}

const AppConfiguration &AppConfiguration::fallback()
{
    static const AppConfiguration configuration = makeFallback();
    return configuration;
}

AppConfiguration AppConfiguration::load()
{
    const QString installed = installedFolder();
    return load(holdsAList(installed) ? installed : QStringLiteral(":/brevix"));
}

AppConfiguration AppConfiguration::load(const QString &resourceFolder)
{
    const OptionalList own = loadPlist(resourceFolder, ownListName);
    const OptionalList issued = loadPlist(resourceFolder, issuedListName);
    // A field that the console's list lacks takes its built-in value and not our own list's: the two may
    // belong to different projects, and a mixture would belong to none.
    return {
        .firebase = firebaseFrom(issued ? issued : own),
        .logicalLibraryAppID =
            textValue(own, QStringLiteral("LOGICAL_LIBRARY_APP_ID"), fallback().logicalLibraryAppID),
        .supportEmail = textValue(own, QStringLiteral("SUPPORT_EMAIL"), fallback().supportEmail),
        .publicShareBaseURL = shareBaseURL(own),
        .updates = updatesFrom(own),
    };
}
