#include "ScriptedService.h"
#include "TestNetwork.h"
#include "ollama/OllamaError.h"
#include "practice_host/PracticeHost.h"
#include "providers/VarnelError.h"
#include "support/Await.h"
#include "websearch/OllamaToolModel.h"
#include "websearch/ProviderToolModel.h"

#include <QTest>

using namespace varnel;
using namespace varnel::test;
using practice::HttpExchange;
using practice::HttpServer;
using namespace std::chrono_literals;

namespace {

using Exchange = std::shared_ptr<HttpExchange>;

enum class Side { Ollama, Provider };

ChatMessage userMessage(const QString& text)
{
    ChatMessage message;
    message.content = text;
    return message;
}

} // namespace

class ToolLoopTest : public QObject
{
    Q_OBJECT

private:
    HttpClient m_http;
    TestNetwork m_network;

    std::unique_ptr<ToolModel> modelOf(Side side, const QUrl& url,
                                       const QString& prompt = QStringLiteral("hello"),
                                       const QString& name = QStringLiteral("m"))
    {
        if (side == Side::Ollama) {
            ChatRequest request;
            request.model = name;
            request.systemText = QStringLiteral("Be brief.");
            request.history = {userMessage(prompt)};
            request.keepAlive = QStringLiteral("5m");
            return std::make_unique<OllamaToolModel>(OllamaClient(url, m_http), request);
        }
        ProviderTurn turn;
        turn.provider = RemoteProvider::OpenAi;
        turn.model = name;
        turn.key = QStringLiteral("pk");
        turn.systemPrompt = QStringLiteral("Be brief.");
        turn.messages = providerMessages({userMessage(prompt)}, {});
        const ApiBases bases([url](const char* variable) -> std::optional<QByteArray> {
            return qstrcmp(variable, "VARNEL_OPENAI_BASE") == 0 ? std::optional(url.toEncoded() + "/v1")
                                                                : std::nullopt;
        });
        return std::make_unique<ProviderToolModel>(ProviderClient(bases, m_http), turn);
    }
    static SearchService searchOf(const QUrl& url, SearchBackend backend = SearchBackend::Ollama)
    {
        return {.backend = backend, .key = QStringLiteral("k"), .base = url};
    }
    ToolAnswer run(ScriptedService& service, Side side)
    {
        const WebToolHooks hooks{
            .onLookup = [&](const WebLookup& lookup) { service.events.append(lookup.subject + u'?'); },
            .approve = {}};
        WebTools tools(searchOf(service.url()), m_http, m_network, hooks);
        const auto model = modelOf(side, service.url());
        return await(runToolLoop(model.get(), &tools, {}));
    }
    static void addSides()
    {
        QTest::addColumn<Side>("side");
        QTest::newRow("Ollama") << Side::Ollama;
        QTest::newRow("provider") << Side::Provider;
    }

private Q_SLOTS:
    void fourCallsOfAReplyAreRun_data() { addSides(); }
    void fourCallsOfAReplyAreRun()
    {
        QFETCH(Side, side);
        ScriptedService service;
        ScriptedReply first{QStringLiteral("\n")};
        for (int i = 1; i <= 6; ++i)
            first.calls.push_back(searchFor(QStringLiteral("q%1").arg(i)));
        first.calls.at(1) = {QStringLiteral("web_lookup"), QStringLiteral("{}")};
        service.replies = {first, {QStringLiteral("answer")}};
        const ToolAnswer answer = run(service, side);
        QCOMPARE(answer.text, QStringLiteral("answer"));
        QCOMPARE(answer.thinking, QStringLiteral("because\n\nbecause"));
        QCOMPARE(service.events.join(u' '), QStringLiteral("q1? q1 for 5 q3? q3 for 5 q4? q4 for 5"));
        QCOMPARE(service.requests.size(), 2);
        for (const QJsonObject& request : std::as_const(service.requests)) {
            QCOMPARE(request.value(u"tools").toArray(), searchToolDefinitions());
            QCOMPARE(request.value(u"stream").toBool(true), false);
            const QJsonArray messages = request.value(u"messages").toArray();
            QCOMPARE(messages.at(0).toObject().value(u"content").toString(), searchGuidance());
            QCOMPARE(messages.at(1).toObject().value(u"content").toString(), QStringLiteral("Be brief."));
            QCOMPARE(messages.at(2).toObject().value(u"role").toString(), QStringLiteral("user"));
        }
        const QJsonArray messages = service.requests.at(1).value(u"messages").toArray();
        QCOMPARE(messages.size(), 8);
        const QJsonArray calls = messages.at(3).toObject().value(u"tool_calls").toArray();
        QCOMPARE(calls.size(), 4);
        const QString found = QStringLiteral("1. T\n   https://found.example/a");
        const QStringList results{found, QStringLiteral("Unknown tool web_lookup"), found, found};
        for (int i = 0; i < 4; ++i) {
            const QJsonObject result = messages.at(4 + i).toObject();
            QCOMPARE(result.value(u"role").toString(), QStringLiteral("tool"));
            QCOMPARE(result.value(u"content").toString(), results.at(i));
            QCOMPARE(result.value(u"tool_call_id").toString(),
                     side == Side::Provider ? QStringLiteral("id%1").arg(i) : QString());
            const QJsonValue arguments =
                calls.at(i).toObject().value(u"function").toObject().value(u"arguments");
            QVERIFY(side == Side::Provider ? arguments.isString() : arguments.isObject());
        }
    }

