// SPDX-License-Identifier: GPL-3.0-or-later
#include "LocalCloud/FirestoreWritingFixture.h"

using namespace Cloud;

namespace {

class SharePageTest : public FirestoreWritingFixture
{
protected:
    Response page(const QByteArray &query) const
    {
        return service->handle(getWithoutToken("/public", query));
    }

    void share(const QByteArray &place, const QByteArray &fields)
    {
        const QByteArray path = "artifacts/brevix-app/public/data/" + place;
        ASSERT_EQ(send("PATCH", path, "{\"fields\":{" + fields + "}}").status, 200);
    }

    static QByteArray policy(const Response &response)
    {
        for (const auto &[name, value] : response.headers)
            if (name == "Content-Security-Policy")
                return value;
        return {};
    }
};

} // namespace

TEST_F(SharePageTest, sharedPromptIsShownToEverybodyCharacterByCharacter)
{
    share("sharedPrompts/u1_p%209_1",
          R"("title":{"stringValue":"Greeting"},"text":{"stringValue":"\nDear {{name}},\n  <b> & \"you\""})");
    const Response response = page("promptId=u1_p%209_1");
    ASSERT_EQ(response.status, 200);
    EXPECT_EQ(response.contentType, "text/html; charset=UTF-8");
    EXPECT_TRUE(response.body.contains("<h1>Greeting</h1>"));
    EXPECT_TRUE(response.body.contains("Shared prompt"));
    EXPECT_TRUE(
        response.body.contains("tabindex=\"0\">\n\nDear {{name}},\n  &lt;b&gt; &amp; &quot;you&quot;</pre>"));
}

TEST_F(SharePageTest, sharedSkillSaysThatItIsOne)
{
    share(
        "sharedPrompts/s",
        R"("title":{"stringValue":"Review"},"text":{"stringValue":"T"},"sourceType":{"stringValue":"skill"})");
    EXPECT_TRUE(page("promptId=s").body.contains("Shared skill"));
}

TEST_F(SharePageTest, sharedCategoryShowsEachOfItsPrompts)
{
    share("sharedCategories/c",
          R"("name":{"stringValue":"Work"},"prompts":{"arrayValue":{"values":[
             {"mapValue":{"fields":{"title":{"stringValue":"One"},"text":{"stringValue":"first text"}}}},
             {"mapValue":{"fields":{"text":{"stringValue":"second text"}}}}]}})");
    const QByteArray body = page("categoryId=c").body;
    for (const QByteArray part :
         {"<h1>Work</h1>", "2 prompts", "<h2>One</h2>", "first text", "Untitled Prompt", "second text"})
        EXPECT_TRUE(body.contains(part)) << part.constData();
    share("sharedCategories/empty", R"("name":{"stringValue":"Nothing"})");
    EXPECT_TRUE(page("categoryId=empty").body.contains("no prompt in this category"));
}

TEST_F(SharePageTest, onlyThePagesOwnScriptMayRun)
{
    share(
        "sharedPrompts/x",
        R"("title":{"stringValue":"</title><script>alert(1)</script>%1 %2"},"text":{"stringValue":"</pre><script>alert(2)</script><img src=x onerror=alert(3)>"})");
    const Response response = page("promptId=x");
    EXPECT_EQ(response.body.count("<script"), 1);
    EXPECT_FALSE(response.body.contains("<img"));
    EXPECT_TRUE(response.body.contains("%1 %2")) << "a title is no pattern";
    EXPECT_TRUE(policy(response).contains("script-src 'sha256-"));
    EXPECT_TRUE(policy(response).contains("form-action 'none'"));
    EXPECT_FALSE(policy(response).contains("unsafe"));
}

TEST_F(SharePageTest, linksThatLeadNowhereGetAFriendlyPage)
{
    share("sharedPrompts/p", R"("title":{"stringValue":"T"})");
    share("other/o", R"("title":{"stringValue":"T"})");
    for (const QByteArray query :
         {"", "promptId=", "promptId=none", "categoryId=p", "promptId=p&categoryId=p", "x=y",
          "promptId=..%2Fother%2Fo", "promptId=p%2F", "promptId=%00", "promptId=o"}) {
        const Response response = page(query);
        EXPECT_EQ(response.status, 404) << query.constData();
        EXPECT_TRUE(response.body.contains("Nothing is shared here")) << query.constData();
        EXPECT_FALSE(response.body.contains("<script"));
    }
}

TEST_F(SharePageTest, librariesAreNotShownByAnyLink)
{
    EXPECT_EQ(page("promptId=..%2F..%2F..%2Fusers%2Flocal-user%2Fprompts").status, 404);
    Request post = getWithoutToken("/public", "promptId=p");
    post.method = "POST";
    EXPECT_EQ(status(post), 501);
}
