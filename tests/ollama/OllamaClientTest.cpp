#include "ollama/OllamaClient.h"
#include "ollama/OllamaError.h"
#include "practice_host/HttpServer.h"
#include "support/Await.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

using namespace varnel;
using namespace varnel::test;
using practice::HttpExchange;
using practice::HttpServer;

namespace {

using Exchange = std::shared_ptr<HttpExchange>;

ChatMessage message(ChatRole role, const QString& content)
{
    return {.id = {},
            .role = role,
            .content = content,
            .thinking = {},
            .createdAt = {},
            .backend = {},
            .duration = {}};
}

ChatRequest request(const QString& system, std::vector<ChatMessage> history,
                    std::vector<PromptMedia> media = {})
{
    return {.model = QStringLiteral("m:1b"),
            .systemText = system,
            .history = std::move(history),
            .media = std::move(media),
            .temperature = 0.7,
            .contextLength = 8192,
            .keepAlive = QStringLiteral("5m"),
            .predictionLimit = {}};
}

QByteArray messagesOf(const QByteArray& body)
{
    return QJsonDocument(QJsonDocument::fromJson(body).object().value(QStringLiteral("messages")).toArray())
        .toJson(QJsonDocument::Compact);
}

} // namespace

class OllamaClientTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void chatBodiesHoldExactlyTheirKeys()
    {
        const ChatRequest chat = request(QString(), {message(ChatRole::User, QStringLiteral("hi"))});
        const QByteArray common = R"({"model":"m:1b","messages":[{"role":"user","content":"hi"}],"stream":%,)"
                                  R"("options":{"temperature":0.7,"num_ctx":8192},"keep_alive":"5m")";
        QCOMPARE(streamedChatBody(chat), QByteArray(common).replace("%", "true") + "}");
        QCOMPARE(wholeChatBody(
                     chat, {.tools = {QJsonObject{{QStringLiteral("type"), QStringLiteral("function")}}}}),
                 QByteArray(common).replace("%", "false") + R"(,"tools":[{"type":"function"}]})");
    }

    void messagesOfATurn_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QByteArray>("messages");
        const auto user = [](const char* text) { return message(ChatRole::User, QString::fromUtf8(text)); };
        const auto assistant = [](const char* text) {
            return message(ChatRole::Assistant, QString::fromUtf8(text));
        };
        const auto row = [](const char* name, const ChatRequest& chat, const QByteArray& messages) {
            QTest::newRow(name) << streamedChatBody(chat) << messages;
        };
        const QByteArray empty = R"([{"content":"","role":"user"}])";
        row("nothing", request(QString(), {}), empty);
        row("only empty entries", request(QStringLiteral(" \n"), {user(""), assistant("")}), empty);
        row("system only", request(QStringLiteral(" be\n"), {}), R"([{"content":" be\n","role":"system"}])");
        row("order and skipping",
            request(QStringLiteral("s"), {user("1"), message(ChatRole::System, QStringLiteral("old")),
                                          assistant(""), assistant("2"), user("3")}),
            R"([{"content":"s","role":"system"},{"content":"1","role":"user"},{"content":"2","role":"assistant"},{"content":"3","role":"user"}])");
        row("lone surrogate", request(QString(), {message(ChatRole::User, QString(QChar(0xd800)))}),
            "[{\"content\":\"\xef\xbf\xbd\",\"role\":\"user\"}]");
        const std::vector<PromptMedia> media = {{QStringLiteral("image/png"), QByteArray("\x00\xff?", 3)},
                                                {QStringLiteral("application/pdf"), "pdf"},
                                                {QStringLiteral("image/jpeg"), "jpeg"}};
        row("images on the last user text",
            request(QString(), {user("1"), user("2"), user(""), assistant("3")}, media),
            R"([{"content":"1","role":"user"},{"content":"2","images":["AP8/","anBlZw=="],"role":"user"},{"content":"3","role":"assistant"}])");
        row("images without a user text", request(QString(), {assistant("3")}, media),
            R"([{"content":"3","role":"assistant"}])");
    }
    void messagesOfATurn()
    {
        QFETCH(QByteArray, body);
        QTEST(messagesOf(body), "messages");
    }

    void listsAndVersion()
    {
        std::vector<QByteArray> targets;
        HttpServer server([&](const Exchange& exchange) {
            targets.push_back(exchange->method() + ' ' + exchange->target());
            if (exchange->path().endsWith("/tags"))
                exchange->reply(
                    200, "application/json",
                    R"({"models":[)"
                    R"({"name":"b","size":9007199254740993,"details":{"parameter_size":"14.8B","families":null},"digest":"x"},)"
                    R"({"name":"a","details":null}]})");
            else if (exchange->path().endsWith("/ps"))
                exchange->reply(200, "application/json",
                                R"({"models":[{"name":"b","size_vram":0},{"name":"a"}]})");
            else
                exchange->reply(200, "application/json", R"({"version":"0.24.0"})");
        });
        server.listen();
        HttpClient http;
        const OllamaClient client(server.url().resolved(QUrl(QStringLiteral("/o%2Fp//"))), http);
        const std::vector<OllamaModel> models = await(client.listModels({}));
        QVERIFY((models ==
                 std::vector<OllamaModel>{{QStringLiteral("b"), 9007199254740993, QStringLiteral("14.8B")},
                                          {QStringLiteral("a"), std::nullopt, std::nullopt}}));
        const std::vector<OllamaRunning> running = await(client.listRunning({}));
        QVERIFY((running ==
                 std::vector<OllamaRunning>{{QStringLiteral("b"), 0}, {QStringLiteral("a"), std::nullopt}}));
        QCOMPARE(await(client.serverVersion({})), QStringLiteral("0.24.0"));
        QCOMPARE(targets, (std::vector<QByteArray>{"GET /o%2Fp/api/tags", "GET /o%2Fp/api/ps",
                                                   "GET /o%2Fp/api/version"}));
    }

    void repliesOfAnotherFormAreRefused_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("message");
        const QString unreadable = QStringLiteral("The server's reply could not be read: ");
        QTest::newRow("HTML") << QByteArray("<html>")
                              << unreadable +
                                     QStringLiteral(
                                         "not valid JSON (line 1, column 1: expected a value, found \"<\")");
        QTest::newRow("empty") << QByteArray()
                               << unreadable +
                                      QStringLiteral("not valid JSON (line 1, column 1: the text is empty)");
        QTest::newRow("no list") << QByteArray("{}") << unreadable + QStringLiteral("models: missing");
        QTest::newRow("null list") << QByteArray(R"({"models":null})")
                                   << unreadable + QStringLiteral("models: must not be null");
        QTest::newRow("no name") << QByteArray(R"({"models":[{"name":"a"},{}]})")
                                 << unreadable + QStringLiteral("models[1].name: missing");
        QTest::newRow("wrong type")
            << QByteArray(R"({"models":[{"name":"a","details":{"parameter_size":7}}]})")
            << unreadable +
                   QStringLiteral("models[0].details.parameter_size: expected a string, found a number");
    }
    void repliesOfAnotherFormAreRefused()
    {
        QFETCH(QByteArray, body);
        HttpServer server([&](const Exchange& exchange) { exchange->reply(200, "application/json", body); });
        server.listen();
        HttpClient http;
        const OllamaClient client(server.url(), http);
        QString message;
        try {
            await(client.listModels({}));
        } catch (const DecodeError& error) {
            message = error.message();
        }
        QTEST(message, "message");
    }

    void endlessListIsRefused()
    {
        HttpServer server([](const Exchange& exchange) {
            exchange->beginReply(200, {});
            for (int i = 0; i < 70; ++i)
                exchange->sendChunk(QByteArray(1024 * 1024, ' '));
        });
        server.listen();
        HttpClient http;
        const OllamaClient client(server.url(), http);
        try {
            await(client.listModels({}), std::chrono::seconds(60));
            QFAIL("an endless reply was taken");
        } catch (const TransportError& error) {
            QCOMPARE(error.kind(), TransportError::Kind::TooLarge);
        }
    }

    void wholeReplies_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("outcome");
        QTest::newRow("calls")
            << 200
            << QByteArray(
                   R"({"message":{"content":"\n","tool_calls":[{"function":{"name":"f","arguments":{"a":1}}}]}})")
            << QStringLiteral("\n[{\"function\":{\"arguments\":{\"a\":1},\"name\":\"f\"}}]");
        QTest::newRow("text") << 200 << QByteArray(R"({"message":{"content":"hi","tool_calls":null}})")
                              << QStringLiteral("hi[]");
        QTest::newRow("reasoning") << 200 << QByteArray(R"({"message":{"content":"hi","thinking":"a"}})")
                                   << QStringLiteral("a|hi[]");
        QTest::newRow("reasoning inside")
            << 200 << QByteArray(R"({"message":{"content":"<think>a</think>hi"}})")
            << QStringLiteral("a|hi[]");
        QTest::newRow("no message") << 200 << QByteArray("{}") << QStringLiteral("[]");
        QTest::newRow("error") << 200 << QByteArray(R"({"error":"busy"})") << QStringLiteral("busy");
        QTest::newRow("array") << 200 << QByteArray("[]")
                               << QStringLiteral("Ollama returned an unexpected response.");
        QTest::newRow("HTML") << 200 << QByteArray("<p>")
                              << QStringLiteral("Ollama returned an unexpected response.");
        QTest::newRow("no tools") << 400 << QByteArray(R"({"error":"m does not support tools"})")
                                  << QStringLiteral("m does not support tools");
    }
    void wholeReplies()
    {
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        HttpServer server(
            [&](const Exchange& exchange) { exchange->reply(status, "application/json", body); });
        server.listen();
        HttpClient http;
        const OllamaClient client(server.url(), http);
        QString outcome;
        try {
            const WholeChatReply reply = await(client.chatOnce(request(QString(), {}), {}, {}));
            outcome = (reply.thinking.isEmpty() ? QString() : reply.thinking + u'|') + reply.content +
                      QString::fromUtf8(QJsonDocument(reply.toolCalls).toJson(QJsonDocument::Compact));
        } catch (const OllamaError& error) {
            outcome = error.message();
        }
        QTEST(outcome, "outcome");
    }
};

QTEST_GUILESS_MAIN(OllamaClientTest)
#include "OllamaClientTest.moc"
