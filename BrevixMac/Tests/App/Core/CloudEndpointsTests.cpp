// SPDX-License-Identifier: GPL-3.0-or-later
#include "CloudEndpoints.h"

#include "Samples.h"

#include "Support/TestMain.h"

#include <QProcessEnvironment>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

QString documents(const CloudEndpoints &endpoints, const QString &project = u"p"_s)
{
    const auto url = endpoints.firestoreDocuments(project, u"a/b%20c"_s, u"pageSize=500"_s);
    return url ? url->toString(QUrl::FullyEncoded) : u"none"_s;
}

QString token(const CloudEndpoints &endpoints, const QString &key = u"k"_s)
{
    const auto url = endpoints.secureToken(key);
    return url ? url->toString(QUrl::FullyEncoded) : u"none"_s;
}

CloudEndpoints production(const QMap<QString, QString> &variables)
{
    QProcessEnvironment environment;
    for (auto it = variables.cbegin(); it != variables.cend(); ++it)
        environment.insert(it.key(), it.value());
    return CloudEndpoints::production(environment);
}

} // namespace

TEST(CloudEndpoints, theRealHostsAreReachedOverHttps)
{
    const CloudEndpoints endpoints = production({});
    EXPECT_EQ(
        documents(endpoints),
        u"https://firestore.googleapis.com/v1/projects/p/databases/(default)/documents/a/b%20c?pageSize=500"_s);
    EXPECT_EQ(token(endpoints), u"https://securetoken.googleapis.com/v1/token?key=k"_s);
    EXPECT_EQ(endpoints.firestoreDocuments(u"p"_s, u"a"_s)->toString(),
              u"https://firestore.googleapis.com/v1/projects/p/databases/(default)/documents/a"_s);
}

TEST(CloudEndpoints, aLocalCloudHasEverythingAtOneOrigin)
{
    const CloudEndpoints endpoints = CloudEndpoints::local(QUrl(u"http://127.0.0.1:4000"_s));
    EXPECT_EQ(documents(endpoints),
              u"http://127.0.0.1:4000/v1/projects/p/databases/(default)/documents/a/b%20c?pageSize=500"_s);
    EXPECT_EQ(token(endpoints), u"http://127.0.0.1:4000/securetoken.googleapis.com/v1/token?key=k"_s);
}

TEST(CloudEndpoints, signInAndFunctionsHaveTheirPathsOnEachKindOfHost)
{
    const auto text = [](const std::optional<QUrl> &url) {
        return url ? url->toString(QUrl::FullyEncoded) : u"none"_s;
    };
    const CloudEndpoints real = production({});
    EXPECT_EQ(text(real.authorization()), u"https://accounts.google.com/o/oauth2/v2/auth"_s);
    EXPECT_EQ(text(real.tokenExchange()), u"https://oauth2.googleapis.com/token"_s);
    EXPECT_EQ(text(real.signInWithIdp(u"k&"_s)),
              u"https://identitytoolkit.googleapis.com/v1/accounts:signInWithIdp?key=k%26"_s);
    EXPECT_EQ(text(real.callableFunction(u"p"_s, u"optimizePrompt"_s)),
              u"https://us-central1-p.cloudfunctions.net/optimizePrompt"_s);

    const CloudEndpoints local = CloudEndpoints::local(QUrl(u"http://127.0.0.1:4000"_s));
    EXPECT_EQ(text(local.authorization()), u"http://127.0.0.1:4000/o/oauth2/v2/auth"_s);
    EXPECT_EQ(text(local.tokenExchange()), u"http://127.0.0.1:4000/token"_s);
    EXPECT_EQ(text(local.signInWithIdp(u"k"_s)),
              u"http://127.0.0.1:4000/identitytoolkit.googleapis.com/v1/accounts:signInWithIdp?key=k"_s);
    EXPECT_EQ(text(local.callableFunction(u"p"_s, u"optimizePrompt"_s)),
              u"http://127.0.0.1:4000/p/us-central1/optimizePrompt"_s);

    const CloudEndpoints emulated = production({{u"FIREBASE_AUTH_EMULATOR_HOST"_s, u"127.0.0.1:9099"_s}});
    EXPECT_EQ(text(emulated.authorization()), text(real.authorization()));
    EXPECT_EQ(text(emulated.tokenExchange()), text(real.tokenExchange()));
    EXPECT_EQ(text(emulated.signInWithIdp(u"k"_s)),
              u"http://127.0.0.1:9099/identitytoolkit.googleapis.com/v1/accounts:signInWithIdp?key=k"_s);

    const CloudEndpoints nowhere = CloudEndpoints::local(QUrl());
    EXPECT_EQ(nowhere.authorization(), std::nullopt);
    EXPECT_EQ(nowhere.tokenExchange(), std::nullopt);
    EXPECT_EQ(nowhere.signInWithIdp(u"k"_s), std::nullopt);
    EXPECT_EQ(nowhere.callableFunction(u"p"_s, u"f"_s), std::nullopt);
}

