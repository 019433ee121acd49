#include "websearch/PageFetch.h"
#include "TestNetwork.h"
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

const QString notPublic = QStringLiteral("That URL is not a public http or https page.");

/// A gzip file that unpacks to 1 GiB of the letter a: the letter, and then "the last 258 bytes again".
QByteArray packedGibibyte()
{
    const QByteArray again = "1100010100000";
    const QByteArray bits = "11010010001" + again.repeated(16);
    QByteArray bytes(bits.size() / 8, '\0');
    for (qsizetype i = 0; i < 8 * bytes.size(); ++i)
        bytes[i / 8] = static_cast<char>(bytes.at(i / 8) | ((bits.at(i) - '0') << (i % 8)));
    // Eight times 13 bits are 13 bytes.
    return QByteArray::fromHex("1f8b0800000000000003") + bytes.left(2) + bytes.mid(2, 13).repeated(520'000);
}

} // namespace

class PageFetchTest : public QObject
{
    Q_OBJECT

private:
    HttpClient m_http;

    /// The result for a path of a server that goes by the name page.test.
    QString read(const HttpServer& server, TestNetwork& network, const QString& path = QStringLiteral("/"),
                 const PageLimits& limits = {}, const std::stop_token& stop = {})
    {
        return await(fetchPage(&m_http, &network, urlOf(server, path), limits, stop));
    }
    static QString urlOf(const HttpServer& server, const QString& path = QStringLiteral("/"))
    {
        return QStringLiteral("http://page.test:%1%2").arg(QString::number(server.port()), path);
    }

private Q_SLOTS:
    void pagesBecomeText_data()
    {
        QTest::addColumn<QByteArray>("type");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("result");
        const QByteArray html = "text/html; charset=utf-8";
        QTest::newRow("page") << html
                              << QByteArray("<html><head><title>A</title></head><script>1</script><p>b<p>c")
                              << QStringLiteral("A\n\nb c");
        QTest::newRow("no title") << html << QByteArray("<p>b") << QStringLiteral("URL\n\nb");
        QTest::newRow("only scripts") << html << QByteArray("<style>a</style><script>1</script> ")
                                      << QStringLiteral("The page had no text.");
        QTest::newRow("HTML by its beginning")
            << QByteArray() << QByteArray("<html><p>b") << QStringLiteral("URL\n\nb");
        QTest::newRow("plain text") << QByteArray("text/plain") << QByteArray(" a <b>\n c\n")
                                    << QStringLiteral("URL\n\na <b>\n c");
        QTest::newRow("other charset")
            << QByteArray("text/html; charset=shift_jis") << QByteArray::fromHex("836583588367")
            << QStringLiteral("URL\n\nテスト");
        QTest::newRow("picture") << QByteArray("image/png") << QByteArray("\x89PNG")
                                 << QStringLiteral("The page had no text.");
        QTest::newRow("unnamed bytes") << QByteArray()
                                       << QByteArray("\x7f"
                                                     "ELF\0\0",
                                                     6)
                                       << QStringLiteral("The page had no text.");
        QTest::newRow("empty") << html << QByteArray() << QStringLiteral("The page had no text.");
    }
    void pagesBecomeText()
    {
        QFETCH(QByteArray, type);
        QFETCH(QByteArray, body);
        QFETCH(QString, result);
        HttpServer server([&](const Exchange& exchange) { exchange->reply(200, type, body); });
        server.listen();
        TestNetwork network;
        QCOMPARE(read(server, network), result.replace(QLatin1String("URL"), urlOf(server)));
    }

    void requestsNameTheHostAndNobodyElse()
    {
        std::vector<QByteArray> seen;
        HttpServer server([&](const Exchange& exchange) {
            seen.push_back(exchange->method() + ' ' + exchange->target() + ' ' + exchange->header("host") +
                           ' ' + exchange->header("user-agent") + ' ' + exchange->header("cookie") +
                           exchange->header("authorization"));
            exchange->reply(200, "text/plain", "text", {{"Set-Cookie", "a=b"}});
        });
        server.listen();
        // A proxy in the environment is passed by: nothing listens there.
        qputenv("http_proxy", "http://127.0.0.1:9");
        TestNetwork network;
        read(server, network, QStringLiteral("/ä?q#part"));
        read(server, network, QStringLiteral("/"));
        qunsetenv("http_proxy");
        const QByteArray host = "page.test:" + QByteArray::number(server.port());
        QCOMPARE(seen, (std::vector<QByteArray>{"GET /%C3%A4?q " + host + " Varnel ",
                                                "GET / " + host + " Varnel "}));
        QCOMPARE(network.lookups.size(), 2);
        QCOMPARE(server.acceptedConnections(), 2);
    }

