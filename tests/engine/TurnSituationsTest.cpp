#include "engine/Stage.h"
#include "practice_host/PracticeHost.h"
#include "providers/credentials/ApiBase.h"

using namespace varnel;
using namespace varnel::test;
using namespace std::chrono_literals;

namespace {

const QString stalled = QStringLiteral("The reply stalled. Trying again…");
const QString stopped = QStringLiteral("Stopped.");
const QString searching = QStringLiteral("Searching with Ollama…");
const QString unreached = QStringLiteral("Could not reach SERVER.");
const QString chatFailed = QStringLiteral("chat failed ");

QString text(const char* words)
{
    return QString::fromUtf8(words);
}

/// One way a turn can go: what happens, and all that is said and kept of it.
struct Situation
{
    const char* name;
    void (*play)(Stage& stage);
    QStringList trace;
    QStringList log;
    QStringList messages;
};

/// A whole reply of an Ollama model that asks for the web.
const QByteArray wantsSearch = "{\"message\":{\"content\":\"\",\"tool_calls\":[{\"function\":{\"name\":"
                               "\"web_search\",\"arguments\":{\"query\":\"q\"}}}]}}";

void answerFrom(Stage& stage, RemoteProvider provider)
{
    stage.model->setPassthroughEnabled(true);
    stage.model->chooseRemoteModel(provider, QStringLiteral("m"));
}

void searchWith(Stage& stage)
{
    stage.profile.secrets->items[QStringLiteral("OLLAMA_API_KEY")] = "key";
    stage.model->setSearch(SearchSource::Ollama);
}

void sendRefused(Stage& stage)
{
    stage.model->setDraft(text("one"));
    stage.model->send();
    QVERIFY(stage.waitForEnd());
    QVERIFY(stage.chats.empty());
    QCOMPARE(stage.model->draft(), text("one"));
}

void replyJson(Stage& stage, int status, const QByteArray& body)
{
    stage.chats.back()->reply(status, "application/json", body);
}

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
         {text("one"), text("ok")}},
        {"stalls in the reply",
         [](Stage& stage) {
             stage.send(text("one"));
             stage.begin(line("half"));
         },
         {unreached},
         {chatFailed + unreached},
         {text("one"), text("half")}},
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
             stage.model->remove(stage.model->selection());
             QVERIFY(stage.waitForEnd());
             stage.model->undoRemove();
         },
         {stopped},
         {},
         {text("one"), text("half")}},
    };
}

