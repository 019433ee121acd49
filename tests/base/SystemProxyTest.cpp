#include "base/SystemProxy.h"
#include "base/HttpFetch.h"

#include <QTest>

#include <atomic>
#include <semaphore>

using namespace varnel;
using namespace varnel::test;
using practice::HttpServer;
using namespace std::chrono_literals;

namespace {

std::atomic<int> lookups = 0;
std::counting_semaphore<> release(0);

} // namespace

/// In place of the desktop's own: a look-up that hangs until the test releases it.
QByteArray varnel::desktopProxyFor(const QUrl&)
{
    ++lookups;
    release.acquire();
    return "";
}

class SystemProxyTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        for (const char* const name :
             {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY", "no_proxy", "NO_PROXY"})
            qunsetenv(name);
    }

    void proxiesAreUsedButNotForThisComputer()
    {
        QByteArray target;
        HttpServer proxy([&](const Exchange& exchange) {
            target = exchange->target();
            exchange->reply(200, "text/plain", "by proxy");
        });
        proxy.listen();
        HttpServer server([](const Exchange& exchange) { exchange->reply(200, "text/plain", "directly"); });
        server.listen();
        qputenv("http_proxy", proxy.url().toEncoded());
        HttpClient http;
        const QByteArray near = await(fetch(http, get(server.url())));
        const QByteArray far = await(fetch(http, get(QUrl(QStringLiteral("http://proxied.test:81/x")))));
        qunsetenv("http_proxy");
        QCOMPARE(near, "directly");
        QCOMPARE(far, "by proxy");
        QCOMPARE(target, "http://proxied.test:81/x");
    }

    void loopbackHosts_data()
    {
        QTest::addColumn<bool>("isLoopback");
        for (const char* const host : {"localhost", "LOCALHOST.", "a.localhost", "127.0.0.1", "127.255.0.9",
                                       "::1", "::ffff:127.0.0.1", "0.0.0.0", "::"})
            QTest::newRow(host) << true;
        for (const char* const host : {"", "localhost.example", "127.0.0.1.example", "127.0.0.256",
                                       "128.0.0.1", "127.a.b.c", "0.0.0.1", "gpu-box", "::2"})
            QTest::newRow(host) << false;
    }
    void loopbackHosts()
    {
        QTEST(isLoopbackHost(QString::fromLatin1(QTest::currentDataTag())), "isLoopback");
    }

    void aHangingLookUpIsLeftBehind()
    {
        HttpClient http;
        // It does not exist, so the attempt to reach it directly fails at once.
        HttpRequest request = get(QUrl(QStringLiteral("http://proxied.test/")));
        request.connectTimeout = 200ms;
        for (int round = 0; round < 2; ++round)
            QVERIFY_THROWS_EXCEPTION(TransportError, await(fetch(http, request), 5s));
        QCOMPARE(lookups, 1); // the second request knows

        request.url.setHost(QStringLiteral("slow.test"));
        request.connectTimeout = 1h;
        std::stop_source stop;
        Task<QByteArray> task = fetch(http, request, stop.get_token());
        stop.request_stop();
        QVERIFY_THROWS_EXCEPTION(Cancelled, await(std::move(task), 5s));
        release.release(2);
    }
};

QTEST_GUILESS_MAIN(SystemProxyTest)
#include "SystemProxyTest.moc"
