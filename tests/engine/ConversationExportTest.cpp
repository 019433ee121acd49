#include "engine/ConversationExport.h"

#include "base/Error.h"
#include "markdown/Markdown.h"

#include <QTest>

#include <limits>

using namespace varnel;

namespace {

ChatMessage message(ChatRole role, const QString& content)
{
    return {.id = QUuid::createUuid(),
            .role = role,
            .content = content,
            .thinking = {},
            .createdAt = *fromIso8601("2026-11-15T20:25:47Z"),
            .backend = role == ChatRole::Assistant ? QStringLiteral("llama_3") : QString(),
            .duration = std::nullopt};
}

ChatSession conversation(std::vector<ChatMessage> messages)
{
    ChatSession session;
    session.id = QUuid::createUuid();
    session.title = QStringLiteral("A *bold*\ntitle");
    session.messages = std::move(messages);
    return session;
}

QString importProblem(const QByteArray& text)
{
    try {
        conversationFromJson(text);
        return {};
    } catch (const Error& error) {
        return error.message();
    }
}

} // namespace

class ConversationExportTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void markdownNamesEverything()
    {
        ChatMessage question = message(ChatRole::User, QStringLiteral("Why?\n\n\n"));
        ChatMessage answer =
            message(ChatRole::Assistant, QStringLiteral("So.\n\nSources:\n- [a](https://a)"));
        answer.thinking = QStringLiteral("Hm.\n```\nopen");
        answer.duration = 3.14;
        ChatSession session = conversation({question, answer});
        session.systemPrompt = QStringLiteral("Be brief.");
        const QHash<QUuid, QStringList> attachments{
            {question.id, {QStringLiteral("scan_1"), QStringLiteral("b")}}};
        const QString start = QStringLiteral("# A \\*bold\\* title\n\n## System prompt\n\nBe brief.\n\n"
                                             "## You · 2026-11-15T20:25:47Z\n\nWhy?\n\n"
                                             "Attached:\n\n- scan\\_1\n- b\n\n"
                                             "## Assistant · llama\\_3 · 2026-11-15T20:25:47Z · 3.1 s\n\n");
        const QString end = QStringLiteral("So.\n\nSources:\n- [a](https://a)\n");
        QCOMPARE(conversationMarkdown(session, ExportedThinking::Omitted, attachments), start + end);
        QCOMPARE(conversationMarkdown(session, ExportedThinking::Quoted, attachments),
                 start + QStringLiteral("> **Thinking**\n> \n> Hm.\n> ```\n> open\n\n") + end);
    }

    void openCodeEndsWithItsMessage_data()
    {
        QTest::addColumn<QString>("content");
        for (const char* const content :
             {"```", "```py\nx", "~~~\n```\nx\n", "````\n```\n", "- a\n  ```\n  x", "> ~~~\n> x",
              "``` a\n~~~~~~\n", "   ~~~~\n\n\n", "    ```\n    indented", "$$\nx"})
            QTest::newRow(content) << QString::fromLatin1(content);
    }
    void openCodeEndsWithItsMessage()
    {
        QFETCH(QString, content);
        const QString text =
            conversationMarkdown(conversation({message(ChatRole::Assistant, content),
                                               message(ChatRole::User, QStringLiteral("next"))}),
                                 ExportedThinking::Omitted);
        int headings = 0;
        for (const MarkdownBlock& block : parseMarkdown(text))
            headings += std::holds_alternative<MarkdownHeading>(block.content) ? 1 : 0;
        QCOMPARE(headings, 3);
    }

    void jsonComesBackUnderFreshNames()
    {
        ChatSession session = conversation({message(ChatRole::User, QStringLiteral("ä\n🙂")),
                                            message(ChatRole::Assistant, QStringLiteral("b"))});
        session.projectPath = QStringLiteral("~/secret-project");
        session.createdAt = session.updatedAt = *fromIso8601("2026-11-15T20:25:47Z");
        ChatSession imported = conversationFromJson(conversationJson(session));
        QVERIFY(imported.id != session.id && !imported.id.isNull());
        QVERIFY(imported.messages.at(0).id != session.messages.at(0).id);
        QVERIFY(imported.messages.at(0).id != imported.messages.at(1).id);
        QCOMPARE(imported.projectPath, QString());
        imported.id = session.id;
        imported.projectPath = session.projectPath;
        for (std::size_t i = 0; i < session.messages.size(); ++i)
            imported.messages.at(i).id = session.messages.at(i).id;
        QCOMPARE(imported, session);
        session.temperature = std::numeric_limits<double>::quiet_NaN();
        QVERIFY_THROWS_EXCEPTION(Error, conversationJson(session));
    }

    void whatIsNoExportIsRefused_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("problem");
        const QByteArray whole = conversationJson(conversation({message(ChatRole::User, {})}));
        QTest::newRow("empty") << QByteArray() << QString();
        QTest::newRow("cut") << whole.chopped(2) << QString();
        QTest::newRow("a list, as it is stored")
            << QByteArray("[]") << QStringLiteral("expected an object, found an array");
        QTest::newRow("no version") << QByteArray("{\"conversation\": {}}")
                                    << QStringLiteral("version: missing");
        QTest::newRow("other version") << QByteArray(whole).replace("\"version\": 1", "\"version\": 2")
                                       << QStringLiteral("version: this program reads version 1, not 2");
        QTest::newRow("other role") << QByteArray(whole).replace("\"user\"", "\"bot\"")
                                    << QStringLiteral("conversation.messages[0].role: unknown value \"bot\"");
    }
    void whatIsNoExportIsRefused()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, problem);
        const QString found = importProblem(text);
        QVERIFY2(
            found.startsWith(QStringLiteral("The file is no conversation that was exported as JSON. ")) &&
                found.contains(problem),
            qPrintable(found));
    }
};

QTEST_GUILESS_MAIN(ConversationExportTest)
#include "ConversationExportTest.moc"