std::vector<Situation> webSituations()
{
    return {
        {"with tools",
         [](Stage& stage) {
             static practice::PracticeHost host;
             if (host.port() == 0)
                 host.listen();
             stage.profile.environment["VARNEL_OLLAMA_WEB_BASE"] = host.url().toEncoded();
             searchWith(stage);
             stage.start();
             stage.send(text("one"));
             replyJson(stage, 200, wantsSearch);
             QVERIFY(stage.waitForChats(2));
             QVERIFY(stage.chats.back()->body().contains("practice"));
             replyJson(stage, 200, "{\"message\":{\"content\":\"found\"}}");
             QVERIFY(stage.waitForEnd());
             const ReplyFacts facts = stage.model->factsOf(stage.session().messages.back().id);
             QCOMPARE(facts.steps, (std::vector<SearchStep>{{SearchStep::Kind::Search, text("q")}}));
         },
         {searching, QString()},
         {},
         {text("one"), text("found")}},
        {"a model without tools",
         [](Stage& stage) {
             searchWith(stage);
             stage.send(text("one"));
             replyJson(stage, 400, "{\"error\":\"a does not support tools\"}");
             QVERIFY(stage.waitForEnd());
             QVERIFY(stage.model->failure()->offersSearchOff);
             QVERIFY(!stage.model->toolsHint().isEmpty());
             stage.model->turnSearchOffAndTryAgain();
             QVERIFY(stage.waitForChats(2));
             QVERIFY(!stage.chats.back()->body().contains("tools"));
             QVERIFY(stage.model->toolsHint().isEmpty());
             stage.begin(line("ok") + doneLine);
         },
         {searching, text("a does not support tools"), QString()},
         {text("chat failed a does not support tools")},
         {text("one"), text("ok")}},
        {"a search without a key",
         [](Stage& stage) {
             stage.model->setSearch(SearchSource::Brave);
             sendRefused(stage);
         },
         {text("Add a Brave search key in Settings → Providers. The query stays on this Mac until then.")},
         {},
         {}},
        {"a blocked plan",
         [](Stage& stage) {
             stage.model->setSearch(SearchSource::Provider);
             sendRefused(stage);
         },
         {text("This model has no search of its own. Add an Ollama or Brave key in Settings → Providers, "
               "then choose that source.")},
         {},
         {}},
        {"no passthrough",
         [](Stage& stage) {
             stage.model->chooseRemoteModel(RemoteProvider::OpenAi, QStringLiteral("m"));
             sendRefused(stage);
             QCOMPARE(stage.session().answerBackend, AnswerBackend::Ollama);
         },
         {text("Remote passthrough is off. The next message stays on Ollama.")},
         {},
         {}},
        {"no key for the provider",
         [](Stage& stage) {
             answerFrom(stage, RemoteProvider::Claude);
             sendRefused(stage);
         },
         {text("Claude API key is not in the Keychain or the environment.")},
         {},
         {}},
        {"a provider answers",
         [](Stage& stage) {
             answerFrom(stage, RemoteProvider::DeepSeek);
             stage.profile.environment["DEEPSEEK_API_KEY"] = "secret";
             QVERIFY(stage.model->needsCloudConfirmation());
             stage.send(text("one"));
             QCOMPARE(stage.chats.back()->header("Authorization"), QByteArray("Bearer secret"));
             replyJson(stage, 200, "{\"choices\":[{\"message\":{\"content\":\"hello\"}}]}");
             QVERIFY(stage.waitForEnd());
             QVERIFY(!stage.model->needsCloudConfirmation());
             QCOMPARE(stage.session().messages.back().backend, text("DeepSeek · m"));
         },
         {},
         {},
         {text("one"), text("hello")}},
        {"a provider drops",
         [](Stage& stage) {
             answerFrom(stage, RemoteProvider::DeepSeek);
             stage.profile.environment["DEEPSEEK_API_KEY"] = "secret";
             stage.send(text("one"));
             stage.chats.back()->abort();
         },
         {text("DeepSeek request failed: *")},
         {text("chat failed DeepSeek request failed: *")},
         {text("one")}},
        {"a temperature that is refused",
         [](Stage& stage) {
             answerFrom(stage, RemoteProvider::Claude);
             stage.profile.environment["ANTHROPIC_API_KEY"] = "secret";
             stage.send(text("one"));
             replyJson(stage, 400, "{\"error\":{\"message\":\"`temperature` may only be 1\"}}");
             QVERIFY(stage.waitForEnd());
             QVERIFY(stage.model->failure()->offersTemperatureReset);
             stage.model->resetTemperatureAndTryAgain();
             QVERIFY(stage.waitForChats(2));
             QVERIFY(!stage.chats.back()->body().contains("0.7"));
             replyJson(stage, 200, "{\"content\":[{\"type\":\"text\",\"text\":\"ok\"}]}");
         },
         {text("Claude request failed: {\"error\":{\"message\":\"`temperature` may only be 1*"), QString()},
         {text("chat failed Claude request failed: {\"error\"*")},
         {text("one"), text("ok")}},
    };
}

void addRows(const std::vector<Situation>& situations)
{
    QTest::addColumn<std::size_t>("number");
    for (std::size_t number = 0; number < situations.size(); ++number)
        QTest::newRow(situations[number].name) << number;
}

void play(const Situation& situation)
{
    Stage stage;
    for (const char* const name : {"VARNEL_DEEPSEEK_BASE", "VARNEL_CLAUDE_BASE", "VARNEL_OPENAI_BASE"})
        stage.profile.environment[name] = stage.server.url().toEncoded();
    if (QByteArray(situation.name).contains("stalls") || QByteArray(situation.name).contains("says nothing"))
        stage.stallTime = 300ms;
    stage.start();
    situation.play(stage);
    if (QTest::currentTestFailed())
        return;
    QVERIFY(stage.waitForEnd());
    const QString server = stage.server.url().toString();
    QVERIFY(matches(stage.trace.entries, situation.trace, server));
    QVERIFY(matches(stage.profile.logged(), situation.log, server));
    QCOMPARE(stage.contents(), situation.messages);
    // What is shown is what the next start finds.
    const std::vector<ChatMessage> shown = stage.session().messages;
    stage.start();
    QCOMPARE(stage.session().messages.size(), shown.size());
    for (std::size_t i = 0; i < shown.size(); ++i)
        QCOMPARE(stage.session().messages[i].content, shown[i].content);
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

    void stoppedOrRefused_data() { addRows(stoppedSituations()); }
    void stoppedOrRefused()
    {
        QFETCH(std::size_t, number);
        play(stoppedSituations()[number]);
    }

    void throughTheWeb_data() { addRows(webSituations()); }
    void throughTheWeb()
    {
        QFETCH(std::size_t, number);
        play(webSituations()[number]);
    }
};

QTEST_GUILESS_MAIN(TurnSituationsTest)
#include "TurnSituationsTest.moc"