TEST(CloudEndpoints, aProjectNameCannotSendTheTokenToAnotherHost)
{
    for (const QString &project : {u"x.evil.example/"_s, u"@evil.example/"_s, u"x#"_s, u"x?"_s, u"a b"_s})
        EXPECT_EQ(production({}).callableFunction(project, u"f"_s), std::nullopt) << project.toStdString();
}

TEST(CloudEndpoints, everySetOfServicesIsAnIssuerOfItsOwn)
{
    const QString real = production({}).issuer();
    const QString firestore = production({{u"FIRESTORE_EMULATOR_HOST"_s, u"localhost:8080"_s}}).issuer();
    const QString authentication =
        production({{u"FIREBASE_AUTH_EMULATOR_HOST"_s, u"localhost:8080"_s}}).issuer();
    const QString local = CloudEndpoints::local(QUrl(u"http://127.0.0.1:4000"_s)).issuer();
    EXPECT_EQ(QSet<QString>({real, firestore, authentication, local}).size(), 4);
    EXPECT_EQ(local, CloudEndpoints::local(QUrl(u"http://127.0.0.1:4001"_s)).issuer());
}

TEST(CloudEndpoints, eachEmulatorReplacesItsOwnHost)
{
    const CloudEndpoints firestore = production({{u"FIRESTORE_EMULATOR_HOST"_s, u"localhost:8080"_s}});
    EXPECT_TRUE(documents(firestore).startsWith(u"http://localhost:8080/v1/projects/p/"_s));
    EXPECT_EQ(token(firestore), u"https://securetoken.googleapis.com/v1/token?key=k"_s);
    const CloudEndpoints authentication =
        production({{u"FIREBASE_AUTH_EMULATOR_HOST"_s, u"127.0.0.1:9099"_s}});
    EXPECT_TRUE(documents(authentication).startsWith(u"https://firestore.googleapis.com/"_s));
    EXPECT_EQ(token(authentication), u"http://127.0.0.1:9099/securetoken.googleapis.com/v1/token?key=k"_s);
}

TEST(CloudEndpoints, anUnusableEmulatorNeverFallsBackToTheRealService)
{
    expectWarning(u"must be host:port"_s);
    for (const QString &value :
         {u"http://localhost:8080"_s, u"localhost:8080/path"_s, u"local host"_s, u":80"_s}) {
        const CloudEndpoints endpoints =
            production({{u"FIRESTORE_EMULATOR_HOST"_s, value}, {u"FIREBASE_AUTH_EMULATOR_HOST"_s, value}});
        EXPECT_EQ(documents(endpoints), u"none"_s) << value.toStdString();
        EXPECT_EQ(token(endpoints), u"none"_s) << value.toStdString();
    }
}

TEST(CloudEndpoints, awkwardPartsGiveAValidUrlOrNone)
{
    const CloudEndpoints endpoints = production({});
    EXPECT_EQ(documents(endpoints, u"a b"_s), u"none"_s);
    EXPECT_EQ(token(endpoints, u"a&b=#c"_s),
              u"https://securetoken.googleapis.com/v1/token?key=a%26b%3D%23c"_s);
}

TEST(CloudEndpoints, serverOfSomebodyElseIsReachedPrivatelyAndIssuesItsOwnSessions)
{
    const auto server = CloudEndpoints::server(QUrl(u"https://library.example.org:8443"_s));
    ASSERT_TRUE(server);
    EXPECT_TRUE(documents(*server).startsWith(u"https://library.example.org:8443/v1/projects/p/"_s));
    EXPECT_NE(server->issuer(), CloudEndpoints::local(QUrl(u"http://127.0.0.1:4000"_s)).issuer());
    EXPECT_NE(server->issuer(), CloudEndpoints::server(QUrl(u"https://other.example.org"_s))->issuer());
    EXPECT_TRUE(CloudEndpoints::server(QUrl(u"http://localhost:8787"_s)));
    for (const QString &url : {u""_s, u"http://library.example.org"_s, u"https://library.example.org/path"_s,
                               u"https://a:b@library.example.org"_s, u"https://library.example.org?q"_s,
                               u"nonsense"_s, u"https://"_s})
        EXPECT_FALSE(CloudEndpoints::server(QUrl(url))) << qPrintable(url);
}
