#include "store/SaveQueue.h"
#include "store/SessionStore.h"

#include "StoreFixtures.h"
#include "support/Await.h"

#include <QSemaphore>

using namespace varnel;
using namespace varnel::test;

class SaveQueueTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void onlyTheLatestIsSaved()
    {
        std::vector<int> saved;
        std::vector<SaveStatus> reports;
        QSemaphore goOn;
        SaveQueue queue([&](const SaveStatus& status) { reports.push_back(status); });
        const auto put = [&](SavedFile file, int number) {
            queue.put(file, [&, number](const std::stop_token&) -> std::optional<SetAside> {
                goOn.acquire();
                saved.push_back(number);
                return std::nullopt;
            });
        };
        put(SavedFile::Conversations, 1);
        Task<void> flushed = queue.flushed();
        put(SavedFile::Conversations, 2);
        put(SavedFile::Drafts, 3);
        put(SavedFile::Conversations, 4);
        goOn.release(10);
        await(queue.flushed());
        await(std::move(flushed));
        QVERIFY(saved == (std::vector{1, 3, 4}) || saved == (std::vector{3, 4}));
        QVERIFY(waitUntil([&] { return reports.size() == saved.size(); }));
    }

    void whatIsPutLaterIsNotWaitedFor()
    {
        QSemaphore goOn;
        SaveQueue queue([](const SaveStatus&) {});
        const auto put = [&](SavedFile file) {
            queue.put(file, [&](const std::stop_token&) -> std::optional<SetAside> {
                goOn.acquire();
                return std::nullopt;
            });
        };
        put(SavedFile::Recovery);
        Task<void> flushed = queue.flushed();
        put(SavedFile::Conversations);
        goOn.release();
        await(std::move(flushed));
        goOn.release(10);
    }

    void failedSavesAreTriedAgain()
    {
        bool isBroken = true;
        int conversations = 0;
        std::vector<SaveStatus> reports;
        {
            SaveQueue queue([&](const SaveStatus& status) { reports.push_back(status); });
            queue.put(SavedFile::Conversations, [&](const std::stop_token&) -> std::optional<SetAside> {
                ++conversations;
                if (isBroken)
                    throw Error(QStringLiteral("broken"));
                return std::nullopt;
            });
            await(queue.flushed());
            QCOMPARE(reports.size(), 1);
            QCOMPARE(reports[0].failure, QStringLiteral("broken"));
            QCOMPARE(queue.failure(SavedFile::Conversations), QStringLiteral("broken"));
            isBroken = false;
            queue.put(SavedFile::Drafts, [](const std::stop_token&) { return std::optional<SetAside>(); });
            await(queue.flushed());
            QCOMPARE(conversations, 2);
            QCOMPARE(reports.size(), 3);
            QVERIFY(!reports[1].failure && !queue.failure(SavedFile::Conversations));
            queue.put(SavedFile::Conversations, [&](const std::stop_token&) -> std::optional<SetAside> {
                ++conversations;
                throw std::bad_alloc();
            });
            queue.flush();
            QVERIFY(queue.failure(SavedFile::Conversations));
            conversations = 0;
        }
        QCOMPARE(conversations, 1); // a last time at the end
    }

    // At the end of the program nobody waits for a save that has to be done again anyway.
    void overtakenSaveIsGivenUpAtTheEnd()
    {
        std::vector<SaveStatus> reports;
        SaveQueue queue([&](const SaveStatus& status) { reports.push_back(status); });
        QSemaphore begun;
        queue.put(SavedFile::Conversations, [&](const std::stop_token& stop) -> std::optional<SetAside> {
            begun.release();
            while (!stop.stop_requested())
                QThread::yieldCurrentThread();
            throw Cancelled();
        });
        QVERIFY(begun.tryAcquire(1, 10'000));
        bool isSaved = false;
        queue.put(SavedFile::Conversations, [&](const std::stop_token& stop) {
            isSaved = !stop.stop_requested();
            return std::optional<SetAside>();
        });
        queue.flush();
        QVERIFY(isSaved);
        QCOMPARE(reports.size(), 1);
        QVERIFY(!reports[0].failure);

        const QTemporaryDir scratch;
        std::stop_source stopped;
        stopped.request_stop();
        SessionStore store(scratch.path());
        QVERIFY_THROWS_EXCEPTION(Cancelled, store.save({session(QStringLiteral("s"))}, stopped.get_token()));
        QCOMPARE(namesIn(scratch.path()).size(), 0);
    }
};

QTEST_GUILESS_MAIN(SaveQueueTest)
#include "SaveQueueTest.moc"
