// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdateRow.h"

#include "FeedServer.h"
#include "SettingsRow.h"
#include "SignedFeed.h"
#include "ThemedButton.h"
#include "UpdateService.h"

#include "Foundation/HttpClient.h"
#include "Foundation/UserDefaults.h"

#include "Support/InMemoryWebBrowser.h"
#include "Support/Waiting.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class UpdateRowTest : public testing::Test
{
protected:
    UpdateRowTest()
    {
        FeedServer::trustAuthority(true);
        server.serve(signer.feed("0.2.0"));
        row.checkButton().click();
        EXPECT_TRUE(waitUntil([this] { return updates.status().release.has_value(); }));
    }

    QTemporaryDir folder;
    UserDefaults defaults{folder.filePath(QStringLiteral("defaults.plist"))};
    HttpClient http;
    FeedServer server;
    FeedSigner signer;
    UpdateService updates{{.feedURL = server.url(), .publicKey = signer.publicKey()},
                          QStringLiteral("0.1.0"),
                          http,
                          defaults,
                          [] { return QDateTime(QDate(2026, 3, 2), QTime(12, 0), Qt::UTC); }};
    InMemoryWebBrowser browser;
    UpdateRow row{updates, browser};
};

} // namespace

TEST_F(UpdateRowTest, checkingKeepsTheFocus)
{
    row.show();
    row.activateWindow();
    row.checkButton().setFocus();
    row.checkButton().click();
    EXPECT_TRUE(row.checkButton().isBusy());
    EXPECT_EQ(row.focusWidget(), &row.checkButton());
    EXPECT_TRUE(waitUntil([this] { return row.checkButton().isEnabled(); }));
    EXPECT_EQ(row.focusWidget(), &row.checkButton());
}

TEST_F(UpdateRowTest, theReleasePageIsOpenedInTheBrowser)
{
    EXPECT_FALSE(row.releaseButton().isHidden());
    row.releaseButton().click();
    EXPECT_EQ(browser.opened, QList<QUrl>{updates.status().release->page});
    EXPECT_EQ(row.row().note(), updates.status().description());
}

TEST_F(UpdateRowTest, aMissingBrowserIsToldOfWithThePagesAddressUntilTheNextTry)
{
    browser.isMissing = true;
    row.releaseButton().click();
    const QString address = updates.status().release->page.toString();
    ASSERT_TRUE(waitUntil([&] { return row.row().note().contains(address); }));
    EXPECT_TRUE(row.row().note().startsWith(u"No browser could be opened."));

    browser.isMissing = false;
    row.releaseButton().click();
    EXPECT_EQ(row.row().note(), updates.status().description());
}

TEST_F(UpdateRowTest, aPageThatSomebodyElseWantedIsNotItsConcern)
{
    Q_EMIT browser.failed();
    EXPECT_EQ(row.row().note(), updates.status().description());
}
