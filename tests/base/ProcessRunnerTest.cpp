#include "base/ProcessRunner.h"
#include "base/BoundedTail.h"
#include "base/Error.h"
#include "support/Await.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace varnel;
using namespace varnel::test;
using namespace std::chrono_literals;
using End = ProcessOutput::End;

Q_DECLARE_METATYPE(varnel::ProcessOutput)

namespace {

ProcessRequest shell(const char* script, std::chrono::milliseconds timeLimit = 60s)
{
    return {.program = QStringLiteral("/bin/sh"),
            .arguments = {QStringLiteral("-c"), QString::fromUtf8(script)},
            .environment = std::nullopt,
            .timeLimit = timeLimit};
}

ProcessOutput run(ProcessRequest request)
{
    return await(SystemProcessRunner().run(std::move(request), {}));
}

/// Whether this process has no children at all, neither running nor waiting to be collected.
bool hasNoChildren()
{
    siginfo_t information{};
    return ::waitid(P_ALL, 0, &information, WEXITED | WNOHANG | WNOWAIT) == -1 && errno == ECHILD;
}

qsizetype openDescriptors()
{
    return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::System | QDir::Files | QDir::Dirs).size();
}

} // namespace

class ProcessRunnerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void endsAreTold_data()
    {
        QTest::addColumn<QString>("script");
        QTest::addColumn<ProcessOutput>("expected");
        QTest::newRow("both outputs")
            << "echo out; echo err >&2; exit 3" << ProcessOutput{End::Exited, 3, "out\n", "err\n"};
        QTest::newRow("signal") << "echo out; kill -TERM $$"
                                << ProcessOutput{End::Signalled, SIGTERM, "out\n", {}};
        QTest::newRow("time limit") << "echo out; exec sleep 60"
                                    << ProcessOutput{End::TimedOut, 0, "out\n", {}};
        QTest::newRow("time limit, stubborn") << "trap '' TERM INT; echo out; while :; do :; done"
                                              << ProcessOutput{End::TimedOut, 0, "out\n", {}};
        QTest::newRow("empty input") << "cat; echo end" << ProcessOutput{End::Exited, 0, "end\n", {}};
        QTest::newRow("outputs closed early")
            << "exec >&- 2>&-; sleep 0.1; exit 4" << ProcessOutput{End::Exited, 4, {}, {}};
    }
    void endsAreTold()
    {
        QFETCH(QString, script);
        QFETCH(ProcessOutput, expected);
        const ProcessOutput output =
            run(shell(script.toUtf8().constData(), expected.end == End::TimedOut ? 1s : 60s));
        QCOMPARE(output.end, expected.end);
        QCOMPARE(output.status, expected.status);
        QCOMPARE(output.standardOutput, expected.standardOutput);
        QCOMPARE(output.standardError, expected.standardError);
        QVERIFY(hasNoChildren());
    }

    void whatCannotBeStartedIsNoError_data()
    {
        QTest::addColumn<QString>("program");
        QTest::newRow("missing") << "/nonexistent/tool";
        QTest::newRow("not executable") << "/etc/passwd";
        QTest::newRow("folder") << "/bin";
        QTest::newRow("relative") << "sh"; // would be looked for in PATH
    }
    void whatCannotBeStartedIsNoError()
    {
        QFETCH(QString, program);
        QCOMPARE(run({.program = program, .arguments = {}, .environment = {}}), ProcessOutput{});
        QVERIFY(hasNoChildren());
    }

    void argumentsAndEnvironmentArriveAsTheyAre()
    {
        QProcessEnvironment environment;
        environment.insert(QStringLiteral("ONLY"), QStringLiteral("a b"));
        const QStringList arguments{QStringLiteral("-c"),
                                    QStringLiteral("printf '%s|' \"$0\" \"$1\" \"$ONLY\" \"$HOME\""),
                                    QStringLiteral("$(id); *"), QString()};
        const ProcessOutput output =
            run({.program = QStringLiteral("/bin/sh"), .arguments = arguments, .environment = environment});
        QCOMPARE(output.standardOutput, QByteArray("$(id); *||a b||"));
    }

    void floodsAreReadAndOnlyTheirEndsAreKept()
    {
        // 10 MB of a character of three bytes, which a mebibyte is no multiple of, and as much on the other
        // pipe.
        const ProcessOutput output =
            run(shell("yes € | head -c 10000000; yes err | head -c 10000000 >&2; echo last"));
        QCOMPARE(output.end, End::Exited);
        QVERIFY(output.standardOutput.size() > BoundedTail::defaultLimit - 4);
        QVERIFY(output.standardOutput.size() <= BoundedTail::defaultLimit);
        QVERIFY(output.standardOutput.startsWith("€\n") || output.standardOutput.startsWith("\n€"));
        QVERIFY(output.standardOutput.endsWith("last\n"));
        QCOMPARE(output.standardError.size(), BoundedTail::defaultLimit);
    }

    void endIsToldWhileAGrandchildHoldsThePipes_data()
    {
        QTest::addColumn<QString>("script");
        QTest::newRow("silent") << "sleep 60 & echo $! >&2";
        QTest::newRow("flooding") << "(trap '' PIPE; while :; do echo flood; done) 2>/dev/null & echo $! >&2";
    }
    void endIsToldWhileAGrandchildHoldsThePipes()
    {
        QFETCH(QString, script);
        const ProcessOutput output = run(shell(script.toUtf8().constData()));
        QCOMPARE(output.end, End::Exited);
        const pid_t grandchild = output.standardError.trimmed().toInt();
        QVERIFY(grandchild > 0);
        QCOMPARE(::kill(grandchild, SIGKILL), 0); // it was still there
    }

    void stopKills()
    {
        const SystemProcessRunner runner;
        std::stop_source stop;
        Task<ProcessOutput> task = runner.run(shell("exec sleep 60"), stop.get_token());
        QVERIFY(!task.isFinished());
        stop.request_stop();
        QVERIFY_THROWS_EXCEPTION(Cancelled, await(std::move(task)));
        QVERIFY(waitUntil(hasNoChildren));
        QVERIFY_THROWS_EXCEPTION(Cancelled, await(runner.run(shell("exit 0"), stop.get_token())));
        QVERIFY(hasNoChildren());
    }

    void destroyingTheTaskKills_data()
    {
        QTest::addColumn<bool>("running");
        QTest::newRow("just started") << false;
        QTest::newRow("running") << true;
    }
    void destroyingTheTaskKills()
    {
        QFETCH(bool, running);
        QTemporaryDir folder;
        const QString sign = folder.filePath(QStringLiteral("running"));
        Task<ProcessOutput> task =
            SystemProcessRunner().run(shell(("touch " + sign.toUtf8() + "; exec sleep 60").constData()), {});
        if (running)
            QVERIFY(waitUntil([&sign] { return QFile::exists(sign); }));
        task.reset();
        QVERIFY(waitUntil(hasNoChildren));
    }

    void descriptorsStayOnTheirSide()
    {
        const int leaking = ::open("/dev/null", O_RDONLY); // as a library without care opens it
        const ProcessOutput output = run({.program = QStringLiteral("/bin/ls"),
                                          .arguments = {QStringLiteral("/proc/self/fd")},
                                          .environment = {}});
        ::close(leaking);
        QCOMPARE(output.standardOutput, QByteArray("0\n1\n2\n3\n")); // the last is the folder it lists

        const qsizetype before = openDescriptors();
        for (int i = 0; i < 100; ++i)
            run(shell(i % 2 == 0 ? "echo out" : "exec /nonexistent"));
        QCOMPARE(openDescriptors(), before);
        QVERIFY(hasNoChildren());
    }

    void tailIsTheEndOfWhatWasAppended_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("limit");
        QTest::addColumn<QByteArray>("tail");
        QTest::newRow("empty") << QByteArray() << 4 << QByteArray();
        QTest::newRow("fits") << QByteArray("abcd") << 4 << QByteArray("abcd");
        QTest::newRow("one too many") << QByteArray("abcde") << 4 << QByteArray("bcde");
        QTest::newRow("long") << QByteArray("0123456789").repeated(50) + "end" << 5 << QByteArray("89end");
        QTest::newRow("cut in a character") << QByteArray("abc€€€") << 7 << QByteArray("€€");
        QTest::newRow("cut in a long character") << QByteArray("🔑🔑") << 7 << QByteArray("🔑");
        QTest::newRow("whole characters") << QByteArray("€€€") << 6 << QByteArray("€€");
        QTest::newRow("broken from the start") << QByteArray("\x80\x80zz") << 4 << QByteArray("\x80\x80zz");
        QTest::newRow("no text") << QByteArray("\x80").repeated(9) << 8 << QByteArray("\x80").repeated(5);
    }
    void tailIsTheEndOfWhatWasAppended()
    {
        QFETCH(QByteArray, text);
        QFETCH(int, limit);
        QFETCH(QByteArray, tail);
        for (int pieceSize : {1, 2, 3, 5, 8, 1000}) {
            BoundedTail bounded(limit);
            for (qsizetype at = 0; at < text.size(); at += pieceSize)
                bounded.append(
                    QByteArrayView(text).sliced(at, std::min<qsizetype>(pieceSize, text.size() - at)));
            QCOMPARE(bounded.bytes(), tail);
            QCOMPARE(bounded.isCut(), text.size() > limit);
        }
    }
};

QTEST_GUILESS_MAIN(ProcessRunnerTest)
#include "ProcessRunnerTest.moc"
