#include "practice_host/HttpServer.h"
#include "practice/RawClient.h"
#include "practice_host/LineStream.h"
#include "support/Await.h"

#include <QTcpSocket>
#include <QTest>
#include <QTimer>

using namespace varnel;
using namespace varnel::practice;
using namespace varnel::test;
using namespace std::chrono_literals;

namespace {

using Exchange = std::shared_ptr<HttpExchange>;

/// Answers with the method, the target and the body, a little later.
void echo(const Exchange& exchange)
{
    QTimer::singleShot(1ms, qApp, [exchange] {
        exchange->reply(200, "text/plain",
                        exchange->method() + ' ' + exchange->target() + ' ' + exchange->body());
    });
}

} // namespace

class HttpServerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void requestsAreReadHoweverTheyAreCut_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QList<QByteArray>>("bodies");
        QTest::newRow("no body") << QByteArray("GET /a HTTP/1.1\r\n\r\n") << QList<QByteArray>{""};
        QTest::newRow("length") << QByteArray("POST /a HTTP/1.1\r\ncontent-length:  5 \r\n\r\nhello")
                                << QList<QByteArray>{"hello"};
        QTest::newRow("chunks") << QByteArray("POST /a HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n"
                                              "3\r\nhel\r\nA;x=y\r\nlo\r\n there\r\n0\r\nTrailer: 1\r\n\r\n")
                                << QList<QByteArray>{"hello\r\n there"};
        QTest::newRow("sent ahead") << QByteArray("POST /a HTTP/1.1\r\nContent-Length: 1\r\n\r\n1"
                                                  "POST /a HTTP/1.1\r\nContent-Length: 1\r\n\r\n2")
                                    << QList<QByteArray>{"1", "2"};
    }
    void requestsAreReadHoweverTheyAreCut()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QList<QByteArray>, bodies);
        for (const qsizetype step : {qsizetype(1), bytes.size()}) {
            HttpRequestReader reader;
            QList<QByteArray> read;
            for (qsizetype at = 0; at < bytes.size(); at += step) {
                reader.feed(QByteArrayView(bytes).sliced(at, step));
                while (const auto request = reader.next()) {
                    QCOMPARE(request->target, "/a");
                    read.append(request->body);
                }
            }
            QCOMPARE(read, bodies);
        }
    }

    void requestsThatAreNotTakenAreRefused_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("status");
        const auto post = [](const char* header, const char* body = "") {
            return QByteArray("POST / HTTP/1.1\r\n") + header + "\r\n\r\n" + body;
        };
        QTest::newRow("garbage") << QByteArray("\x16\x03\x01 hello\r\n\r\n") << 400;
        QTest::newRow("newer version") << QByteArray("GET / HTTP/2.0\r\n\r\n") << 400;
        QTest::newRow("nameless header") << post(": value") << 400;
        QTest::newRow("negative length") << post("Content-Length: -1") << 400;
        QTest::newRow("long head") << post(QByteArray("X: ").append(70'000, 'x')) << 431;
        QTest::newRow("endless head") << QByteArray(70'000, 'x') << 431;
        QTest::newRow("large body") << post("Content-Length: 268435457") << 413;
        QTest::newRow("length of many digits") << post("Content-Length: 99999999999999999999") << 413;
        QTest::newRow("large chunk") << post("Transfer-Encoding: chunked", "3\r\nabc\r\nFFFFFFE\r\n") << 413;
        QTest::newRow("chunk too long") << post("Transfer-Encoding: chunked", "1\r\nabc\r\n") << 400;
        QTest::newRow("other coding") << post("Transfer-Encoding: gzip") << 501;
    }
    void requestsThatAreNotTakenAreRefused()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, status);
        HttpServer server(echo);
        server.listen();
        RawClient client(server.port());
        client.send(bytes);
        QCOMPARE(client.reply().status, status);
        // Bytes that are still on their way must not turn the answer into a reset.
        client.send(QByteArray(1000, 'x'));
        QCOMPARE(client.waitForEnd(), RawClient::End::Closed);
    }

    void oneConnectionServesRequestsInOrder()
    {
        HttpServer server(echo);
        server.listen();
        RawClient client(server.port());
        client.request("POST", "/first?x=1", "1");
        QCOMPARE(client.reply().body, "POST /first?x=1 1");
        client.request("POST", "/second", "2");
        client.request("HEAD", "/third");
        client.request("GET", "/fourth", "", "Connection: close\r\n");
        QCOMPARE(client.reply().body, "POST /second 2");
        const QByteArray& rest = client.received();
        QVERIFY(waitUntil([&] { return client.received().contains("GET /fourth"); }));
        QVERIFY(!rest.contains("HEAD /third"));
        QCOMPARE(client.waitForEnd(), RawClient::End::Closed);
        QCOMPARE(server.acceptedConnections(), 1);
        QVERIFY(waitUntil([&] { return server.openConnections() == 0; }));
    }

    void aClientThatAsksFirstIsToldToGoOn()
    {
        HttpServer server(echo);
        server.listen();
        RawClient client(server.port());
        client.send("POST / HTTP/1.1\r\nExpect: 100-continue\r\nContent-Length: 2\r\n\r\n");
        QVERIFY(waitUntil([&] { return client.received() == "HTTP/1.1 100 Continue\r\n\r\n"; }));
        client.send("ok");
        QVERIFY(waitUntil([&] { return client.received().endsWith("POST / ok"); }));
    }

    void repliesCanBeBroken_data()
    {
        QTest::addColumn<HttpServer::Handler>("handler");
        QTest::addColumn<QByteArray>("received");
        QTest::addColumn<RawClient::End>("end");
        using End = RawClient::End;
        const QByteArray head = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
        QTest::newRow("raw bytes") << HttpServer::Handler([](const Exchange& exchange) {
            exchange->sendRaw("HTTP/9 what\n\n");
            exchange->close();
        }) << QByteArray("HTTP/9 what\n\n")
                                   << End::Closed;
        QTest::newRow("no end") << HttpServer::Handler([](const Exchange& exchange) {
            exchange->beginReply(200);
            exchange->sendChunk("abc");
            exchange->close();
            exchange->sendChunk("after the close");
        }) << QByteArray(head + "3\r\nabc\r\n")
                                << End::Closed;
        QTest::newRow("bad chunk") << HttpServer::Handler([](const Exchange& exchange) {
            exchange->beginReply(200);
            exchange->sendRaw("zz\r\n");
            exchange->close();
        }) << QByteArray(head + "zz\r\n")
                                   << End::Closed;
        QTest::newRow("reset") << HttpServer::Handler([](const Exchange& exchange) {
            exchange->beginReply(200);
            exchange->abort();
        }) << head << End::Reset;
        QTest::newRow("reset at once")
            << HttpServer::Handler([](const Exchange& exchange) { exchange->abort(); }) << QByteArray()
            << End::Reset;
    }
    void repliesCanBeBroken()
    {
        QFETCH(HttpServer::Handler, handler);
        HttpServer server(handler);
        server.listen();
        RawClient client(server.port());
        client.request("GET", "/");
        QTEST(client.waitForEnd(), "end");
        QTEST(client.received(), "received");
        QVERIFY(waitUntil([&] { return server.openConnections() == 0; }));
    }

    void aLeavingClientIsNoticedAndItsExchangeLetGo()
    {
        std::weak_ptr<HttpExchange> kept;
        int closed = 0;
        HttpServer server([&](const Exchange& exchange) {
            kept = exchange;
            exchange->beginReply(200);
            exchange->onClosed([&closed, exchange] { closed += exchange->isOpen() ? 100 : 1; });
        });
        server.listen();
        RawClient client(server.port());
        client.request("GET", "/");
        QVERIFY(waitUntil([&] { return !client.received().isEmpty(); }));
        client.leave();
        QVERIFY(waitUntil([&] { return closed > 0; }));
        QCOMPARE(closed, 1);
        QVERIFY(kept.expired());
    }

    void exchangesOutliveTheServer()
    {
        Exchange kept;
        auto server = std::make_unique<HttpServer>([&kept](Exchange exchange) {
            exchange->onClosed([exchange] { QFAIL("called while the server goes"); });
            kept = std::move(exchange);
        });
        server->listen();
        const RawClient client(server->port());
        client.request("GET", "/");
        QVERIFY(waitUntil([&] { return kept != nullptr; }));
        server.reset();
        QVERIFY(!kept->isOpen());
        kept->reply(200, {}, "nobody is there");
        QCOMPARE(kept.use_count(), 1);
    }

    void aSlowReaderSlowsTheStream()
    {
        constexpr int lines = 20'000;
        constexpr qsizetype lineSize = 4096;
        int made = 0;
        QObject streams;
        HttpServer server([&](const Exchange& exchange) {
            new LineStream(exchange, {.nextLine = [&made]() -> std::optional<QByteArray> {
                               return made++ < lines ? std::optional(QByteArray(lineSize, 'x'))
                                                     : std::nullopt;
                           }},
                           &streams);
        });
        server.listen();
        RawClient client(server.port());
        client.request("GET", "/");
        int before = -1;
        QVERIFY(waitUntil([&] {
            QTest::qSleep(5);
            return made > 0 && std::exchange(before, made) == made;
        }));
        QVERIFY2(made < lines / 2, qPrintable(QString::number(made)));
        QVERIFY(waitUntil([&] { return client.received().size() > lines * lineSize; }, 60s));
        QVERIFY(client.reply().complete);
        QVERIFY(waitUntil([&] { return streams.children().isEmpty(); }));
    }

    void rawConnectionsAreHandedOver()
    {
        HttpServer server(nullptr);
        server.acceptRaw([](QTcpSocket& socket) { socket.write("\x15\x03\x01"); });
        server.listen();
        RawClient client(server.port());
        QVERIFY(waitUntil([&] { return client.received() == "\x15\x03\x01"; }));
        client.leave();
        QVERIFY(waitUntil([&] { return server.openConnections() == 0; }));
    }

    void aPortThatIsTakenIsReported()
    {
        HttpServer first(echo);
        first.listen();
        HttpServer second(echo);
        QVERIFY_THROWS_EXCEPTION(Error, second.listen(first.port()));
    }
};

QTEST_GUILESS_MAIN(HttpServerTest)
#include "HttpServerTest.moc"
