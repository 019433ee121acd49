#include "websearch/WebTools.h"
#include "ScriptedService.h"
#include "TestNetwork.h"
#include "support/Await.h"

#include <QTest>

using namespace varnel;
using namespace varnel::test;
using practice::HttpServer;

namespace {

SearchToolCall call(const QString& name, const QString& arguments)
{
    return {.id = {}, .name = name, .arguments = arguments};
}

SearchToolCall searchCall()
{
    return call(QStringLiteral("web_search"), QStringLiteral("{\"query\":\"q\"}"));
}

} // namespace

class WebToolsTest : public QObject
{
    Q_OBJECT

private:
    HttpClient m_http;
    TestNetwork m_network;

    static SearchService searchOf(const QUrl& url, SearchBackend backend = SearchBackend::Ollama)
    {
        return {.backend = backend, .key = QStringLiteral("k"), .base = url};
    }

private Q_SLOTS:
    void callsGiveTheModelAText_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("arguments"); // with ' for "
        QTest::addColumn<QString>("event");     // what reached the service
        QTest::addColumn<QString>("result");    // "" for the usual one
        const QString search = QStringLiteral("web_search");
        const QString fetch = QStringLiteral("web_fetch");
        const auto row = [](const QString& name, const char* arguments, const char* event,
                            const char* result = "") {
            QTest::addRow("%s", arguments) << name << QString::fromUtf8(arguments) << QString::fromUtf8(event)
                                           << QString::fromUtf8(result);
        };
        const char* const noQuery = "web_search needs a query.";
        const char* const noUrl = "web_fetch only accepts a public http or https URL.";
        row(search, "{'query':' a '}", "a for 5");
        row(search, "{'query':'b','max_results':50}", "b for 10");
        row(search, "{'query':'c','max_results':0}", "c for 1");
        row(search, "{'query':'d','max_results':-1e300}", "d for 1");
        row(search, "{'query':'e','max_results':3.0}", "e for 3");
        row(search, "{'query':'f','max_results':'3'}", "f for 5");
        row(search, "{'query':'g','max_results':2.5}", "g for 5");
        row(search, "{'query':'h','max_results':null,'more':[]}", "h for 5");
        row(search, "", "", noQuery);
        row(search, "query: a", "", noQuery);
        row(search, "{'query':'a'", "", noQuery);
        row(search, "['a']", "", noQuery);
        row(search, "{}", "", noQuery);
        row(search, "{'query':['a']}", "", noQuery);
        row(search, "{'query':' \\n'}", "", noQuery);
        row(fetch, "{'url':' https://a.example/ '}", "https://a.example/ for 0",
            "P\n\ntext of https://read.example/");
        row(fetch, "{'url':5}", "", noUrl);
        row(fetch, "{'url':''}", "", noUrl);
        row(fetch, "{'url':'http://localhost:11434/api/tags'}", "", noUrl);
        row(fetch, "{'url':'https://[::1]/'}", "", noUrl);
        row(fetch, "{'url':'http://127.1./'}", "", noUrl);
        row(QStringLiteral("Web_Search"), "{'query':'case'}", "", "Unknown tool Web_Search");
        row(QString(), "{'query':'none'}", "", "Unknown tool ");
    }
    void callsGiveTheModelAText()
    {
        QFETCH(QString, name);
        QFETCH(QString, arguments);
        QFETCH(QString, event);
        QFETCH(QString, result);
        ScriptedService service;
        WebTools tools(searchOf(service.url()), m_http, m_network);
        QCOMPARE(await(tools.run(call(name, arguments.replace(u'\'', u'"')), {})),
                 result.isEmpty() ? QStringLiteral("1. T\n   https://found.example/a") : result);
        QCOMPARE(service.events.join(u'|'), event);
    }

    void servicesThatAreDownAreTextToo()
    {
        QUrl gone;
        {
            ScriptedService service;
            service.searchStatus = 503;
            gone = service.url();
            WebTools tools(searchOf(gone), m_http, m_network);
            QVERIFY(await(tools.run(searchCall(), {})).startsWith(QLatin1String("Ollama search failed: {")));
        }
        WebTools tools(searchOf(gone, SearchBackend::Brave), m_http, m_network);
        QVERIFY(await(tools.run(searchCall(), {}))
                    .startsWith(QLatin1String("Could not connect to 127.0.0.1 port ")));
        // Brave reads no pages, so they are read directly.
        HttpServer server(
            [](const auto& exchange) { exchange->reply(200, "text/html", "<title>D</title>"); });
        server.listen();
        const QString arguments = QStringLiteral("{\"url\":\"http://page.test:%1/\"}").arg(server.port());
        QCOMPARE(await(tools.run(call(QStringLiteral("web_fetch"), arguments), {})),
                 QStringLiteral("D\n\nD"));
    }

    void unknownAddressesNeedApproval()
    {
        ScriptedService service;
        QStringList asked;
        bool allowed = false;
        const auto approve = [&](const QString& url, const std::stop_token&) -> Task<bool> {
            asked.append(url);
            return [](bool answer) -> Task<bool> { co_return answer; }(allowed);
        };
        WebTools tools(searchOf(service.url()), m_http, m_network, {.onLookup = {}, .approve = approve},
                       {QStringLiteral("Look at user.example/a.")});
        const auto read = [&](const char* url) {
            const QString arguments = QStringLiteral("{\"url\":\"%1\"}").arg(QString::fromLatin1(url));
            const QString result = await(tools.run(call(QStringLiteral("web_fetch"), arguments), {}));
            return result != QStringLiteral("The user did not allow reading that page.");
        };
        service.searchStatus = 500; // its body names the address all the same
        await(tools.run(searchCall(), {}));
        QVERIFY(!read("https://found.example/a"));
        service.searchStatus = 200;
        await(tools.run(searchCall(), {}));
        QVERIFY(read("https://found.example/a"));
        QVERIFY(!read("https://found.example/a?q=secret"));
        QVERIFY(read("https://read.example"));
        QVERIFY(read("https://user.example/a"));
        QCOMPARE(asked.size(), 2);
        allowed = true;
        QVERIFY(read("https://made.up.example/"));
        QCOMPARE(asked.size(), 3);
        QCOMPARE(service.events.size(), 6);
    }
};

QTEST_GUILESS_MAIN(WebToolsTest)
#include "WebToolsTest.moc"
