#include "websearch/SearchPlan.h"
#include "support/MemorySecretStore.h"
#include "websearch/SearchKeys.h"
#include "websearch/SearchTools.h"

#include <QJsonDocument>
#include <QTest>

using namespace varnel;
using namespace varnel::test;

namespace {

/// The plan in one line.
QString described(const SearchPlan& plan)
{
    if (const auto* tools = std::get_if<SearchWithTools>(&plan))
        return QStringLiteral("tools ") + displayName(tools->backend);
    if (const auto* blocked = std::get_if<SearchBlocked>(&plan))
        return blocked->message;
    return std::holds_alternative<NativeSearch>(plan) ? QStringLiteral("native") : QStringLiteral("plain");
}

Environment environmentOf(const QMap<QByteArray, QByteArray>& variables)
{
    return [variables](const char* name) -> std::optional<QByteArray> {
        const auto found = variables.constFind(name);
        return found == variables.constEnd() ? std::nullopt : std::optional(*found);
    };
}

QJsonArray parsed(const QByteArray& json)
{
    return QJsonDocument::fromJson(json).array();
}

} // namespace

class SearchPlanTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void plansFollowSourceBackendAndKeys_data()
    {
        QTest::addColumn<SearchSource>("source");
        QTest::addColumn<QString>("answeredBy"); // a provider's name, "" for Ollama
        QTest::addColumn<QString>("keys");       // o(llama), b(rave), p(rovider)
        QTest::addColumn<QString>("plan");
        const auto row = [](SearchSource source, const char* answeredBy, const char* keys, const char* plan) {
            QTest::addRow("%d %s %s", static_cast<int>(source), answeredBy, keys)
                << source << QString::fromUtf8(answeredBy) << QString::fromUtf8(keys)
                << QString::fromUtf8(plan);
        };
        using Source = SearchSource;
        row(Source::Off, "", "obp", "plain");
        row(Source::Off, "claude", "obp", "plain");
        row(Source::Ollama, "", "o", "tools Ollama");
        row(Source::Ollama, "openai", "o", "tools Ollama");
        row(Source::Ollama, "", "bp",
            "Add a Ollama search key in Settings → Providers. The query stays on this Mac until then.");
        row(Source::Ollama, "gemini", "b",
            "Add a Ollama search key in Settings → Providers. The query stays on this Mac until then.");
        row(Source::Ollama, "gemini", "o",
            "Gemini searches with its own key. Choose Gemini search in the Search menu, or switch this "
            "conversation to Ollama.");
        row(Source::Brave, "", "b", "tools Brave");
        row(Source::Brave, "deepseek", "b", "tools Brave");
        row(Source::Brave, "openrouter", "o",
            "Add a Brave search key in Settings → Providers. The query stays on this Mac until then.");
        row(Source::Brave, "claude", "b",
            "Claude searches with its own key. Choose Claude search in the Search menu, or switch this "
            "conversation to Ollama.");
        row(Source::Provider, "openai", "p", "native");
        row(Source::Provider, "openai", "ob",
            "Add a OpenAI key in Settings → Providers to search with OpenAI.");
        row(Source::Provider, "deepseek", "obp", "tools Ollama");
        row(Source::Provider, "openrouter", "bp", "tools Brave");
        row(Source::Provider, "", "ob", "tools Ollama");
        row(Source::Provider, "", "p",
            "This model has no search of its own. Add an Ollama or Brave key in Settings → Providers, then "
            "choose that source.");
    }
    void plansFollowSourceBackendAndKeys()
    {
        QFETCH(SearchSource, source);
        QFETCH(QString, answeredBy);
        QFETCH(QString, keys);
        const auto provider = remoteProviderFromRawValue(answeredBy);
        QTEST(described(planSearch({.source = source,
                                    .answerBackend = provider ? AnswerBackend::Remote : AnswerBackend::Ollama,
                                    .provider = provider.value_or(RemoteProvider::Gemini),
                                    .hasOllamaKey = keys.contains(u'o'),
                                    .hasBraveKey = keys.contains(u'b'),
                                    .hasProviderKey = keys.contains(u'p')})),
              "plan");
    }

    void keysAreLookedForUnderTheirNames()
    {
        MemorySecretStore secrets;
        const Environment environment =
            environmentOf({{"BRAVE_API_KEY", " two\n"}, {"tavrin.search.brave", "never"}});
        const auto found = [&](SearchBackend backend, const Environment& variables) {
            return resolveKey(searchKeyNames(backend), secrets, variables, Unlocking::Never);
        };
        QVERIFY(!found(SearchBackend::Ollama, environment));
        QVERIFY(!found(SearchBackend::Brave, environmentOf({{"tavrin.search.brave", "never"}})));
        QCOMPARE(found(SearchBackend::Ollama, environmentOf({{"OLLAMA_API_KEY", "o"}}))->key,
                 QStringLiteral("o"));
        QCOMPARE(found(SearchBackend::Brave, environment)->key, QStringLiteral("two"));
        secrets.items[QStringLiteral("tavrin.search.brave")] = "shared";
        QCOMPARE(found(SearchBackend::Brave, environment)->key, QStringLiteral("shared"));
        QVERIFY(isSharedSearchKey(*found(SearchBackend::Brave, environment)));
        secrets.items[QStringLiteral("BRAVE_API_KEY")] = "saved";
        QCOMPARE(found(SearchBackend::Brave, environment)->key, QStringLiteral("saved"));
        QVERIFY(!isSharedSearchKey(*found(SearchBackend::Brave, environment)));
    }

    void toolsAreOfferedAsServicesExpect()
    {
        const QByteArray expected =
            "[{'function':{'description':'Search the public web and return titles, URLs, and short "
            "excerpts.',"
            "'name':'web_search','parameters':{'properties':{'max_results':{'description':'How many results "
            "to return, from 1 to 10','type':'integer'},'query':{'description':'The search query',"
            "'type':'string'}},'required':['query'],'type':'object'}},'type':'function'},"
            "{'function':{'description':'Fetch one public http or https page and return its title and text.',"
            "'name':'web_fetch','parameters':{'properties':{'url':{'description':'The page URL',"
            "'type':'string'}},'required':['url'],'type':'object'}},'type':'function'}]";
        QCOMPARE(QJsonDocument(searchToolDefinitions()).toJson(QJsonDocument::Compact),
                 QByteArray(expected).replace('\'', '"'));
    }

    void callsAreReadWhateverTheyHold_data()
    {
        QTest::addColumn<QByteArray>("call"); // with ' for "
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<QByteArray>("toOllama"); // the arguments
        QTest::newRow("object") << QByteArray(
                                       "{'id':'c1','function':{'index':0,'name':'f','arguments':{'a':[1]}}}")
                                << QStringLiteral("f") << QStringLiteral("{'a':[1]}")
                                << QByteArray("{'a':[1]}");
        QTest::newRow("text") << QByteArray("{'id':'c1','type':'function','function':{'name':'f','arguments':"
                                            "'{\\'a\\':2}'}}")
                              << QStringLiteral("f") << QStringLiteral("{'a':2}") << QByteArray("{'a':2}");
        QTest::newRow("no JSON") << QByteArray("{'id':'c1','function':{'name':'f','arguments':'a: 2'}}")
                                 << QStringLiteral("f") << QStringLiteral("a: 2") << QByteArray("{}");
        QTest::newRow("nothing") << QByteArray("{'id':'c1'}") << QString() << QStringLiteral("{}")
                                 << QByteArray("{}");
    }
    void callsAreReadWhateverTheyHold()
    {
        QFETCH(QByteArray, call);
        QFETCH(QString, arguments);
        QFETCH(QByteArray, toOllama);
        const auto calls = decodeToolCalls(parsed('[' + call.replace('\'', '"') + ']'));
        QCOMPARE(calls.size(), 1U);
        QCOMPARE(calls.front().id, QStringLiteral("c1"));
        QTEST(calls.front().name, "name");
        QCOMPARE(calls.front().arguments, arguments.replace(u'\'', u'"'));
        const QJsonObject function =
            toOllamaToolCall(calls.front()).value(QLatin1String("function")).toObject();
        const QJsonValue echoed = function.value(QLatin1String("arguments"));
        QVERIFY(echoed.isObject());
        QCOMPARE(QJsonDocument(echoed.toObject()).toJson(QJsonDocument::Compact),
                 toOllama.replace('\'', '"'));
    }

    void callsWithoutAnIdAreGivenOne()
    {
        const auto calls = decodeToolCalls(parsed("[{\"id\":null},{\"id\":\"\"}]"));
        QVERIFY(!calls.at(0).id.isEmpty() && !calls.at(1).id.isEmpty());
        QVERIFY(calls.at(0).id != calls.at(1).id);
    }
};

QTEST_GUILESS_MAIN(SearchPlanTest)
#include "SearchPlanTest.moc"
