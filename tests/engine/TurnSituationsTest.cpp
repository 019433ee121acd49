#include "engine/Situation.h"

using namespace varnel;
using namespace varnel::test;
using namespace std::chrono_literals;

namespace {

std::vector<Situation> streamedSituations()
{
    return {
        {"whole",
         [](Stage& stage) {
             stage.send(text("one"));
             stage.begin(line("ok") + doneLine);
         },
         {},
         {},
         {text("one"), text("ok")}},
        {"drops once",
         [](Stage& stage) {
             stage.send(text("one"));
             stage.chats.back()->abort();
             QVERIFY(stage.waitForChats(2));
             QCOMPARE(stage.chats[1]->body(), stage.chats[0]->body());
             QVERIFY(stage.chats[1]->header("Cookie").isEmpty());
             stage.begin(line("ok") + doneLine);
         },
         {stalled, QString()},
         {text("chat retry *")},
         {text("one"), text("ok")}},
        {"something else is said during the retry",
         [](Stage& stage) {
             stage.send(text("one"));
             stage.chats.back()->abort();
             QVERIFY(stage.waitForChats(2));
             stage.model->pullModel(text("x"));
             QVERIFY(stage.waitForChats(3));
             stage.chats[2]->reply(200, "application/x-ndjson", "");
             QVERIFY(waitUntil([&] { return stage.model->statusMessage() == text("Installed x"); }));
             stage.chats[1]->reply(200, "application/x-ndjson", line("ok") + doneLine);
         },
         {stalled, text("Installed x")},
         {text("chat retry *")},
         {text("one"), text("ok")}},
        {"drops twice",
         [](Stage& stage) {
             stage.send(text("one"));
             stage.chats.back()->abort();
             QVERIFY(stage.waitForChats(2));
             stage.chats.back()->abort();
         },
         {stalled, unreached},
         {text("chat retry *"), chatFailed + unreached},
         {text("one")}},
        {"says nothing once",
         [](Stage& stage) {
             stage.send(text("one"));
             QVERIFY(stage.waitForChats(2));
             QVERIFY(waitUntil([&] { return !stage.chats[0]->isOpen(); }));
             stage.begin(line("ok") + doneLine);
         },
         {stalled, QString()},
         {text("chat retry *")},
         {text("one"), text("ok")},
         800ms},
        {"stalls in the reply",
         [](Stage& stage) {
             stage.send(text("one"));
             stage.begin(line("half"));
         },
         {unreached},
         {chatFailed + unreached},
         {text("one"), text("half")},
         800ms},
        {"ends before the model does",
         [](Stage& stage) {
             stage.send(text("one"));
             stage.begin("{\"message\":{\"con");
             stage.chats.back()->endReply();
         },
         {text("The connection closed before the model finished.")},
         {text("chat failed The connection closed before the model finished.")},
         {text("one")}},
        {"the model vanished",
         [](Stage& stage) {
             stage.send(text("one"));
             replyJson(stage, 404, "{\"error\":\"model 'a' not found\"}");
         },
         {text("model 'a' not found")},
         {text("chat failed model 'a' not found")},
         {text("one")}},
        {"fails in the middle",
         [](Stage& stage) {
             stage.send(text("one"));
             stage.begin(thinkingLine("hm") + "{\"error\":\"out of\\nmemory\"}\n");
         },
         {text("out of\nmemory")},
         {text("chat failed out of\\nmemory")},
         {text("one"), QString()}},
        {"an empty reply",
         [](Stage& stage) {
             stage.send(text("one"));
             stage.begin(doneLine);
         },
         {text("The model finished without a reply.")},
         {text("chat failed The model finished without a reply.")},
         {text("one")}},
    };
}

std::vector<Situation> stoppedSituations()
{
    return {
        {"stopped while the prompt is saved",
         [](Stage& stage) {
             stage.model->setDraft(text("one"));
             stage.model->send();
             QVERIFY(waitUntil([&] { return stage.model->isStreaming(); }));
             stage.model->stop();
             QVERIFY(stage.waitForEnd());
             QVERIFY(stage.chats.empty());
         },
         {stopped},
         {},
         {text("one")}},
        {"stopped before the first byte",
         [](Stage& stage) {
             stage.send(text("one"));
             stage.model->stop();
             QVERIFY(waitUntil([&] { return !stage.chats[0]->isOpen(); }));
         },
         {stopped},
         {},
         {text("one")}},
        {"stopped in the thinking",
         [](Stage& stage) {
             stage.send(text("one"));
             stage.begin(thinkingLine("hm"));
             QVERIFY(waitUntil([&] { return !stage.session().messages.back().thinking.isEmpty(); }));
             stage.model->stop();
         },
         {stopped},
         {},
         {text("one"), QString()}},
        {"stopped in the reply",
         [](Stage& stage) {
             stage.send(text("one"));
             stage.begin(line("half"));
             QVERIFY(stage.waitForText(text("half")));
             stage.chats.back()->sendChunk(line(" and more"));
             stage.model->refreshRunningModels();
             QTest::qWait(50);
             stage.model->stop();
         },
         {stopped},
         {},
         {text("one"), text("half and more")}},
        {"stopped during the retry",
         [](Stage& stage) {
             stage.send(text("one"));
             stage.chats.back()->abort();
             QVERIFY(stage.waitForChats(2));
             stage.model->stop();
         },
         {stalled, stopped},
         {text("chat retry *")},
         {text("one")}},
        {"stopped as the retry is announced",
         [](Stage& stage) {
             QObject::connect(stage.model.get(), &AppState::statusMessageChanged, stage.model.get(),
                              [model = stage.model.get()] { model->stop(); });
             stage.send(text("one"));
             stage.chats.back()->abort();
             QVERIFY(stage.waitForEnd());
             QCOMPARE(stage.chats.size(), 1U);
         },
         {stalled, stopped},
         {text("chat retry *")},
         {text("one")}},
        {"stopped in a lookup",
         [](Stage& stage) {
             searchWith(stage);
             stage.profile.environment["VARNEL_OLLAMA_WEB_BASE"] = stage.server.url().toEncoded();
             stage.start();
             stage.send(text("one"));
             replyJson(stage, 200, wantsSearch);
             QVERIFY(stage.waitForChats(2));
             QCOMPARE(stage.chats.back()->path(), QByteArray("/api/web_search"));
             QCOMPARE(stage.model->factsOf(stage.model->streamingMessage()).steps.size(), 1U);
             stage.model->stop();
             QVERIFY(waitUntil([&] { return !stage.chats.back()->isOpen(); }));
         },
         {searching, stopped},
         {},
         {text("one")}},
        {"another send",
         [](Stage& stage) {
             stage.send(text("one"));
             stage.model->setDraft(text("two"));
             stage.model->send();
             stage.model->regenerate();
             QCOMPARE(stage.model->draft(), text("two"));
             stage.begin(line("ok") + doneLine);
         },
         {text("A reply is still running. Stop it or wait until it ends.")},
         {},
         {text("one"), text("ok")}},
        {"nothing to send",
         [](Stage& stage) {
             stage.model->setDraft(text(" \n"));
             stage.model->send();
             QVERIFY(!stage.model->isBusy());
         },
         {},
         {},
         {}},
        {"its conversation is removed",
         [](Stage& stage) {
             stage.send(text("one"));
             stage.begin(line("half"));
             QVERIFY(stage.waitForText(text("half")));
             stage.chats.back()->sendChunk(line(" and more"));
             QTest::qWait(50); // sooner than it is shown
             stage.model->remove(stage.model->selection());
             QVERIFY(stage.waitForEnd());
             stage.model->undoRemove();
         },
         {stopped},
         {},
         {text("one"), text("half and more")}},
        {"stopped when it is ready and nobody knows yet",
         [](Stage& stage) {
             stage.model->importContents([] { return QByteArray("x"); }, text("a.txt"), {}, true);
             QVERIFY(waitUntil([&] { return !stage.model->isImporting(); }));
             stage.model->setDraft(text("one"));
             stage.model->send();
             QThread::msleep(50);
             stage.model->stop();
             QVERIFY(stage.waitForEnd());
             QCOMPARE(stage.model->draft(), text("one"));
             QCOMPARE(stage.model->attachmentIDs().size(), 1U);
         },
         {stopped},
         {},
         {}},
        {"removed while it waits for a key",
         [](Stage& stage) {
             stage.send(text("one"));
             stage.begin(line("ok") + doneLine);
             QVERIFY(stage.waitForEnd());
             static QSemaphore gate; // outlives whoever waits at it
             stage.profile.secrets->gate = &gate;
             stage.model->setSearch(SearchSource::Ollama);
             stage.model->editAndResend(stage.session().messages.front().id, text("two"));
             stage.model->remove(stage.model->selection());
             QVERIFY(stage.waitForEnd());
             gate.release(10);
             stage.model->undoRemove();
         },
         {stopped},
         {},
         {text("one"), text("ok")}},
    };
}

} // namespace

class TurnSituationsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void streamed_data() { addRows(streamedSituations()); }
    void streamed()
    {
        QFETCH(std::size_t, number);
        play(streamedSituations()[number]);
    }

    void aFailureIsSaidBeforeTheTurnEndsAndLoggedAfter()
    {
        Stage stage;
        QStringList saidAtTheEnd;
        connect(stage.model.get(), &AppState::isStreamingChanged, this, [&] {
            if (!stage.model->isStreaming())
                saidAtTheEnd = stage.profile.logged() + QStringList(stage.model->statusMessage());
        });
        stage.send(text("one"));
        replyJson(stage, 404, "{\"error\":\"no model\"}");
        QVERIFY(stage.waitForEnd());
        QCOMPARE(saidAtTheEnd, QStringList{text("no model")});
        QCOMPARE(stage.profile.logged(), QStringList{chatFailed + text("no model")});
    }

    void stoppedOrRefused_data() { addRows(stoppedSituations()); }
    void stoppedOrRefused()
    {
        QFETCH(std::size_t, number);
        play(stoppedSituations()[number]);
    }
};

QTEST_GUILESS_MAIN(TurnSituationsTest)
#include "TurnSituationsTest.moc"
