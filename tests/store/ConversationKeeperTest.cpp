#include "store/ConversationKeeper.h"
#include "store/LibraryStore.h"

#include "StoreFixtures.h"
#include "support/Await.h"
#include "support/ManualClock.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QSemaphore>

#include <sys/stat.h>

using namespace varnel;
using namespace varnel::test;

namespace {

ChatMessage reply(const QUuid& id, const QString& content, std::optional<double> duration = std::nullopt)
{
    ChatMessage made = message(content, ChatRole::Assistant);
    made.id = id;
    made.duration = duration;
    return made;
}

struct Keeping
{
    QTemporaryDir scratch;
    ManualClock clock;
    std::vector<SaveStatus> reports;
    ConversationKeeper keeper{scratch.path(), clock,
                              [this](const SaveStatus& status) { reports.push_back(status); }};

    SessionList onDisk() const { return SessionStore(scratch.path()).load(); }
    std::vector<KeptReply> kept() const { return RecoveryFile(scratch.path()).load(); }
};

} // namespace

class ConversationKeeperTest : public QObject
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

    void aStopEndsTheWaitForASaveThatHangs()
    {
        QSemaphore goOn;
        Keeping keeping;
        keeping.keeper.saveLibrary([&](const std::stop_token&) -> std::optional<SetAside> {
            goOn.acquire();
            return std::nullopt;
        });
        std::stop_source stop;
        Task<void> flushed = keeping.keeper.flushed(stop.get_token());
        stop.request_stop();
        QVERIFY_THROWS_EXCEPTION(Cancelled, await(std::move(flushed)));
        goOn.release(10);
        await(keeping.keeper.flushed());
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

    void firstStartSavesOneConversation_data()
    {
        QTest::addColumn<QByteArray>("contents"); // null: no file
        QTest::addColumn<bool>("isProblem");
        QTest::newRow("nothing") << QByteArray() << false;
        QTest::newRow("empty list") << QByteArray("[]") << false;
        QTest::newRow("unreadable") << QByteArray("[}") << true;
    }
    void firstStartSavesOneConversation()
    {
        QFETCH(QByteArray, contents);
        QFETCH(bool, isProblem);
        Keeping keeping;
        if (!contents.isNull())
            writeFile(SessionStore::fileIn(keeping.scratch.path()), contents);
        const ChatSession fresh = session(QStringLiteral("New conversation"));
        const StoredConversations stored = keeping.keeper.load(fresh);
        QVERIFY(stored.sessions == SessionList{fresh});
        QCOMPARE(!stored.problems.empty(), isProblem);
        await(keeping.keeper.flushed());
        QVERIFY(keeping.onDisk() == SessionList{fresh});
        QCOMPARE(keeping.reports.size(), 1);
        QCOMPARE(keeping.reports[0].setAside.has_value(), isProblem);
    }

    void replyOfUnreadableConversationsIsKept()
    {
        Keeping keeping;
        RecoveryFile(keeping.scratch.path())
            .keep({.session = {}, .prompt = {}, .message = reply({}, QStringLiteral("x"))});
        writeFile(SessionStore::fileIn(keeping.scratch.path()), "[}");
        const ChatSession fresh = session(QStringLiteral("fresh"));
        const StoredConversations stored = keeping.keeper.load(fresh);
        QVERIFY(stored.sessions == SessionList{fresh});
        await(keeping.keeper.flushed());
        const QStringList names = namesIn(keeping.scratch.path());
        QCOMPARE(names.size(), 3);
        QVERIFY2(names[0].startsWith(QStringLiteral("recovery.unreadable-")), qPrintable(names[0]));
        QVERIFY2(names[2].startsWith(QStringLiteral("sessions.unreadable-")), qPrintable(names[2]));
    }

    void draftsAndAttachmentsSurvive()
    {
        const QUuid id = QUuid::createUuid();
        const Drafts drafts{
            {id, {.text = QStringLiteral("Wörter\n"), .attachments = {QUuid::createUuid(), id}}},
            {QUuid::createUuid(), {.text = QStringLiteral("x"), .attachments = {}}}};
        Keeping keeping;
        Drafts given = drafts;
        given[QUuid::createUuid()] = {};
        keeping.keeper.saveDrafts(given);
        await(keeping.keeper.flushed());
        QCOMPARE(DraftStore(keeping.scratch.path()).load(), drafts);
        writeFile(keeping.scratch.filePath(QStringLiteral("drafts.json")), "[{\"session\": \"x\"}]");
        SystemClock clock;
        ConversationKeeper next(keeping.scratch.path(), clock, [](const SaveStatus&) {});
        QVERIFY(next.load({}).problems.at(0).contains(QStringLiteral("[0].session: expected a UUID")));
    }

    // Every pair of what is stored and what was kept of a reply.
    void keptRepliesAreMerged_data()
    {
        QTest::addColumn<QString>("stored"); // null: not there; with "." complete
        QTest::addColumn<QString>("kept");
        QTest::addColumn<QString>("contents");
        QTest::newRow("missing") << QString() << "part" << "a part b";
        QTest::newRow("empty") << "" << "part" << "a part b";
        QTest::newRow("shorter") << "pa" << "part" << "a part b";
        QTest::newRow("longer") << "part more" << "part" << "a part more b";
        QTest::newRow("complete") << "p." << "part" << "a p. b";
        QTest::newRow("nothing kept") << QString() << "" << "a b";
    }
    void keptRepliesAreMerged()
    {
        QFETCH(QString, stored);
        QFETCH(QString, kept);
        const QUuid id = QUuid::createUuid();
        ChatSession base =
            session(QStringLiteral("s"), {message(QStringLiteral("a")), message(QStringLiteral("b"))});
        const QUuid prompt = base.messages[0].id;
        if (!stored.isNull())
            base.messages.insert(
                base.messages.begin() + 1,
                reply(id, stored, stored.endsWith(u'.') ? std::optional(1.0) : std::nullopt));
        const SessionList sessions{session(QStringLiteral("other")), base};
        const std::vector<KeptReply> replies{
            {.session = base.id, .prompt = prompt, .message = reply(id, kept)},
            {.session = QUuid::createUuid(), .prompt = prompt, .message = reply(id, kept)}};
        const SessionList merged = withKeptReplies(withKeptReplies(sessions, replies), replies);
        QStringList contents;
        for (const ChatMessage& each : merged[1].messages)
            contents.append(each.content);
        QTEST(contents.join(u' ').simplified(), "contents");
        QVERIFY(merged[0] == sessions[0]);
        const SessionList gone =
            withKeptReplies({session(QStringLiteral("s"))},
                            {{.session = base.id, .prompt = prompt, .message = reply(id, kept)}});
        QVERIFY(gone[0].messages.empty());
    }

    void runningReplyIsKeptUntilItIsSaved()
    {
        Keeping keeping;
        ChatSession base = session(QStringLiteral("s"), {message(QStringLiteral("q"))});
        keeping.keeper.saveSessions({base});
        const QUuid id = QUuid::createUuid();
        const auto say = [&](const QString& text) {
            keeping.keeper.keepReply(
                {.session = base.id, .prompt = base.messages[0].id, .message = reply(id, text)});
            await(keeping.keeper.flushed());
        };
        const auto keptText = [&] {
            const std::vector<KeptReply> kept = keeping.kept();
            return kept.empty() ? QString() : kept.front().message.content;
        };
        keeping.keeper.keepReply(
            {.session = base.id, .prompt = base.messages[0].id, .message = reply(id, QStringLiteral("1"))});
        QVERIFY(waitUntil([&] { return keptText() == QStringLiteral("1"); }));
        // Within the period nothing is written; at its end the latest is, though nothing more came.
        keeping.keeper.keepReply(
            {.session = base.id, .prompt = base.messages[0].id, .message = reply(id, QStringLiteral("12"))});
        keeping.clock.advance(ConversationKeeper::replyPeriod - std::chrono::milliseconds(1));
        QCOMPARE(keptText(), QStringLiteral("1"));
        keeping.clock.advance(std::chrono::milliseconds(1));
        QVERIFY(waitUntil([&] { return keptText() == QStringLiteral("12"); }));
        // What other conversations save meanwhile does not take it away.
        keeping.keeper.saveSessions({base, session(QStringLiteral("t"))});
        say(QStringLiteral("123"));
        QCOMPARE(keptText(), QStringLiteral("123"));
        // The next start finds it.
        {
            ConversationKeeper next(keeping.scratch.path(), keeping.clock, [](const SaveStatus&) {});
            QCOMPARE(next.load({}).sessions[0].messages.back().content, QStringLiteral("123"));
            await(next.flushed());
            QVERIFY(keeping.kept().empty());
            QCOMPARE(keeping.onDisk()[0].messages.size(), 2);
        }
        say(QStringLiteral("1234"));
        base.messages.push_back(reply(id, QStringLiteral("12345"), 2.0));
        keeping.keeper.replyEnded(id);
        keeping.keeper.saveSessions({base});
        await(keeping.keeper.flushed());
        QVERIFY(!QFileInfo::exists(RecoveryFile::fileIn(keeping.scratch.path())));
        QVERIFY(keeping.onDisk() == SessionList{base});
    }

    void failedSaveKeepsTheReply()
    {
        Keeping keeping;
        const ChatSession base = session(QStringLiteral("s"), {message(QStringLiteral("q"))});
        const QUuid id = QUuid::createUuid();
        keeping.keeper.keepReply(
            {.session = base.id, .prompt = base.messages[0].id, .message = reply(id, QStringLiteral("x"))});
        keeping.keeper.flush();
        ChatSession broken = base;
        broken.temperature = std::numeric_limits<double>::quiet_NaN();
        keeping.keeper.replyEnded(id);
        keeping.keeper.saveSessions({broken});
        await(keeping.keeper.flushed());
        QVERIFY(keeping.keeper.failure(SavedFile::Conversations));
        QCOMPARE(keeping.kept().size(), 1);
        // Another reply does not take its place.
        keeping.keeper.keepReply(
            {.session = base.id, .prompt = id, .message = reply(QUuid::createUuid(), QStringLiteral("y"))});
        keeping.keeper.flush();
        QCOMPARE(keeping.kept().size(), 2);
        QVERIFY_THROWS_EXCEPTION(Error, await(keeping.keeper.backUp({})));
        keeping.keeper.saveSessions({base});
        await(keeping.keeper.flushed());
        QCOMPARE(keeping.kept().size(), 1);
    }

    void endAndBackupWaitForSaves()
    {
        Keeping keeping;
        const SessionList sessions{session(QStringLiteral("s"), {message(QString(100'000, u'x'))})};
        keeping.keeper.saveSessions(sessions);
        // The library's index is saved in the same way, and before a backup too.
        LibraryStore library(keeping.scratch.path(), [&keeping](SaveQueue::Save save) {
            keeping.keeper.saveLibrary(std::move(save));
        });
        const auto addLink = [&library] {
            return library.addLink(QStringLiteral("t"), QStringLiteral("u"), {}, {}, noon);
        };
        addLink();
        const Backup backup = await(keeping.keeper.backUp({}));
        QCOMPARE(LibraryStore(backup.folder).items(), library.items());
        QVERIFY(QDir().mkpath(LibraryStore::indexIn(keeping.scratch.path()) + QStringLiteral(".saving/x")));
        addLink();
        QVERIFY_THROWS_EXCEPTION(Error, await(keeping.keeper.backUp({})));
        QCOMPARE(library.items().size(), 2);
        QVERIFY(keeping.keeper.failure(SavedFile::Library));
        QVERIFY(SessionStore(backup.folder).load() == sessions);
        {
            ConversationKeeper second(keeping.scratch.path(), keeping.clock, [](const SaveStatus&) {});
            second.load({});
            second.saveSessions({session(QStringLiteral("t"))});
            second.keepReply({.session = {}, .prompt = {}, .message = reply({}, QStringLiteral("x"))});
        }
        QCOMPARE(titlesOf(keeping.onDisk()), QStringList(QStringLiteral("t")));
        QCOMPARE(keeping.kept().size(), 1);
    }
};

QTEST_GUILESS_MAIN(ConversationKeeperTest)
#include "ConversationKeeperTest.moc"
