#include "websearch/SearchService.h"
#include "practice_host/HttpServer.h"
#include "support/Await.h"

#include <QTest>

using namespace varnel;
using namespace varnel::test;
using practice::HttpExchange;
using practice::HttpServer;
using namespace std::chrono_literals;

namespace {

using Exchange = std::shared_ptr<HttpExchange>;

/// The results in one text, or the failure.
QString search(const SearchService& service, const QString& query, int count = 5)
{
    HttpClient http;
    try {
        QStringList lines;
        const std::vector<WebResult> results = await(searchWeb(&http, service, query, count, {}));
        for (const WebResult& result : results)
            lines.append(result.title + u'|' + result.url + u'|' + result.snippet);
        return lines.join(u'\n');
    } catch (const Error& error) {
        return error.message();
    }
}

} // namespace

class SearchServiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void requestsAreWhatTheServicesExpect()
    {
        QByteArray seen;
        HttpServer server([&](const Exchange& exchange) {
            seen = exchange->method() + ' ' + exchange->target();
            for (const char* const name :
                 {"authorization", "x-subscription-token", "accept", "content-type", "user-agent"})
                seen += '|' + exchange->header(name);
            seen += '|' + exchange->body();
            exchange->reply(200, "application/json", "{}");
        });
        server.listen();
        SearchService service{.key = QStringLiteral("k1"), .base = server.url()};
        const QString query = QStringLiteral("a&b + \"ü\"#%?");
        QCOMPARE(search(service, query, 7), QStringLiteral("Nothing came back for that search."));
        QCOMPARE(seen, "POST /api/web_search|Bearer k1||*/*|application/json||"
                       "{\"query\":\"a&b + \\\"ü\\\"#%?\",\"max_results\":7}");
        service.base.setPath(QStringLiteral("/proxy/"));
        HttpClient http;
        await(fetchPageThroughOllama(&http, service, QStringLiteral("https://example.org/a"), {}));
        QCOMPARE(seen, "POST /proxy/api/web_fetch|Bearer k1||*/*|application/json|Varnel|"
                       "{\"url\":\"https://example.org/a\"}");
        service.backend = SearchBackend::Brave;
        search(service, query, 10);
        QCOMPARE(seen, "GET /proxy/res/v1/web/search?q=a%26b%20%2B%20%22%C3%BC%22%23%25%3F&count=10"
                       "||k1|application/json|||");
        QCOMPARE(search({.backend = SearchBackend::Brave, .key = {}, .base = {}}, query),
                 QStringLiteral("Search could not start."));
    }

    void repliesAreRead_data()
    {
        QTest::addColumn<SearchBackend>("backend");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body"); // with ' for "
        QTest::addColumn<QString>("result");
        constexpr auto ollama = SearchBackend::Ollama;
        constexpr auto brave = SearchBackend::Brave;
        const QString nothing = QStringLiteral("Nothing came back for that search.");
        QTest::newRow("Ollama")
            << ollama << 200
            << QByteArray("{'results':[{'title':' A\\n','url':'u1','content':' c '},{'title':'B'},"
                          "{'url':'u2','content':null,'score':1}]}")
            << QStringLiteral("A|u1|c\n|u2|");
        QTest::newRow("Brave") << brave << 200
                               << QByteArray(
                                      "{'web':{'results':[{'title':'A','url':'u1','description':'c'}]}}")
                               << QStringLiteral("A|u1|c");
        QTest::newRow("Brave without web") << brave << 200 << QByteArray("{'query':{}}") << nothing;
        QTest::newRow("null") << ollama << 200 << QByteArray("{'results':null}") << nothing;
        QTest::newRow("many") << ollama << 200
                              << "{'results':[" + QByteArray("{'url':'u'},").repeated(11) + "{'url':'u'}]}"
                              << QStringLiteral("|u|\n").repeated(10).chopped(1);
        QTest::newRow("no JSON") << ollama << 200 << QByteArray("<html>")
                                 << QStringLiteral("Ollama search failed: its reply could not be read:");
        QTest::newRow("other JSON") << brave << 200 << QByteArray("{'web':{'results':[{'url':5}]}}")
                                    << QStringLiteral("Brave Search failed: its reply could not be read: "
                                                      "results[0].url: ");
        QTest::newRow("refused") << brave << 401 << QByteArray("{'error':'bad token k3y!'}")
                                 << QStringLiteral("Brave Search failed: {\"error\":\"bad token •••\"}");
        QTest::newRow("long") << ollama << 500 << QByteArray(237, 'x') + "k3y!yyy"
                              << QStringLiteral("Ollama search failed: ") + QString(237, u'x') +
                                     QStringLiteral("•••");
        QTest::newRow("empty") << ollama << 503 << QByteArray()
                               << QStringLiteral("Ollama search failed: HTTP 503");
        QTest::newRow("bytes") << ollama << 500 << QByteArray("\xff\xfe")
                               << QStringLiteral("Ollama search failed: HTTP 500");
        QTest::newRow("redirect") << ollama << 307 << QByteArray()
                                  << QStringLiteral("Ollama search failed: HTTP 307");
    }
    void repliesAreRead()
    {
        QFETCH(SearchBackend, backend);
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        QFETCH(QString, result);
        HttpServer second([](const Exchange& exchange) { exchange->reply(200, {}, {}); });
        second.listen();
        HttpServer server([&](const Exchange& exchange) {
            exchange->reply(status, "application/json", body.replace('\'', '"'),
                            {{"Location", second.url().toEncoded()}});
        });
        server.listen();
        const QString actual = search(
            {.backend = backend, .key = QStringLiteral("k3y!"), .base = server.url()}, QStringLiteral("q"));
        if (result.endsWith(u':') || result.endsWith(QLatin1String(": ")))
            QVERIFY2(actual.startsWith(result), qPrintable(actual));
        else
            QCOMPARE(actual, result);
        QCOMPARE(second.acceptedConnections(), 0);
    }

    void theTextForTheModelIsBounded()
    {
        QCOMPARE(searchResult({{QStringLiteral("A"), QStringLiteral("u1"), QStringLiteral("c")},
                               {QString(), QStringLiteral("u2"), QString()}}),
                 QStringLiteral("1. A\n   u1\n   c\n\n2. u2\n   u2"));
        const WebResult big{QString(5000, u'%'), QStringLiteral("%1"), QString(5000, u's')};
        QCOMPARE(searchResult({big, big}).size(), 6000);
    }

    void fetchedPagesAreCut_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body"); // with ' for "
        QTest::addColumn<QString>("result");
        QTest::newRow("page") << 200 << QByteArray("{'title':'T','content':'c','links':[]}")
                              << QStringLiteral("T\n\nc");
        QTest::newRow("no title") << 200 << QByteArray("{'content':'c'}")
                                  << QStringLiteral("https://a.example/\n\nc");
        QTest::newRow("no text") << 200 << QByteArray("{'title':'T'}")
                                 << QStringLiteral("The page had no text.");
        QTest::newRow("long") << 200 << "{'title':'T','content':'" + QByteArray(7000, 'c') + "'}"
                              << QStringLiteral("T\n\n") + QString(5997, u'c');
        QTest::newRow("status") << 403 << QByteArray("{}")
                                << QStringLiteral("Could not fetch that page (HTTP 403).");
        QTest::newRow("no object")
            << 200 << QByteArray("[]")
            << QStringLiteral("The fetched page could not be read: expected an object, found an array");
    }
    void fetchedPagesAreCut()
    {
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        HttpServer server([&](const Exchange& exchange) {
            exchange->reply(status, "application/json", body.replace('\'', '"'));
        });
        server.listen();
        HttpClient http;
        const SearchService service{.key = QStringLiteral("k"), .base = server.url()};
        QTEST(await(fetchPageThroughOllama(&http, service, QStringLiteral("https://a.example/"), {})),
              "result");
    }

    void silenceAndStopsEndIt()
    {
        std::vector<Exchange> open;
        HttpServer server([&](const Exchange& exchange) { open.push_back(exchange); });
        server.listen();
        SearchService service{.key = QStringLiteral("k"), .base = server.url(), .timeLimit = 300ms};
        QCOMPARE(search(service, QStringLiteral("q")),
                 QStringLiteral("Ollama search did not answer within 0.3 seconds."));
        HttpClient http;
        QCOMPARE(await(fetchPageThroughOllama(&http, service, QStringLiteral("https://a.example/"), {})),
                 QStringLiteral("Ollama's web fetch service did not answer within 0.3 seconds."));
        service.timeLimit = 30s;
        open.clear();
        std::stop_source stop;
        auto searching = searchWeb(&http, service, QStringLiteral("q"), 5, stop.get_token());
        auto fetching =
            fetchPageThroughOllama(&http, service, QStringLiteral("https://a.example/"), stop.get_token());
        QVERIFY(waitUntil([&] { return open.size() == 2; }));
        stop.request_stop();
        QVERIFY_THROWS_EXCEPTION(Cancelled, await(std::move(searching)));
        QVERIFY_THROWS_EXCEPTION(Cancelled, await(std::move(fetching)));
    }
};

QTEST_GUILESS_MAIN(SearchServiceTest)
#include "SearchServiceTest.moc"
