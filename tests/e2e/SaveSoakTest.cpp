#include "store/SessionStore.h"
#include "support/ProgramRun.h"

#include <QDir>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

using namespace varnel;
using namespace varnel::test;

/// A program that saves all the time is killed at random moments. Whatever moment it was, the whole old or
/// the whole new file is there, and no save that was reported done is lost.
class SaveSoakTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void noMomentIsWrong()
    {
        const QTemporaryDir scratch;
        const int rounds = qEnvironmentVariableIntValue("VARNEL_SAVE_ROUNDS");
        QRandomGenerator random(20261121);
        qint64 done = 0;
        int torn = 0;
        for (int round = 0; round < (rounds > 0 ? rounds : 100); ++round) {
            QProcess saver;
            saver.start(programPath(QStringLiteral("varnel-test-saver")), {scratch.path()});
            QVERIFY(saver.waitForReadyRead(10'000));
            QThread::usleep(random.bounded(20'000U));
            saver.kill();
            QVERIFY(saver.waitForFinished(10'000));
            QCOMPARE(saver.exitStatus(), QProcess::CrashExit);
            QCOMPARE(saver.readAllStandardError(), QByteArray());
            const QList<QByteArray> lines = saver.readAllStandardOutput().split('\n');
            const qint64 acknowledged = lines[lines.size() - 2].toLongLong();
            QVERIFY2(acknowledged > done, "what the last run had saved was not there");

            const SessionList sessions = SessionStore(scratch.path()).load();
            const ChatSession& session = sessions.front();
            done = session.contextLength;
            QVERIFY2(done == acknowledged || done == acknowledged + 1,
                     qPrintable(QString::number(done - acknowledged)));
            QCOMPARE(session.messages.size(), 50);
            QCOMPARE(session.messages.back().content.toLongLong(), done);
            const QStringList names = QDir(scratch.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
            QVERIFY2(names.size() <= 2 && names[0] == QStringLiteral("sessions.json"),
                     qPrintable(names.join(u' ')));
            torn += int(names.size()) - 1;
        }
        // Otherwise the moments were not random, and this has shown nothing.
        QVERIFY(torn > 0);
    }
};

QTEST_GUILESS_MAIN(SaveSoakTest)
#include "SaveSoakTest.moc"
