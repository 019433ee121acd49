#include "support/Await.h"
#include "support/ProgramRun.h"

#include <QProcess>
#include <QTest>

using namespace varnel::test;

/// The program and the practice host as two processes, the way a person tries them.
class PracticeChatTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_host.start(programPath(QStringLiteral("varnel-practice-host")),
                     {QStringLiteral("--port"), QStringLiteral("0"), QStringLiteral("--pace"),
                      QStringLiteral("1"), QStringLiteral("--quiet")});
        QByteArray line;
        QVERIFY(waitUntil([&] {
            line += m_host.readAllStandardOutput();
            return line.endsWith('\n');
        }));
        QVERIFY2(line.startsWith("Practice host on http://127.0.0.1:"), line.constData());
        m_url = QString::fromUtf8(line.split(' ').at(3));
    }

    void cleanupTestCase()
    {
        m_host.terminate();
        QVERIFY(waitUntil([this] { return m_host.state() == QProcess::NotRunning; }));
    }

    void everyListedModelAnswersAsItsNameSays_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("output"); // what it holds
        QTest::addColumn<QByteArray>("errors"); // what it begins with
        const QByteArray practice = "This is a practice reply";
        QTest::newRow("practice-chat") << 0 << practice << QByteArray();
        QTest::newRow("practice-thinking") << 0 << QByteArray() << QByteArray();
        QTest::newRow("practice-markdown") << 0 << QByteArray() << QByteArray();
        QTest::newRow("practice-flood:1000") << 0 << QByteArray("flood flood") << QByteArray();
        QTest::newRow("practice-drop")
            << 1 << practice << QByteArray("Ollama is not reachable. The connection to 127.0.0.1");
        QTest::newRow("practice-cut")
            << 1 << practice << QByteArray("Ollama is not reachable. The connection to 127.0.0.1");
        QTest::newRow("practice-error") << 1 << practice << QByteArray("practice: ");
        QTest::newRow("practice-empty")
            << 1 << QByteArray() << QByteArray("The model finished without a reply.");
        QTest::newRow("practice-html") << 1 << QByteArray() << QByteArray("Ollama is not reachable. <");
        QTest::newRow("practice-busy") << 1 << QByteArray() << QByteArray("server busy, please try again");
        QTest::newRow("no-such-model") << 1 << QByteArray() << QByteArray("model 'no-such-model' not found");
    }
    void everyListedModelAnswersAsItsNameSays()
    {
        QFETCH(int, status);
        QFETCH(QByteArray, output);
        QFETCH(QByteArray, errors);
        ProgramRun run;
        run.setVariable("VARNEL_OLLAMA_URL", m_url);
        QCOMPARE(run.run({QStringLiteral("ctl"), QStringLiteral("chat"),
                          QString::fromUtf8(QTest::currentDataTag()), QStringLiteral("hello")}),
                 status);
        QVERIFY2(run.output().contains(output), run.output().constData());
        QVERIFY2(run.errors().startsWith(errors) && run.errors().isEmpty() == errors.isEmpty(),
                 run.errors().constData());
    }

    void tagsListWhatTheHostHas()
    {
        ProgramRun run;
        run.setVariable("VARNEL_OLLAMA_URL", m_url);
        QCOMPARE(run.run({QStringLiteral("ctl"), QStringLiteral("tags")}), 0);
        QVERIFY(run.output().contains("practice-chat:"));
        QCOMPARE(run.errors(), "");
    }

private:
    QProcess m_host;
    QString m_url;
};

QTEST_GUILESS_MAIN(PracticeChatTest)
#include "PracticeChatTest.moc"
