#include "e2e/WindowFlow.h"
#include "support/Await.h"

#include <QJsonArray>
#include <QTest>

using namespace varnel::practice;
using namespace varnel::test;
using namespace std::chrono_literals;

/// An earlier prompt that is edited: sent again, which takes back what came after it, or carried on
/// elsewhere.
class EditFlowTest : public WindowFlow
{
    Q_OBJECT

    /// The texts of a conversation's prompts.
    static QStringList prompts(const QJsonObject& conversation)
    {
        QStringList texts;
        for (const QJsonValue message : conversation.value(QStringLiteral("messages")).toArray()) {
            if (message.toObject().value(QStringLiteral("role")) == QLatin1String("user"))
                texts.append(message.toObject().value(QStringLiteral("content")).toString());
        }
        return texts;
    }
    /// Waits until the conversations on the disk have just these prompts, each with its reply.
    bool keeps(const QList<QStringList>& wanted)
    {
        return waitUntil([&] {
            QList<QStringList> found;
            for (const QJsonObject& conversation : m_window->conversations())
                found.append(prompts(conversation));
            return found == wanted;
        });
    }
    bool say(const char* prompt, int replies)
    {
        m_window->type(QLatin1String(prompt));
        m_window->key("Return");
        return waitUntil([&] {
            return m_host.activeStreams() == 0 &&
                   m_window->tree()
                           .filter(QStringLiteral("list item | Reply: This is a practice reply"))
                           .size() == replies;
        });
    }

private Q_SLOTS:
    void initTestCase()
    {
        if (const QString missing = makeWindow(); !missing.isEmpty())
            QSKIP(qPrintable(missing));
        QVERIFY(openWindow());
        QVERIFY(say("One", 1));
        QVERIFY(say("Two", 2));
        QVERIFY(keeps({{QStringLiteral("One"), QStringLiteral("Two")}}));
    }

    void anEarlierPromptIsCarriedOnElsewhere()
    {
        QVERIFY(m_window->press("Edit")); // the first one's
        QVERIFY(m_window->shows(QStringLiteral("push button | Send again (removes 3 later messages)")));
        m_window->key("End");
        m_window->type(QStringLiteral(" more"));
        QVERIFY(m_window->press("Fork to a new conversation"));
        QVERIFY(m_window->showsNoMore(QStringLiteral("push button | Send again")));
        m_window->key("Return");
        QVERIFY(keeps({{QStringLiteral("One more")}, {QStringLiteral("One"), QStringLiteral("Two")}}));
    }

    void anEarlierPromptIsSentAgain()
    {
        m_window->key("ctrl+Page_Down");
        QVERIFY(m_window->press("Edit"));
        QVERIFY(m_window->shows(QStringLiteral("push button | Send again (removes 3 later messages)")));
        m_window->key("ctrl+a");
        m_window->type(QStringLiteral("Other"));
        QVERIFY(m_window->press("Send again (removes 3 later messages)"));
        QVERIFY(keeps({{QStringLiteral("Other")}, {QStringLiteral("One more")}}));
        QVERIFY(m_window->press("Bring back"));
        QVERIFY(keeps({{QStringLiteral("One"), QStringLiteral("Two")}, {QStringLiteral("One more")}}));
        QVERIFY(m_window->quit());
    }
};

QTEST_GUILESS_MAIN(EditFlowTest)
#include "EditFlowTest.moc"
