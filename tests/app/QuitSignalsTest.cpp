#include "ui/QuitSignals.h"

#include <QTest>
#include <QTimer>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

class QuitSignalsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void signalToAChildEndsTheChildAlone()
    {
        const varnel::QuitSignals quitSignals;
        const pid_t child = ::fork();
        if (child == 0) {
            ::alarm(5);
            for (;;)
                ::pause();
        }
        ::kill(child, SIGTERM);
        int status = 0;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QVERIFY(WIFSIGNALED(status));
        QCOMPARE(WTERMSIG(status), SIGTERM);

        const int still = 7;
        QTimer::singleShot(50, this, [] { QCoreApplication::exit(still); });
        QCOMPARE(QCoreApplication::exec(), still);
        std::raise(SIGTERM);
        QCOMPARE(QCoreApplication::exec(), 0);
    }
};

QTEST_GUILESS_MAIN(QuitSignalsTest)
#include "QuitSignalsTest.moc"
