// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <optional>

/// The Firebase project's values. A value.
struct FirebaseRuntimeConfiguration
{
    QString apiKey;
    QString projectID;
    QString gcmSenderID;
    QString googleAppID;
    QString clientID;
    QString reversedClientID;
    QString bundleID;
    QString storageBucket;

    /// False while a value that must be real still holds a "REPLACE…" text.
    bool isConfigured() const;

    bool operator==(const FirebaseRuntimeConfiguration &) const = default;
};

/// Where updates are announced and whose signature counts. Without an address nothing is ever asked. A value.
struct UpdateConfiguration
{
    std::optional<QUrl> feedURL = {};
    QByteArray publicKey = {};

    bool operator==(const UpdateConfiguration &) const = default;
};

/// The cloud settings, read once at start and passed by value. A value.
struct AppConfiguration
{
    FirebaseRuntimeConfiguration firebase;
    QString logicalLibraryAppID;
    QString supportEmail;
    QUrl publicShareBaseURL;
    UpdateConfiguration updates = {};

    /// The built-in values; a process-wide constant.
    static const AppConfiguration &fallback();

    /// Reads the two property lists from the application's resources. Whatever is missing, unreadable or of
    /// the wrong kind takes its built-in value; never fails.
    static AppConfiguration load();

    /// The same from the folder @p resourceFolder.
    static AppConfiguration load(const QString &resourceFolder);

    bool operator==(const AppConfiguration &) const = default;
};
