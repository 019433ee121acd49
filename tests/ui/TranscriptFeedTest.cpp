#include "ui/TranscriptFeed.h"

#include "ui/ModelFixture.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QSignalSpy>
#include <QTest>

using namespace varnel;
using namespace varnel::test;
using namespace std::chrono_literals;

namespace {

ChatMessage stored(ChatRole role, const QString& content, std::optional<double> duration = 1.5)
{
    ChatMessage message;
    message.id = QUuid::createUuid();
    message.role = role;
    message.content = content;
    message.duration = duration;
    return message;
}

} // namespace

class TranscriptFeedTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aTurnIsFollowedPieceByPiece()
    {
        ModelFixture fixture({.piece = 1ms});
        TranscriptFeed feed(fixture.app, fixture.clock);
        TranscriptModel& transcript = *feed.model();
        fixture.app.chooseModel(QStringLiteral("practice-thinking:14b"));
        const QSignalSpy resets(&transcript, &TranscriptModel::wasReset);
        const QSignalSpy appended(&transcript, &TranscriptModel::appended);
        const QSignalSpy finished(&transcript, &TranscriptModel::finished);

        fixture.app.setDraft(QStringLiteral("Think"));
        fixture.app.send();
        QCOMPARE(transcript.count(), 2);
        QCOMPARE(transcript.message(0).role, TranscriptRole::User);
        QVERIFY(transcript.message(1).streaming);
        QVERIFY(transcript.message(1).waitingSince.has_value());
        QVERIFY(waitUntil([&] { return !transcript.message(1).thinking.isEmpty(); }));
        QVERIFY(!transcript.message(1).waitingSince.has_value());
        QVERIFY(transcript.message(1).thinkingSince.has_value());
        fixture.clock.advance(3s);
        QVERIFY(waitUntil([&] { return !fixture.app.isStreaming(); }));

        const TranscriptMessage& reply = transcript.message(1);
        QVERIFY(!reply.streaming);
        QCOMPARE(reply.thinkingTook, std::optional(3000ms));
        QVERIFY(reply.content.contains(QStringLiteral("Think")));
        QVERIFY2(reply.footer.startsWith(QStringLiteral("practice-thinking:14b · 3.0 s")),
                 qPrintable(reply.footer));
        QCOMPARE(resets.count(), 0);
        QCOMPARE(appended.count(), 2);
        QCOMPARE(finished.count(), 1);

        QVERIFY(feed.copyLastReply());
        QCOMPARE(QGuiApplication::clipboard()->text(), reply.content);
    }

    void aModelThatIsNotLoadedIsSaidToBeLoading_data()
    {
        QTest::addColumn<bool>("remote");
        QTest::newRow("Ollama") << false;
        QTest::newRow("a provider, of which nobody knows") << true;
    }
    void aModelThatIsNotLoadedIsSaidToBeLoading()
    {
        QFETCH(bool, remote);
        ModelFixture fixture({.slowStart = 1min});
        TranscriptFeed feed(fixture.app, fixture.clock);
        fixture.app.chooseModel(QStringLiteral("practice-slow:1b"));
        fixture.app.setDraft(QStringLiteral("Anyone?"));
        fixture.app.send();
        // Before the server was asked nobody knows.
        QCOMPARE(feed.model()->message(1).waitingLabel, QString());
        QVERIFY(waitUntil([&] { return fixture.app.isStreaming(); }));
        const QSignalSpy asked(&fixture.app, &AppModel::runningModelsChanged);
        if (remote)
            fixture.app.changeSettings(
                [](ChatSession& session) { session.answerBackend = AnswerBackend::Remote; });
        QVERIFY(waitUntil([&] { return asked.count() > 0; }));
        const bool silent = remote || !fixture.app.runningModels().empty();
        QCOMPARE(feed.model()->message(1).waitingLabel, silent ? QString() : QStringLiteral("Loading model"));
        fixture.app.stop();
        QVERIFY(waitUntil([&] { return !fixture.app.isStreaming(); }));
        QCOMPARE(feed.model()->count(), 1);
    }

    void aFailureStaysWithItsPrompt()
    {
        ModelFixture fixture;
        TranscriptFeed feed(fixture.app, fixture.clock);
        TranscriptModel& transcript = *feed.model();
        fixture.app.chooseModel(QStringLiteral("practice-drop:1b"));
        QVERIFY(fixture.say(QStringLiteral("Break off")));
        QCOMPARE(transcript.count(), 2); // what had arrived stays
        QCOMPARE(transcript.message(0).error, fixture.app.statusMessage());
        QVERIFY(!transcript.message(0).error.isEmpty());

        fixture.app.chooseModel(QStringLiteral("practice-chat:70b"));
        fixture.app.tryAgain();
        QCOMPARE(transcript.message(0).error, QString());
        QVERIFY(waitUntil([&] { return !fixture.app.isStreaming(); }));
        QCOMPARE(transcript.count(), 2);
        QCOMPARE(transcript.message(1).footer.section(QLatin1Char(' '), 0, 0),
                 QStringLiteral("practice-chat:70b"));
    }

    void messagesShowAndOfferWhatTheyHold()
    {
        ModelFixture fixture;
        TranscriptFeed feed(fixture.app, fixture.clock);
        ChatSession session;
        session.id = QUuid::createUuid();
        session.messages = {
            stored(ChatRole::User,
                   QStringLiteral("Look at these\n\n[pdf] Report\nPDF attached at a.pdf. Text "
                                  "was not extracted.\n\n[file] notes.txt\nsome text")),
            stored(ChatRole::Assistant, QStringLiteral("Here:\n\n```path:src/a.py\nx = 1\n```\n")),
            stored(ChatRole::User, QStringLiteral("And the path: where is it?")),
            stored(ChatRole::Assistant, QStringLiteral("The path: it is"), std::nullopt),
        };
        // What a file is called by any other key is a file too; a language with a colon is none.
        session.messages.insert(
            session.messages.begin() + 2,
            {stored(ChatRole::Assistant, QStringLiteral("~~~ File: notes\nx\n~~~")),
             stored(ChatRole::Assistant, QStringLiteral("> ```yaml:roles/web.yml\n> x\n> ```")),
             stored(ChatRole::Assistant, QStringLiteral("```python:x\na: 1\n```\nAnd: `path:a.py`"))});
        fixture.app.addConversation(session);
        const TranscriptModel& transcript = *feed.model();
        QCOMPARE(transcript.count(), 7);
        QCOMPARE(transcript.message(0).content, QStringLiteral("Look at these"));
        QCOMPARE(transcript.message(0).chips,
                 QList<TranscriptChip>({{QStringLiteral("PDF"), QStringLiteral("Report")},
                                        {QStringLiteral("File"), QStringLiteral("notes.txt")}}));
        QVERIFY(transcript.message(0).actions & TranscriptAction::Edit);
        QVERIFY(transcript.message(1).actions & TranscriptAction::WriteFiles);
        QVERIFY(!(transcript.message(1).actions & TranscriptAction::Regenerate)); // not the last one
        QVERIFY(!transcript.message(1).unfinished);
        QVERIFY(transcript.message(2).actions & TranscriptAction::WriteFiles);
        QVERIFY(transcript.message(3).actions & TranscriptAction::WriteFiles);
        QVERIFY(!(transcript.message(4).actions & TranscriptAction::WriteFiles));
        QVERIFY(!(transcript.message(6).actions & TranscriptAction::WriteFiles));
        QVERIFY(transcript.message(6).unfinished);
        QVERIFY(transcript.message(6).canTryAgain);

        fixture.app.chooseModel(QStringLiteral("practice-chat:70b"));
        feed.tryAgain(transcript.message(6).id);
        QVERIFY(waitUntil([&] { return !fixture.app.isBusy(); }));
        QCOMPARE(transcript.count(), 7);
        QVERIFY(!transcript.message(6).unfinished);
        QVERIFY(transcript.message(6).actions & TranscriptAction::Regenerate);
        QVERIFY(fixture.say(QStringLiteral("more")));
        QVERIFY(!(transcript.message(6).actions & TranscriptAction::Regenerate));
        QVERIFY(transcript.message(8).actions & TranscriptAction::Regenerate);
    }

    void anotherConversationIsAnotherTranscript()
    {
        ModelFixture fixture({.piece = 1ms});
        TranscriptFeed feed(fixture.app, fixture.clock);
        QVERIFY(fixture.begin(QStringLiteral("first")));
        const QUuid first = fixture.app.selection();
        fixture.app.newConversation();
        QCOMPARE(feed.model()->count(), 0);
        fixture.app.setDraft(QStringLiteral("second"));
        fixture.app.send();
        fixture.app.select(first);
        const QString shown = feed.model()->message(0).content;
        // What happens elsewhere is not for this transcript.
        QVERIFY(waitUntil([&] { return !fixture.app.isStreaming(); }));
        QCOMPARE(feed.model()->count(), 2);
        QCOMPARE(feed.model()->message(0).content, shown);
    }
};

QTEST_MAIN(TranscriptFeedTest)
#include "TranscriptFeedTest.moc"
