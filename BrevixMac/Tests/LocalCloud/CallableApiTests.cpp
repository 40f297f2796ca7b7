// SPDX-License-Identifier: GPL-3.0-or-later
#include "LocalCloud/ModelOptions.h"
#include "LocalCloud/PromptTidying.h"
#include "LocalCloud/ServiceFixture.h"
#include "Support/Waiting.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcessEnvironment>
#include <QTcpServer>
#include <QTcpSocket>

using namespace Cloud;

namespace {

class CallableTest : public ServiceFixture
{
protected:
    Response call(const QByteArray &body, const QByteArray &path = "/demo/us-central1/optimizePrompt")
    {
        Request request = get(path);
        request.method = "POST";
        request.body = body;
        return service->handle(request);
    }

    static QByteArray status(const Response &response)
    {
        return errorOf(response).value(u"status").toString().toLatin1();
    }
};

/// A language model that answers what it is told to.
class ModelStub
{
public:
    ModelStub()
    {
        EXPECT_TRUE(server.listen(QHostAddress::LocalHost));
        QObject::connect(&server, &QTcpServer::newConnection, &server, [this] {
            QTcpSocket *socket = server.nextPendingConnection();
            QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
                received += socket->readAll();
                if (answer.isEmpty() || !received.contains("\r\n\r\n") || !received.endsWith("}"))
                    return;
                socket->write(answer);
                socket->disconnectFromHost();
            });
        });
    }

    QUrl url() const { return QUrl(QStringLiteral("http://127.0.0.1:%1/v1/").arg(server.serverPort())); }

    void answerText(const QByteArray &text)
    {
        answerWith("200 OK", "{\"choices\":[{\"message\":{\"content\":\"" + text + "\"}}]}");
    }

    void answerWith(const QByteArray &status, const QByteArray &body)
    {
        answer = "HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(body.size()) +
                 "\r\nConnection: close\r\n\r\n" + body;
    }

    QTcpServer server;
    QByteArray received;
    QByteArray answer;
};

class ModelTest : public CallableTest
{
protected:
    ModelTest()
    {
        Site site = demoSite();
        site.model = {model.url(), QStringLiteral("a-model"), "secret-key"};
        service = std::make_unique<Service>(site, databasePath(), signingKey, [this] { return now; });
        session = service->issueLocalSession();
    }

    /// The answer once it is there.
    Response optimized(const QByteArray &prompt)
    {
        const Response pending = call("{\"data\":{\"prompt\":\"" + prompt + "\"}}");
        EXPECT_TRUE(pending.later);
        std::optional<Response> answer;
        if (pending.later)
            pending.later([&](const Response &response) { answer = response; });
        EXPECT_TRUE(waitUntil([&] { return answer.has_value(); }));
        return answer.value_or(Response());
    }

    ModelStub model;
};

} // namespace

TEST(PromptTidying, promptsBecomeRegular)
{
    const struct
    {
        const char16_t *before, *after;
    } rows[] = {
        {u"  summarise   this text  ", u"Summarise this text."},
        {u"Could you please summarise {{text}}?", u"Summarise {{text}}."},
        {u"hi, can you list the risks?", u"List the risks."},
        {u"I would like you to translate this", u"Translate this."},
        {u"Please  write\r\n\r\n\r\n\r\na poem !!", u"Write\n\na poem!"},
        {u"* one\n\u2022 two", u"- one\n- two"},
        {u"Use {{  odd   name }} and {{a}}  twice", u"Use {{  odd   name }} and {{a}} twice."},
        {u"{{please}}", u"{{please}}"},
        {u"keep `two  spaces` here", u"Keep `two  spaces` here."},
        {u"run\n```\n  a   b\n\n\n\nc\n```", u"Run\n```\n  a   b\n\n\n\nc\n```"},
        {u"Is this right?", u"Is this right?"},
        {u"Please", u"Please"},
        {u"\u00fcbersetze das", u"\u00dcbersetze das."},
        {u"  if x:\n    y", u"If x:\n    y"},
        {u"odd \ufdd0  text", u"odd \ufdd0  text"},
    };
    for (const auto &[before, after] : rows) {
        EXPECT_EQ(tidiedPrompt(QString::fromUtf16(before)), QString::fromUtf16(after))
            << qPrintable(QString::fromUtf16(before));
        EXPECT_EQ(tidiedPrompt(QString::fromUtf16(after)), QString::fromUtf16(after)) << "tidy already";
    }
}