    void privateAddressesAreRefused_data()
    {
        QTest::addColumn<QString>("host");
        QTest::addColumn<QList<QByteArray>>("addresses");
        QTest::newRow("written") << QStringLiteral("localhost") << QList<QByteArray>{"127.0.0.1"};
        QTest::newRow("resolved") << QStringLiteral("inner.test") << QList<QByteArray>{"10.0.0.1"};
        QTest::newRow("among public ones")
            << QStringLiteral("inner.test") << QList<QByteArray>{"127.0.0.1", "192.168.1.1"};
        QTest::newRow("mapped") << QStringLiteral("inner.test") << QList<QByteArray>{"::ffff:127.0.0.1"};
        QTest::newRow("literal") << QStringLiteral("192.0.0.1") << QList<QByteArray>{"192.0.0.1"};
    }
    void privateAddressesAreRefused()
    {
        QFETCH(QString, host);
        QFETCH(QList<QByteArray>, addresses);
        HttpServer server([&](const Exchange& exchange) {
            if (exchange->path() == "/redirect")
                exchange->reply(302, {}, {},
                                {{"Location", "http://" + host.toUtf8() + ':' +
                                                  QByteArray::number(server.port()) + '/'}});
            else
                exchange->reply(200, "text/plain", "leaked");
        });
        server.listen();
        TestNetwork network;
        network.hosts.insert(host, addresses);
        const QString url = QStringLiteral("http://%1:%2/").arg(host, QString::number(server.port()));
        QCOMPARE(await(fetchPage(&m_http, &network, url, {}, {})), notPublic);
        QCOMPARE(server.acceptedConnections(), 0);
        QCOMPARE(read(server, network, QStringLiteral("/redirect")), notPublic);
        QCOMPARE(server.acceptedConnections(), 1);
    }

