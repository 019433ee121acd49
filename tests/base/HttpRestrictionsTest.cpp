#include "base/HttpFetch.h"

#include <QTest>

using namespace varnel;
using namespace varnel::test;
using practice::HttpServer;

namespace {

using Kind = TransportError::Kind;

/// The body, or the kind of failure in its place.
struct Outcome
{
    QByteArray body;
    std::optional<Kind> failure;
};

Outcome outcomeOf(HttpClient& http, const HttpRequest& request)
{
    try {
        HttpResponse response = await(http.send(request, {}));
        return {await(response.readAll(1024 * 1024)), std::nullopt};
    } catch (const TransportError& error) {
        return {{}, error.kind()};
    }
}

} // namespace

/// What a request may restrict for itself, because it goes to somebody who is not trusted.
class HttpRestrictionsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void limitsOfARequestHold()
    {
        HttpServer server([](const Exchange& exchange) {
            exchange->beginReply(200, {{"X", QByteArray(5000, 'x')}});
            exchange->sendChunk(QByteArray(5000, 'x')); // and no end
        });
        server.listen();
        HttpClient http;
        HttpRequest request = get(server.url());
        request.headerLimit = 5000;
        QCOMPARE(outcomeOf(http, request).failure, Kind::TooLarge);
        request.headerLimit = 6000;
        request.bodyLimit = 4999;
        const Outcome outcome = outcomeOf(http, request);
        QCOMPARE(outcome.failure, std::nullopt);
        QCOMPARE(outcome.body.size(), 4999);
        QVERIFY(waitUntil([&] { return server.openConnections() == 0; }));
    }

    void pinnedRequestsGoWhereTheyArePinned()
    {
        QByteArray host;
        HttpServer server([&](const Exchange& exchange) {
            host = exchange->header("host");
            exchange->reply(200, "text/plain", "here");
        });
        server.listen();
        HttpClient http;
        HttpRequest request = get(QUrl(QStringLiteral("http://proxied.test:%1/").arg(server.port())));
        request.pinnedAddress = "127.0.0.1";
        qputenv("http_proxy", "http://127.0.0.1:9");
        const Outcome outcome = outcomeOf(http, request);
        qunsetenv("http_proxy");
        QCOMPARE(outcome.body, "here");
        QCOMPARE(host, "proxied.test:" + QByteArray::number(server.port()));
        // Neither the address nor the connection is there for the next request.
        request.pinnedAddress = "::1";
        QCOMPARE(outcomeOf(http, request).failure, Kind::Unreachable);
        request.pinnedAddress.clear();
        QCOMPARE(outcomeOf(http, request).failure, Kind::Unresolved);
    }
};

QTEST_GUILESS_MAIN(HttpRestrictionsTest)
#include "HttpRestrictionsTest.moc"
