#pragma once

#include "engine/Stage.h"

namespace varnel::test {

inline const QString stalled = QStringLiteral("The reply stalled. Trying again…");
inline const QString stopped = QStringLiteral("Stopped.");
inline const QString searching = QStringLiteral("Searching with Ollama…");
inline const QString unreached = QStringLiteral("Could not reach SERVER.");
inline const QString chatFailed = QStringLiteral("chat failed ");

inline QString text(const char* words)
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
    std::chrono::milliseconds stallTime = std::chrono::minutes(10);
};

/// A whole reply of an Ollama model that asks for the web.
inline const QByteArray wantsSearch =
    "{\"message\":{\"content\":\"\",\"tool_calls\":[{\"function\":{\"name\":"
    "\"web_search\",\"arguments\":{\"query\":\"q\"}}}]}}";

inline void searchWith(Stage& stage)
{
    stage.profile.secrets->items[QStringLiteral("OLLAMA_API_KEY")] = "key";
    stage.model->setSearch(SearchSource::Ollama);
}

inline void replyJson(Stage& stage, int status, const QByteArray& body)
{
    stage.chats.back()->reply(status, "application/json", body);
}

inline void addRows(const std::vector<Situation>& situations)
{
    QTest::addColumn<std::size_t>("number");
    for (std::size_t number = 0; number < situations.size(); ++number)
        QTest::newRow(situations[number].name) << number;
}

inline void play(const Situation& situation)
{
    Stage stage;
    for (const char* const name : {"VARNEL_DEEPSEEK_BASE", "VARNEL_CLAUDE_BASE", "VARNEL_OPENAI_BASE"})
        stage.profile.environment[name] = stage.server.url().toEncoded();
    stage.stallTime = situation.stallTime;
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

} // namespace varnel::test