    void endlessAskersAreStopped_data() { addSides(); }
    void endlessAskersAreStopped()
    {
        QFETCH(Side, side);
        for (const QString& text : {QStringLiteral(" \n"), QStringLiteral("so far")}) {
            ScriptedService service;
            service.replies = {{text, {searchFor(QStringLiteral("q"))}}};
            QCOMPARE(run(service, side).text, text == QStringLiteral("so far")
                                                  ? text
                                                  : QStringLiteral("Search stopped after several lookups."));
            QCOMPARE(service.requests.size(), 4);
            QCOMPARE(service.events.filter(QStringLiteral("for")).size(), 4);
            QCOMPARE(service.requests.last().value(u"messages").toArray().size(), 3 + 3 * 2);
        }
    }

    void failingRequestsEndTheTurn()
    {
        HttpServer server(
            [](const Exchange& exchange) { exchange->reply(400, {}, "{\"error\":\"no tools\"}"); });
        server.listen();
        WebTools tools(searchOf(server.url()), m_http, m_network);
        const auto ollama = modelOf(Side::Ollama, server.url());
        QVERIFY_THROWS_EXCEPTION(OllamaError, await(runToolLoop(ollama.get(), &tools, {})));
        const auto provider = modelOf(Side::Provider, server.url());
        QVERIFY_THROWS_EXCEPTION(VarnelError, await(runToolLoop(provider.get(), &tools, {})));
    }

    void stopsEndItAtAnyPoint_data()
    {
        QTest::addColumn<QByteArray>("silentPath");
        QTest::addColumn<QString>("tool");
        QTest::newRow("in a request") << QByteArray("/api/chat") << QStringLiteral("web_search");
        QTest::newRow("in a search") << QByteArray("/api/web_search") << QStringLiteral("web_search");
        QTest::newRow("in a fetch") << QByteArray("/api/web_fetch") << QStringLiteral("web_fetch");
    }
    void stopsEndItAtAnyPoint()
    {
        QFETCH(QByteArray, silentPath);
        QFETCH(QString, tool);
        ScriptedService service;
        service.silentPath = silentPath;
        const ScriptedCall call{tool, QStringLiteral("{\"query\":\"q\",\"url\":\"https://a.example/\"}")};
        service.replies = {{QString(), {call, call}}};
        WebTools tools(searchOf(service.url()), m_http, m_network);
        const auto model = modelOf(Side::Ollama, service.url());
        std::stop_source stop;
        Task<ToolAnswer> task = runToolLoop(model.get(), &tools, stop.get_token());
        QVERIFY(waitUntil([&] { return service.events.contains(QStringLiteral("silence")); }));
        stop.request_stop();
        QVERIFY_THROWS_EXCEPTION(Cancelled, await(std::move(task)));
        QCOMPARE(service.events, QStringList{QStringLiteral("silence")});
        QVERIFY(service.requests.size() <= 1);
    }

    void thePracticeHostCanBeAsked()
    {
        practice::PracticeHost host({.piece = 0ms, .slowStart = 0ms, .slowPiece = 0ms});
        host.listen();
        WebTools tools(searchOf(host.url()), m_http, m_network);
        const auto ask = [&](const QString& prompt) {
            const auto model = modelOf(Side::Ollama, host.url(), prompt, QStringLiteral("practice-tools"));
            return await(runToolLoop(model.get(), &tools, {})).text;
        };
        const QString searched = ask(QStringLiteral("What is new?"));
        QVERIFY2(searched.contains(QLatin1String("3. Practice result 3\n   https://example.org/practice/3")),
                 qPrintable(searched));
        const QString fetched = ask(QStringLiteral("Read https://example.org/practice"));
        QVERIFY2(fetched.contains(QLatin1String("Practice page\n\nNothing was fetched.")),
                 qPrintable(fetched));
    }
};

QTEST_GUILESS_MAIN(ToolLoopTest)
#include "ToolLoopTest.moc"
