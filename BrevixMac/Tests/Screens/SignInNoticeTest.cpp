// SPDX-License-Identifier: GPL-3.0-or-later
#include "SignInNotice.h"
#include "PickerHeader.h"
#include "PickerNotices.h"
#include "PickerStage.h"
#include "StatusCard.h"
#include "ThemedButton.h"

namespace {

class SignInNoticeTest : public testing::Test
{
protected:
    void begin()
    {
        stage.desk.isSignedIn = false;
        stage.open();
        EXPECT_TRUE(notice().isHidden());
        stage.page().header().signInButton().click();
        ASSERT_TRUE(stage.desk.webAuthenticationSession.running);
    }

    SignInNotice &notice() { return stage.page().notices().signInNotice(); }
    ThemedButton &signIn() { return stage.page().header().signInButton(); }

    PickerStage stage;
};

} // namespace

TEST_F(SignInNoticeTest, saysThatTheBrowserHasTheWordAndOffersAWayOut)
{
    begin();
    EXPECT_TRUE(notice().isVisible());
    EXPECT_EQ(notice().card().title(), u"Continue in your browser");
    EXPECT_FALSE(signIn().isEnabled());
    EXPECT_EQ(signIn().text(), u"Signing In...");
    EXPECT_TRUE(notice().copyLinkButton().isVisible());
    notice().cancelButton().click();
    EXPECT_TRUE(notice().isHidden());
    EXPECT_TRUE(signIn().isEnabled());
    EXPECT_EQ(signIn().text(), u"Sign In");
    EXPECT_EQ(stage.page().notices().authErrorCard().detail(), u"Google sign-in was canceled.");
}

TEST_F(SignInNoticeTest, saysWhenNoBrowserCouldBeOpenedAndCopiesTheLink)
{
    stage.desk.webAuthenticationSession.hasNoBrowser = true;
    begin();
    ASSERT_TRUE(waitUntil([&] { return notice().card().title() == u"No browser could be opened"; }));
    EXPECT_EQ(notice().card().tint(), StatusCard::Tint::warning);
    notice().copyLinkButton().click();
    EXPECT_EQ(notice().card().title(), u"Link copied");
    EXPECT_EQ(stage.desk.pasteboard.text(),
              stage.desk.webAuthenticationSession.running->url.toString(QUrl::FullyEncoded));
}

TEST_F(SignInNoticeTest, saysWhenTheLinkCouldNotBeCopied)
{
    begin();
    stage.desk.pasteboard.refusesText = true;
    notice().copyLinkButton().click();
    EXPECT_EQ(notice().card().title(), u"The link could not be copied");
}

TEST_F(SignInNoticeTest, afterTheBrowserOnlyTheWayOutIsLeft)
{
    begin();
    auto &browser = stage.desk.webAuthenticationSession;
    const QString query = browser.running->url.query(QUrl::FullyEncoded);
    const qsizetype at = query.indexOf(u"state=");
    const QString state = query.mid(at).section(u'&', 0, 0);
    // The exchange gets no further than a server that knows no tokens.
    browser.openURL(u"org.example.app:/oauthredirect?code=c&" + state);
    ASSERT_TRUE(waitUntil([&] { return !stage.appState().authService().pendingAuthorization(); }));
    if (stage.appState().authService().isAuthenticating()) {
        EXPECT_EQ(notice().card().title(), u"Signing In...");
        EXPECT_FALSE(notice().copyLinkButton().isVisible());
    }
    ASSERT_TRUE(waitUntil([&] { return notice().isHidden(); }));
    EXPECT_FALSE(stage.page().notices().authErrorCard().isHidden());
}
