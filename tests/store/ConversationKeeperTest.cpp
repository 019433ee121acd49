#include "store/ConversationKeeper.h"
#include "store/LibraryStore.h"

#include "StoreFixtures.h"
#include "support/Await.h"
#include "support/ManualClock.h"

#include <QRegularExpression>
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

    // A reply whose conversation is not there, for whatever reason, and one that has its place.
    void replyWithoutAPlaceIsKeptAndSaid_data()
    {
        QTest::addColumn<QByteArray>("conversations"); // null: no file; "one": the one with a place
        QTest::addColumn<QString>("names");
        const QString aside = QStringLiteral("recovery.unreadable-* sessions.json");
        QTest::newRow("unreadable") << QByteArray("[}") << aside + QStringLiteral(" sessions.unreadable-*");
        QTest::newRow("no file") << QByteArray() << aside;
        QTest::newRow("others") << QByteArray("one") << aside;
        QTest::newRow("others, and it cannot be renamed")
            << QByteArray("one") << QStringLiteral("recovery.json sessions.json");
    }
    void replyWithoutAPlaceIsKeptAndSaid()
    {
        QFETCH(QByteArray, conversations);
        Keeping keeping;
        const QString folder = keeping.scratch.path();
        const ChatSession base = session(QStringLiteral("s"), {message(QStringLiteral("q"))});
        if (conversations == "one")
            SessionStore(folder).save({base});
        else if (!conversations.isNull())
            writeFile(SessionStore::fileIn(folder), conversations);
        const QUuid lost = QUuid::createUuid();
        {
            RecoveryFile recovery(folder);
            recovery.keep({.session = lost, .prompt = {}, .message = reply(lost, QStringLiteral("lost"))});
            recovery.keep({.session = base.id,
                           .prompt = base.messages[0].id,
                           .message = reply(QUuid::createUuid(), QStringLiteral("part"))});
        }
        std::optional<StoredConversations> stored;
        {
            const bool isFixed = QByteArray(QTest::currentDataTag()).endsWith("renamed");
            QVERIFY(!isFixed || (::chmod(qPrintable(folder), 0555) == 0 &&
                                 ::chmod(qPrintable(SessionStore::fileIn(folder)), 0644) == 0 &&
                                 ::chmod(qPrintable(RecoveryFile::fileIn(folder)), 0644) == 0));
            const AsNobody nobody(isFixed);
            stored = keeping.keeper.load(session(QStringLiteral("fresh")));
        }
        QVERIFY(::chmod(qPrintable(folder), 0700) == 0);
        if (conversations == "one")
            QCOMPARE(stored->sessions.front().messages.back().content, QStringLiteral("part"));
        QVERIFY(!stored->problems.empty());
        QVERIFY2(stored->problems.back().contains(QStringLiteral("recovery.")),
                 qPrintable(stored->problems.back()));
        await(keeping.keeper.flushed());
        QStringList names = namesIn(folder);
        names.replaceInStrings(QRegularExpression(QStringLiteral("unreadable-.*")),
                               QStringLiteral("unreadable-*"));
        QTEST(names.join(u' '), "names");
        const QString kept = folder + u'/' + namesIn(folder).front();
        QVERIFY2(contentsOf(kept).contains("lost"), qPrintable(kept));
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
