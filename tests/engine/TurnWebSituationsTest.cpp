#include "engine/Situation.h"
#include "practice_host/PracticeHost.h"

using namespace varnel;
using namespace varnel::test;

namespace {

void answerFrom(Stage& stage, RemoteProvider provider)
{
    stage.model->setPassthroughEnabled(true);
    stage.model->chooseRemoteModel(provider, QStringLiteral("m"));
}

void sendRefused(Stage& stage)
{
    stage.model->setDraft(text("one"));
    stage.model->send();
    QVERIFY(stage.waitForEnd());
    QVERIFY(stage.chats.empty());
    QCOMPARE(stage.model->draft(), text("one"));
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
        {"a model that says nothing to tools",
         [](Stage& stage) {
             searchWith(stage);
             stage.send(text("one"));
             replyJson(stage, 200, "{\"message\":{\"content\":\"\"}}");
         },
         {searching, text("The model finished without a reply.")},
         {text("chat failed The model finished without a reply.")},
         {text("one")}},
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
        {"a provider searches",
         [](Stage& stage) {
             static QSemaphore gate(100);
             answerFrom(stage, RemoteProvider::Claude);
             stage.model->setSearch(SearchSource::Provider);
             stage.profile.secrets->items[text("CLAUDE_AI_API_KEY")] = "secret";
             stage.profile.secrets->gate = &gate;
             stage.send(text("one"));
             // No other key is looked for: each may ask the user to unlock.
             QCOMPARE(gate.available(), 99);
             replyJson(stage, 200, "{\"content\":[{\"type\":\"text\",\"text\":\"found\"}]}");
         },
         {},
         {},
         {text("one"), text("found")}},
        {"a provider says nothing",
         [](Stage& stage) {
             answerFrom(stage, RemoteProvider::DeepSeek);
             stage.profile.environment["DEEPSEEK_API_KEY"] = "secret";
             stage.send(text("one"));
             replyJson(stage, 200, "{\"choices\":[{\"message\":{\"content\":\"\"}}]}");
         },
         {text("DeepSeek returned an unexpected response")},
         {text("chat failed DeepSeek returned an unexpected response")},
         {text("one")}},
        {"a provider gives a reason",
         [](Stage& stage) {
             answerFrom(stage, RemoteProvider::DeepSeek);
             stage.profile.environment["DEEPSEEK_API_KEY"] = "secret";
             stage.send(text("one"));
             replyJson(stage, 200, "{\"error\":{\"message\":\"no credit for secret\"}}");
         },
         {text("DeepSeek returned an unexpected response")},
         {text("chat failed DeepSeek returned an unexpected response"),
          text("chat failed, detail: no credit for •••")},
         {text("one")}},
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

} // namespace

class TurnWebSituationsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void throughTheWeb_data() { addRows(webSituations()); }
    void throughTheWeb()
    {
        QFETCH(std::size_t, number);
        play(webSituations()[number]);
    }
};

QTEST_GUILESS_MAIN(TurnWebSituationsTest)
#include "TurnWebSituationsTest.moc"
