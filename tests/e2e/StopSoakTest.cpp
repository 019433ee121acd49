#include "base/HttpClient.h"
#include "practice_host/HttpServer.h"
#include "support/Await.h"

#include <QDir>
#include <QRandomGenerator>
#include <QTest>

using namespace varnel;
using namespace varnel::test;

namespace {

Task<qint64> readToTheEnd(HttpClient& http, QUrl url, std::stop_token stop)
{
    HttpRequest request;
    request.url = std::move(url);
    HttpResponse response = co_await http.send(std::move(request), stop);
    qint64 length = 0;
    while (const auto piece = co_await response.next())
        length += piece->size();
    co_return length;
}

qsizetype openDescriptors()
{
    return QDir(QStringLiteral("/proc/self/fd"))
        .entryList(QDir::Files | QDir::System | QDir::NoDotAndDotDot)
        .size();
}

} // namespace

/// Thousands of requests that are stopped, dropped or let run, at random moments, over connections that are
/// kept.
class StopSoakTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nothingIsLeftBehind()
    {
        constexpr qint64 length = 3'000'000;
        practice::HttpServer server([](const std::shared_ptr<practice::HttpExchange>& exchange) {
            exchange->reply(200, "text/plain", QByteArray(length, 'x'));
        });
        server.listen();
        HttpClient http;
        QCOMPARE(await(readToTheEnd(http, server.url(), {})), length);
        const qsizetype before = openDescriptors();
        QRandomGenerator random(20261121);
        int completed = 0;
        int stopped = 0;
        for (int round = 0; round < 5000; ++round) {
            std::stop_source stop;
            Task<qint64> task = readToTheEnd(http, server.url(), stop.get_token());
            const int turns = int(random.bounded(60));
            for (int turn = 0; turn < turns && !task.isFinished(); ++turn)
                QCoreApplication::processEvents();
            switch (random.bounded(3)) {
            case 0:
                break; // destroyed wherever it is
            case 1:
                stop.request_stop();
                [[fallthrough]];
            default:
                try {
                    QCOMPARE(await(std::move(task)), length);
                    ++completed;
                } catch (const Cancelled&) {
                    ++stopped;
                }
            }
        }
        QVERIFY2(completed > 500 && stopped > 100,
                 qPrintable(QStringLiteral("%1 %2").arg(completed).arg(stopped)));
        QVERIFY(waitUntil([&] { return server.openConnections() <= 5; }));
        QVERIFY2(openDescriptors() <= before + 12, qPrintable(QString::number(openDescriptors() - before)));
    }
};

QTEST_GUILESS_MAIN(StopSoakTest)
#include "StopSoakTest.moc"