    void redirectsAreFollowedFiveTimes_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<int>("count");
        QTest::addColumn<QByteArray>("location"); // without one the next path
        QTest::addColumn<QString>("result");      // "" for the page
        QTest::newRow("five") << 302 << 5 << QByteArray() << QString();
        QTest::newRow("six") << 307 << 6 << QByteArray()
                             << QStringLiteral("Could not read that page (HTTP 307).");
        QTest::newRow("not modified")
            << 304 << 1 << QByteArray() << QStringLiteral("Could not read that page (HTTP 304).");
        QTest::newRow("to a file") << 301 << 1 << QByteArray("file:///etc/passwd") << notPublic;
        QTest::newRow("to a user") << 308 << 1 << QByteArray("//user@page.test/") << notPublic;
        QTest::newRow("backslash") << 303 << 1 << QByteArray("/\\page.test/") << notPublic;
        QTest::newRow("nowhere") << 302 << 1 << QByteArray("http://gone.test/")
                                 << QStringLiteral("The host \"gone.test\" could not be found.");
    }
    void redirectsAreFollowedFiveTimes()
    {
        QFETCH(int, status);
        QFETCH(int, count);
        QFETCH(QByteArray, location);
        QFETCH(QString, result);
        int asked = 0;
        HttpServer server([&](const Exchange& exchange) {
            if (++asked <= count)
                exchange->reply(
                    status, {}, {},
                    {{"Location", location.isEmpty() ? "hop" + QByteArray::number(asked) : location}});
            else
                exchange->reply(200, "text/html", "<title>T</title>text");
        });
        server.listen();
        TestNetwork network;
        const QString expected = result.isEmpty() ? QStringLiteral("T\n\nT text") : result;
        QCOMPARE(read(server, network), expected);
    }

    void bodiesAreReadAsFarAsAllowed_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("gzip bomb") << QStringLiteral("/bomb");
        QTest::newRow("endless") << QStringLiteral("/endless");
        QTest::newRow("20 MB of unclosed tags") << QStringLiteral("/tags");
        QTest::newRow("too slow") << QStringLiteral("/slow");
    }
    void bodiesAreReadAsFarAsAllowed()
    {
        QFETCH(QString, path);
        HttpServer server([&](const Exchange& exchange) {
            if (exchange->path() == "/tags") {
                exchange->reply(200, "text/html", "aaa" + QByteArray("<a ").repeated(20 * 1024 * 1024 / 3));
                return;
            }
            const bool packed = exchange->path() == "/bomb";
            exchange->beginReply(200, packed ? std::vector<practice::HttpHeader>{{"Content-Encoding", "gzip"}}
                                             : std::vector<practice::HttpHeader>{});
            if (packed)
                exchange->sendChunk(packedGibibyte());
            exchange->sendChunk(packed ? QByteArray() : QByteArray("aaa"));
            if (exchange->path() == "/endless") {
                const auto sendMore = [weak = std::weak_ptr(exchange)] {
                    if (const auto open = weak.lock(); open && open->unsentBytes() < 1024 * 1024)
                        open->sendChunk(QByteArray(256 * 1024, 'a'));
                };
                exchange->onBytesWritten(sendMore);
                sendMore();
            }
        });
        server.listen();
        TestNetwork network;
        PageLimits limits;
        if (path == QLatin1String("/slow"))
            limits.time = 500ms;
        const QString result = read(server, network, path, limits);
        QVERIFY2(result.startsWith(urlOf(server, path) + QStringLiteral("\n\naaa")),
                 qPrintable(result.left(200)));
        QVERIFY(result.size() <= 6000);
        QVERIFY(waitUntil([&] { return server.openConnections() == 0; }));
    }

    void whatFailsIsSaid_data()
    {
        QTest::addColumn<QByteArray>("answer"); // empty for none at all
        QTest::addColumn<QString>("result");
        QTest::newRow("status") << QByteArray("HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n")
                                << QStringLiteral("Could not read that page (HTTP 404).");
        QTest::newRow("endless headers")
            << "HTTP/1.1 200 OK\r\n" + QByteArray("X: " + QByteArray(1000, 'x') + "\r\n").repeated(70) +
                   "\r\nok"
            << QStringLiteral("page.test port PORT sent more headers than can be taken.");
        QTest::newRow("no HTTP") << QByteArray("SSH-2.0-OpenSSH\r\n")
                                 << QStringLiteral("page.test port PORT did not answer in HTTP.");
        QTest::newRow("silence") << QByteArray()
                                 << QStringLiteral("That page did not answer within 0.5 seconds.");
    }
    void whatFailsIsSaid()
    {
        QFETCH(QByteArray, answer);
        QFETCH(QString, result);
        HttpServer server([&](const Exchange& exchange) {
            exchange->sendRaw(answer);
            if (!answer.isEmpty())
                exchange->close();
        });
        server.listen();
        TestNetwork network;
        PageLimits limits;
        if (answer.isEmpty())
            limits.time = 500ms;
        QCOMPARE(read(server, network, QStringLiteral("/"), limits),
                 result.replace(QLatin1String("PORT"), QString::number(server.port())));
    }

    void theNextAddressIsTriedWhenOneIsDead()
    {
        HttpServer server([](const Exchange& exchange) { exchange->reply(200, "text/plain", "alive"); });
        server.listen(); // on 127.0.0.1 only
        TestNetwork network;
        network.hosts.insert(QStringLiteral("page.test"), {"127.0.0.2", "127.0.0.1"});
        QVERIFY(read(server, network).endsWith(QLatin1String("alive")));
    }

    void stopsEndItAtAnyPoint()
    {
        std::vector<Exchange> open;
        HttpServer server([&](const Exchange& exchange) {
            open.push_back(exchange);
            if (exchange->path() == "/body") {
                exchange->beginReply(200);
                exchange->sendChunk("begun");
            }
        });
        server.listen();
        TestNetwork network;
        network.hosts.insert(QStringLiteral("slow.test"), {});
        for (const QString& url :
             {QStringLiteral("http://slow.test/"), urlOf(server, QStringLiteral("/head")),
              urlOf(server, QStringLiteral("/body"))}) {
            std::stop_source stop;
            open.clear();
            Task<QString> task = fetchPage(&m_http, &network, url, {}, stop.get_token());
            if (!url.contains(QLatin1String("slow")))
                QVERIFY(waitUntil([&] { return !open.empty(); }));
            QVERIFY(!task.isFinished());
            stop.request_stop();
            QVERIFY_THROWS_EXCEPTION(Cancelled, await(std::move(task)));
            QVERIFY(waitUntil([&] { return server.openConnections() == 0; }));
        }
    }

    void theSystemLooksNamesUp()
    {
        SystemPageNetwork network;
        const std::vector<IpAddress> addresses = await(network.addressesOf(QStringLiteral("localhost"), {}));
        QVERIFY(std::any_of(addresses.begin(), addresses.end(),
                            [](const IpAddress& address) { return address.text() == "127.0.0.1"; }));
        QVERIFY(!network.allows(addresses.front()));
        QCOMPARE(await(fetchPage(&m_http, &network, QStringLiteral("http://127.0.0.1/"), {}, {})), notPublic);
    }
};

QTEST_GUILESS_MAIN(PageFetchTest)
#include "PageFetchTest.moc"
