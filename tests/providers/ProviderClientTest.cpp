#include "providers/chat/ProviderClient.h"
#include "practice_host/HttpServer.h"
#include "providers/VarnelError.h"
#include "providers/chat/ProviderReply.h"
#include "support/Await.h"

#include <QTest>

using namespace varnel;
using namespace varnel::test;
using practice::HttpExchange;
using practice::HttpServer;

namespace {

using Exchange = std::shared_ptr<HttpExchange>;

ApiBases basesAt(const QUrl& url)
{
    return ApiBases([url](const char*) { return url.toEncoded() + "/gate/"; });
}

ProviderTurn turnTo(RemoteProvider provider, std::vector<PromptMedia> media = {})
{
    ProviderTurn turn;
    turn.provider = provider;
    turn.model = QStringLiteral("m");
    turn.key = QStringLiteral("secret-key");
    turn.messages = {
        {.role = ChatRole::User, .text = QStringLiteral("a private thought"), .media = std::move(media)}};
    return turn;
}

/// The failure's text; empty if the provider answers.
QString failure(const ProviderClient& client, ProviderTurn turn)
{
    try {
        await(client.ask(std::move(turn), {}));
    } catch (const VarnelError& error) {
        return error.message();
    }
    return QString();
}

class Converter final : public ImageConverter
{
public:
    std::optional<PromptMedia> result;
    QStringList asked;

    Task<std::optional<PromptMedia>> convert(PromptMedia image, std::stop_token) override
    {
        asked.append(image.mime);
        return finished(result);
    }

private:
    static Task<std::optional<PromptMedia>> finished(std::optional<PromptMedia> result) { co_return result; }
};

const QByteArray claudeAnswer = "{\"content\":[{\"type\":\"text\",\"text\":\"Hello\"}]}";

} // namespace

class ProviderClientTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void turnsGoToTheirEndpoint()
    {
        std::vector<Exchange> exchanges;
        HttpServer server([&exchanges](const Exchange& exchange) {
            exchanges.push_back(exchange);
            exchange->reply(200, "application/json", claudeAnswer);
        });
        server.listen();
        HttpClient http;
        const ProviderClient client(basesAt(server.url()), http);
        QCOMPARE(await(client.ask(turnTo(RemoteProvider::Claude), {})).text, QStringLiteral("Hello"));
        QCOMPARE(exchanges.size(), std::size_t(1));
        QCOMPARE(exchanges[0]->method() + ' ' + exchanges[0]->target(), QByteArray("POST /gate/v1/messages"));
        QCOMPARE(exchanges[0]->header("x-api-key"), QByteArray("secret-key"));
        QCOMPARE(exchanges[0]->header("content-type"), QByteArray("application/json"));
        QVERIFY(exchanges[0]->body().contains("a private thought"));
    }

    void redirectsAreFailures_data()
    {
        QTest::addColumn<RemoteProvider>("provider");
        QTest::addColumn<int>("status");
        for (const RemoteProvider provider : allRemoteProviders()) {
            for (const int status : {301, 302, 303, 307, 308})
                QTest::addRow("%s %d", qPrintable(rawValue(provider)), status) << provider << status;
        }
    }
    void redirectsAreFailures()
    {
        QFETCH(RemoteProvider, provider);
        QFETCH(int, status);
        HttpServer elsewhere([](const Exchange& exchange) { exchange->reply(200, "text/plain", "caught"); });
        elsewhere.listen();
        HttpServer server([&elsewhere, status](const Exchange& exchange) {
            exchange->reply(status, "text/plain", "moved", {{"Location", elsewhere.url().toEncoded()}});
        });
        server.listen();
        HttpClient http;
        QCOMPARE(failure(ProviderClient(basesAt(server.url()), http), turnTo(provider)),
                 displayName(provider) + QStringLiteral(" request failed: moved"));
        QCOMPARE(server.acceptedConnections(), 1);
        QCOMPARE(elsewhere.acceptedConnections(), 0);
    }

    void keysOfErrorsAreMasked()
    {
        HttpServer server([](const Exchange& exchange) {
            exchange->reply(401, "text/plain", "bad key " + exchange->header("Authorization"));
        });
        server.listen();
        HttpClient http;
        QCOMPARE(failure(ProviderClient(basesAt(server.url()), http), turnTo(RemoteProvider::OpenAi)),
                 QStringLiteral(u"OpenAI request failed: bad key Bearer •••"));
    }

    void answersHaveLimits()
    {
        int status = 200;
        HttpServer server([&status](const Exchange& exchange) {
            exchange->reply(status, "text/plain", QByteArray(20 * 1024 * 1024, ' '));
        });
        server.listen();
        HttpClient http;
        const ProviderClient client(basesAt(server.url()), http);
        QVERIFY_THROWS_EXCEPTION(TransportError, failure(client, turnTo(RemoteProvider::Claude)));
        status = 500;
        QVERIFY(failure(client, turnTo(RemoteProvider::Claude)).size() < providerErrorLimit + 100);
    }

    void silenceAndBrokenAnswersAreTransportErrors()
    {
        HttpServer server([](const Exchange& exchange) {
            exchange->beginReply(200);
            exchange->sendChunk("{\"content\":[");
            if (exchange->body().contains("private"))
                exchange->close();
        });
        server.listen();
        HttpClient http;
        const ProviderClient client(basesAt(server.url()), http, nullptr, std::chrono::milliseconds(200));
        QVERIFY_THROWS_EXCEPTION(TransportError, failure(client, turnTo(RemoteProvider::Claude)));
        ProviderTurn other = turnTo(RemoteProvider::Claude);
        other.messages.front().text = QStringLiteral("never answered");
        QVERIFY_THROWS_EXCEPTION(TransportError, failure(client, other));
    }

    void stopClosesTheConnection()
    {
        Exchange kept;
        HttpServer server([&kept](const Exchange& exchange) { kept = exchange; });
        server.listen();
        HttpClient http;
        const ProviderClient client(basesAt(server.url()), http);
        std::stop_source stop;
        auto task = client.ask(turnTo(RemoteProvider::Gemini), stop.get_token());
        QVERIFY(waitUntil([&kept] { return kept != nullptr; }));
        stop.request_stop();
        QVERIFY_THROWS_EXCEPTION(Cancelled, await(std::move(task)));
        QVERIFY(waitUntil([&server] { return server.openConnections() == 0; }));
    }

    void imagesAreMadeReadable_data()
    {
        QTest::addColumn<RemoteProvider>("provider");
        QTest::addColumn<QString>("mime");
        QTest::addColumn<QString>("converted");
        QTest::addColumn<QByteArray>("sent");
        const auto row = [](const char* name, RemoteProvider provider, const char* mime,
                            const char* converted, const char* sent) {
            QTest::newRow(name) << provider << QString::fromLatin1(mime) << QString::fromLatin1(converted)
                                << QByteArray(sent);
        };
        row("as it is", RemoteProvider::Claude, "image/gif", "", "image/gif");
        row("other spelling", RemoteProvider::Claude, "IMAGE/JPG", "", "image/jpeg");
        row("PDF", RemoteProvider::Claude, "application/pdf", "", "application/pdf");
        row("photograph", RemoteProvider::Claude, "image/heic", "image/jpeg", "image/jpeg");
        row("photograph to Gemini", RemoteProvider::Gemini, "image/heic", "", "image/heic");
        row("moving picture to Gemini", RemoteProvider::Gemini, "image/gif", "image/png", "image/png");
        row("no converter", RemoteProvider::OpenAi, "image/tiff", "", "");
        row("converted to no use", RemoteProvider::OpenRouter, "image/tiff", "image/bmp", "");
        row("no image at all", RemoteProvider::DeepSeek, "text/plain", "nothing", "");
    }
    void imagesAreMadeReadable()
    {
        QFETCH(RemoteProvider, provider);
        QFETCH(QString, mime);
        QFETCH(QString, converted);
        QFETCH(QByteArray, sent);
        QByteArray body;
        HttpServer server([&body](const Exchange& exchange) {
            body = exchange->body();
            exchange->reply(500, "text/plain", "enough");
        });
        server.listen();
        HttpClient http;
        Converter converter;
        if (converted.startsWith(u"image/"))
            converter.result = PromptMedia{.mime = converted, .data = "converted"};
        const ProviderClient client(basesAt(server.url()), http, converted.isEmpty() ? nullptr : &converter);
        const QString text = failure(client, turnTo(provider, {{.mime = mime, .data = "original"}}));
        QCOMPARE(converter.asked, converted.isEmpty() ? QStringList() : QStringList{mime});
        if (sent.isEmpty()) {
            QVERIFY(text.contains(displayName(provider) +
                                  QStringLiteral(" cannot read an attachment of the type ") + mime));
            QCOMPARE(server.acceptedConnections(), 0);
            return;
        }
        QVERIFY(body.contains('"' + sent + '"'));
        QVERIFY(body.contains(QByteArray(converted.isEmpty() ? "original" : "converted").toBase64()));
    }
};

QTEST_GUILESS_MAIN(ProviderClientTest)
#include "ProviderClientTest.moc"