TEST(PromptTidying, hostilePromptsTakeNoTime)
{
    constexpr int size = 100'000;
    QElapsedTimer timer;
    timer.start();
    const QStringList prompts{QString(size, u' ') + u'x',
                              u'x' + QString(size, u' ') + u'x',
                              QStringLiteral("x ").repeated(size / 2),
                              QStringLiteral("{{").repeated(size / 2),
                              QString(size, u'`'),
                              QString(size, u'!'),
                              QString(size, u'\n') + u'x',
                              QStringLiteral("x\n ").repeated(size / 3),
                              QStringLiteral("please ").repeated(size / 7)};
    for (const QString &prompt : prompts)
        tidiedPrompt(prompt);
    EXPECT_LT(timer.elapsed(), 3000);
}

TEST_F(CallableTest, promptIsTidiedByRulesWhenThereIsNoModel)
{
    const Response response = call(R"({"data":{"prompt":"could you please greet {{name}}?"}})");
    ASSERT_EQ(response.status, 200);
    const QJsonObject result = jsonOf(response).value(u"result").toObject();
    EXPECT_EQ(result.value(u"text").toString(), QStringLiteral("Greet {{name}}."));
    EXPECT_EQ(result.value(u"source").toString(), QStringLiteral("rules"));
}

TEST_F(CallableTest, badCallsAreAnsweredInTheShapeOfCallableErrors)
{
    for (const QByteArray body : {"", "[]", "{}", R"({"data":null})", R"({"data":{}})",
                                  R"({"data":{"prompt":1}})", R"({"data":{"prompt":" \n"}})"}) {
        EXPECT_EQ(call(body).status, 400) << body.constData();
        EXPECT_EQ(status(call(body)), "INVALID_ARGUMENT") << body.constData();
    }
    const QByteArray tooLong = "{\"data\":{\"prompt\":\"" + QByteArray(100'001, 'x') + "\"}}";
    EXPECT_EQ(status(call(tooLong)), "INVALID_ARGUMENT");
    EXPECT_EQ(call("{}", "/demo/us-central1/other").status, 404);
    EXPECT_EQ(status(call("{}", "/demo/us-central1/other")), "NOT_FOUND");
    EXPECT_EQ(call("{}", "/other/us-central1/optimizePrompt").status, 404);
    session.idToken = "nonsense";
    EXPECT_EQ(call(R"({"data":{"prompt":"x"}})").status, 401);
    EXPECT_EQ(status(call(R"({"data":{"prompt":"x"}})")), "UNAUTHENTICATED");
}

TEST_F(ModelTest, modelImprovesThePrompt)
{
    model.answerText(" Better {{name}}\\n");
    const Response response = optimized("greet {{name}}");
    ASSERT_EQ(response.status, 200) << response.body.constData();
    EXPECT_EQ(jsonOf(response).value(u"result").toObject().value(u"text").toString(),
              QStringLiteral("Better {{name}}"));
    EXPECT_EQ(jsonOf(response).value(u"result").toObject().value(u"source").toString(),
              QStringLiteral("model"));
    EXPECT_TRUE(model.received.startsWith("POST /v1/chat/completions "));
    EXPECT_TRUE(model.received.toLower().contains("authorization: bearer secret-key"));
    EXPECT_TRUE(model.received.contains("\"model\":\"a-model\""));
    EXPECT_TRUE(model.received.contains("greet {{name}}"));
}

TEST_F(ModelTest, modelsFailuresAreCallableErrors)
{
    const struct
    {
        QByteArray status, body, error;
    } rows[] = {
        {"401 Unauthorized", "secret-key is wrong", "FAILED_PRECONDITION"},
        {"429 Too Many Requests", "{}", "RESOURCE_EXHAUSTED"},
        {"500 Oops", "<html>", "UNAVAILABLE"},
        {"200 OK", "not json", "INTERNAL"},
        {"200 OK", R"({"choices":[]})", "INTERNAL"},
        {"200 OK", R"({"choices":[{"message":{"content":" "}}]})", "INTERNAL"},
        {"200 OK", R"({"choices":[{"message":{"content":"lost the variable"}}]})", "INTERNAL"},
        {"200 OK",
         "{\"choices\":[{\"message\":{\"content\":\"{{name}}" + QByteArray(1024 * 1024, 'x') + "\"}}]}",
         "INTERNAL"},
    };
    for (const auto &[httpStatus, body, error] : rows) {
        model.received.clear();
        model.answerWith(httpStatus, body);
        const Response response = optimized("greet {{name}}");
        EXPECT_EQ(status(response), error) << body.left(60).constData();
        EXPECT_GE(response.status, 400);
        EXPECT_FALSE(response.body.contains("secret-key"));
    }
    model.server.close();
    EXPECT_EQ(status(optimized("greet")), "UNAVAILABLE");
}

TEST_F(ModelTest, tooManyCallsAtOnceAreTurnedAway)
{
    QList<Response> pending;
    for (int i = 0; i < 8; ++i) {
        pending.append(call(R"({"data":{"prompt":"x"}})"));
        ASSERT_TRUE(pending.constLast().later);
        pending.constLast().later([](const Response &) {});
    }
    EXPECT_EQ(status(call(R"({"data":{"prompt":"x"}})")), "RESOURCE_EXHAUSTED");
}

TEST_F(ModelTest, serverCanStopWhileTheModelThinks)
{
    bool isAnswered = false;
    const Response pending = call(R"({"data":{"prompt":"x"}})");
    ASSERT_TRUE(pending.later);
    pending.later([&](const Response &) { isAnswered = true; });
    ASSERT_TRUE(waitUntil([&] { return !model.received.isEmpty(); }));
    service.reset();
    EXPECT_FALSE(isAnswered);
}

TEST(ModelOptionsTest, environmentNamesTheModel)
{
    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("key")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("from-file\n");
    file.close();
    file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);

    QProcessEnvironment environment;
    QString problem;
    EXPECT_FALSE(ModelOptions::fromEnvironment(environment, problem).isConfigured());
    environment.insert(QStringLiteral("BREVIX_MODEL_URL"), QStringLiteral("https://models.example/v1"));
    EXPECT_FALSE(ModelOptions::fromEnvironment(environment, problem).isConfigured());
    EXPECT_TRUE(problem.contains(QStringLiteral("BREVIX_MODEL ")));

    problem.clear();
    environment.insert(QStringLiteral("BREVIX_MODEL"), QStringLiteral("m"));
    environment.insert(QStringLiteral("BREVIX_MODEL_KEY_FILE"), file.fileName());
    const ModelOptions options = ModelOptions::fromEnvironment(environment, problem);
    EXPECT_TRUE(options.isConfigured());
    EXPECT_EQ(options.key, "from-file");

    file.setPermissions(file.permissions() | QFileDevice::ReadOther);
    EXPECT_FALSE(ModelOptions::fromEnvironment(environment, problem).isConfigured());
    EXPECT_TRUE(problem.contains(QStringLiteral("600")));
    environment.remove(QStringLiteral("BREVIX_MODEL_KEY_FILE"));
    for (const QString &url : {QStringLiteral("http://models.example/v1"), QStringLiteral("ftp://x/"),
                               QStringLiteral("https://u:p@x/"), QStringLiteral("nonsense")}) {
        problem.clear();
        environment.insert(QStringLiteral("BREVIX_MODEL_URL"), url);
        EXPECT_FALSE(ModelOptions::fromEnvironment(environment, problem).isConfigured()) << qPrintable(url);
        EXPECT_FALSE(problem.isEmpty());
    }
    problem.clear();
    environment.insert(QStringLiteral("BREVIX_MODEL_URL"), QStringLiteral("http://localhost:11434/v1"));
    EXPECT_TRUE(ModelOptions::fromEnvironment(environment, problem).isConfigured());
}
