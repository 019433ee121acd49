#include "base/Task.h"
#include "base/Clock.h"
#include "base/Error.h"
#include "base/Wakeup.h"
#include "base/Worker.h"
#include "support/Await.h"

#include <QElapsedTimer>
#include <QTest>

#include <thread>

using namespace varnel;
using namespace varnel::test;
using namespace std::chrono_literals;

namespace {

struct Guard
{
    int& destroyed;
    ~Guard() { ++destroyed; }
};

Task<int> twice(int value)
{
    co_return 2 * value;
}

Task<int> sumOfTwice(int first, int second)
{
    co_return co_await twice(first) + co_await twice(second);
}

Task<void> failing()
{
    throw Error(QStringLiteral("no luck"));
    co_return;
}

Task<QString> describeFailure()
{
    QString text;
    try {
        co_await failing();
    } catch (const Error& error) {
        text = error.message();
    }
    co_return text;
}

Task<void> waitOn(Wakeup& wakeup, bool& ready, int& destroyed)
{
    const Guard guard{destroyed};
    while (!ready)
        co_await wakeup.wait();
}

Task<int> nested(Wakeup& wakeup, bool& ready, int& destroyed)
{
    const Guard guard{destroyed};
    co_await waitOn(wakeup, ready, destroyed);
    co_return 7;
}

Task<void> sleepForLong(const Clock& clock, std::stop_token stop)
{
    co_await clock.sleepFor(1h, stop);
}

} // namespace

class TaskTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void resultsAndErrorsTravelUp()
    {
        QCOMPARE(await(sumOfTwice(1, 2)), 6);
        QCOMPARE(await(describeFailure()), QStringLiteral("no luck"));
        QVERIFY_THROWS_EXCEPTION(Error, await(failing()));
    }

    void spuriousWakeupsLoseNothing()
    {
        Wakeup wakeup;
        bool ready = false;
        int destroyed = 0;
        Task<int> task = nested(wakeup, ready, destroyed);
        wakeup.notify();
        wakeup.notify();
        QCoreApplication::processEvents();
        QVERIFY(!task.isFinished());
        ready = true;
        wakeup.notify();
        QVERIFY(!task.isFinished()); // resumes from the event loop, never inside notify()
        QVERIFY(waitUntil([&] { return task.isFinished(); }));
        QCOMPARE(task.takeResult(), 7);
        QCOMPARE(destroyed, 2);
    }

    void destroyingATaskDestroysWhatItWaitsFor()
    {
        Wakeup wakeup;
        bool ready = false;
        int destroyed = 0;
        {
            const Task<int> task = nested(wakeup, ready, destroyed);
            ready = true;
            wakeup.notify(); // a wake-up under way when the task goes
        }
        QCOMPARE(destroyed, 2);
        QCoreApplication::processEvents(); // must not resume the destroyed frame
    }

    void sleepEndsOrIsStopped()
    {
        const SystemClock clock;
        await(clock.sleepFor(5ms, {}));

        std::stop_source stop;
        Task<void> task = sleepForLong(clock, stop.get_token());
        QVERIFY(!task.isFinished());
        std::jthread([&stop] { stop.request_stop(); }).join(); // a stop may come from any thread
        QVERIFY_THROWS_EXCEPTION(Cancelled, await(std::move(task)));

        std::stop_source already;
        already.request_stop();
        QVERIFY_THROWS_EXCEPTION(Cancelled, await(sleepForLong(clock, already.get_token())));
    }

    void workerHandsBackValuesErrorsAndObeysStop()
    {
        Worker worker;
        const auto mainThread = std::this_thread::get_id();
        const bool elsewhere = await(worker.run(
            [mainThread](const std::stop_token&) { return std::this_thread::get_id() != mainThread; }));
        QVERIFY(elsewhere);
        QVERIFY_THROWS_EXCEPTION(Error, await(worker.run([](const std::stop_token&) -> int {
                                     throw Error(QStringLiteral("broken"));
                                 })));

        std::stop_source stop;
        std::atomic<bool> sawStop = false;
        Task<int> task = worker.run(
            [&sawStop](const std::stop_token& token) {
                while (!token.stop_requested())
                    std::this_thread::sleep_for(1ms);
                sawStop = true;
                return 0;
            },
            stop.get_token());
        stop.request_stop();
        QVERIFY_THROWS_EXCEPTION(Cancelled, await(std::move(task)));
        QVERIFY(waitUntil([&] { return sawStop.load(); }));
    }

    void workEndsAfterTheCallThatStartedIt()
    {
        Worker worker;
        for (int i = 0; i < 1000; ++i) {
            Task<int> task = worker.run([i](const std::stop_token&) { return i; });
            QVERIFY(!task.isFinished()); // quick as it was
            QCOMPARE(await(std::move(task)), i);
        }
    }

    void workThatNeverStartsIsCancelled()
    {
        auto held = std::make_shared<int>(2);
        const std::weak_ptr<int> queuedWork = held;
        Task<int> running;
        Task<int> queued;
        {
            Worker worker(1);
            running = worker.run([queuedWork](const std::stop_token&) {
                while (!queuedWork.expired())
                    std::this_thread::sleep_for(1ms);
                return 1;
            });
            queued = worker.run([held = std::move(held)](const std::stop_token&) { return *held; });
        }
        QVERIFY_THROWS_EXCEPTION(Cancelled, await(std::move(queued)));
        QCOMPARE(await(std::move(running)), 1);
    }

    void timesAreReadAndWritten_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("written"); // null: refused
        QTest::newRow("plain") << "2026-11-15T20:25:47Z" << "2026-11-15T20:25:47Z";
        QTest::newRow("offset") << "2026-11-15T20:25:47+05:30" << "2026-11-15T14:55:47Z";
        QTest::newRow("fraction") << "2026-11-15T20:25:47.9994Z" << "2026-11-15T20:25:47Z";
        QTest::newRow("before 1970") << "1969-12-31T23:59:59Z" << "1969-12-31T23:59:59Z";
        QTest::newRow("leap day") << "2024-02-29T00:00:00Z" << "2024-02-29T00:00:00Z";
        QTest::newRow("no leap day") << "2026-02-29T00:00:00Z" << QString();
        QTest::newRow("no zone") << "2026-11-15T20:25:47" << QString();
        QTest::newRow("hour 24") << "2026-11-15T24:00:00Z" << QString();
        QTest::newRow("rest") << "2026-11-15T20:25:47Z " << QString();
        QTest::newRow("bare point") << "2026-11-15T20:25:47.Z" << QString();
        QTest::newRow("empty") << "" << QString();
    }
    void timesAreReadAndWritten()
    {
        QFETCH(QString, text);
        QFETCH(QString, written);
        const auto instant = fromIso8601(text.toStdString());
        QCOMPARE(instant ? toIso8601(*instant) : QString(), written);
    }
};

QTEST_GUILESS_MAIN(TaskTest)
#include "TaskTest.moc"
