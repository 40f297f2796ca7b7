// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppStateFixture.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

class AppStateSignInTest : public AppStateFixture
{
protected:
    AppStateSignInTest() { configuration.firebase.reversedClientID = u"org.example.app"_s; }

    void begin()
    {
        start().signIn(true);
        ASSERT_TRUE(webAuthenticationSession.running);
    }
};

} // namespace

TEST_F(AppStateSignInTest, theLinkOfTheWaitingPageCanBeCopied)
{
    EXPECT_FALSE(start().copyAuthorizationLink());
    begin();
    const QString link = webAuthenticationSession.running->url.toString(QUrl::FullyEncoded);
    EXPECT_TRUE(state->copyAuthorizationLink());
    EXPECT_EQ(pasteboard.text(), link);
    state->cancelSignIn();
    EXPECT_FALSE(state->copyAuthorizationLink());
    EXPECT_EQ(state->authService().authErrorMessage(), u"Google sign-in was canceled."_s);
}

TEST_F(AppStateSignInTest, thePickerShowsWhatCameOfASignInButNotItsCancellation)
{
    using Error = WebAuthenticationError;
    begin();
    state->cancelSignIn();
    EXPECT_FALSE(waitUntil([&] { return presented > 0; }, 50ms));
    state->signIn(true);
    webAuthenticationSession.end({.error = Error(Error::Code::timedOut, u"late"_s)});
    EXPECT_TRUE(waitUntil([&] { return presented == 1; }));
    EXPECT_EQ(state->authService().authErrorMessage(), u"late"_s);
}

TEST_F(AppStateSignInTest, aPickerThatIsOpenIsNotOpenedAgain)
{
    begin();
    openPicker();
    state->setQuery(u"typed"_s);
    webAuthenticationSession.end({.error = WebAuthenticationError(WebAuthenticationError::Code::timedOut)});
    ASSERT_TRUE(waitUntil([&] { return !state->authService().isAuthenticating(); }));
    EXPECT_FALSE(waitUntil([&] { return presented > 1; }, 50ms));
    EXPECT_EQ(state->query(), u"typed"_s);
}

TEST_F(AppStateSignInTest, quittingWithThePageOpenIsHarmless)
{
    begin();
    state.reset();
    EXPECT_FALSE(webAuthenticationSession.running);
    EXPECT_FALSE(waitUntil([&] { return presented > 0; }, 50ms));
}
