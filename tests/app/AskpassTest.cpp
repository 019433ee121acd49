#include "app/AskpassCaller.h"
#include "app/CommandModes.h"
#include "base/Error.h"
#include "base/SecretStore.h"
#include "support/Keyring.h"
#include "support/ProgramRun.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace varnel;
using namespace varnel::test;

/// The program as ssh's helper, against a real keyring.
class AskpassTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void savedPasswordIsPrintedAsItIs_data()
    {
        QTest::addColumn<QString>("password");
        QTest::addColumn<QByteArray>("output");
        QTest::newRow("blanks at the end") << QStringLiteral("pass word  ") << QByteArray("pass word  \n");
        QTest::newRow("not ASCII") << QStringLiteral("pä\u0085ß")
                                   << QByteArray("p\xc3\xa4\xc2\x85\xc3\x9f\n");
        QTest::newRow("empty") << QString() << QByteArray();
        QTest::newRow("none") << QString() << QByteArray();
    }
    void savedPasswordIsPrintedAsItIs()
    {
        if (!keyringInstalled())
            QSKIP("gnome-keyring is not installed");
        QFETCH(QString, password);
        QFETCH(QByteArray, output);
        const Keyring keyring;
        const auto secrets = systemSecretStore();
        if (QByteArrayView(QTest::currentDataTag()) != "none")
            secrets->save(QStringLiteral("varnel.ssh.password"), password);
        ProgramRun run;
        run.setVariable("DBUS_SESSION_BUS_ADDRESS", qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"));
        run.setVariable("VARNEL_ASKPASS", QStringLiteral("1"));
        QCOMPARE(run.run({QStringLiteral("ctl"), QStringLiteral("me@gpu-box's password: ")}),
                 output.isEmpty() ? 1 : 0);
        QCOMPARE(run.output(), output);
        QCOMPARE(run.errors(), "");
    }

    void lockedKeyringAnswersNothing()
    {
        if (!keyringInstalled())
            QSKIP("gnome-keyring is not installed");
        Keyring keyring;
        systemSecretStore()->save(QStringLiteral("varnel.ssh.password"), QStringLiteral("secret"));
        keyring.lock();
        ProgramRun run;
        run.setVariable("DBUS_SESSION_BUS_ADDRESS", qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"));
        run.setVariable("VARNEL_ASKPASS", QStringLiteral("1"));
        QCOMPARE(run.run({}), 1);
        QCOMPARE(run.output() + run.errors(), "");
    }

    void sshIsAnsweredEightTimes()
    {
        if (!keyringInstalled())
            QSKIP("gnome-keyring is not installed");
        const Keyring keyring;
        systemSecretStore()->save(QStringLiteral("varnel.ssh.password"), QStringLiteral("secret"));
        QTemporaryDir folder;
        const QString shell = folder.filePath(QStringLiteral("ssh")); // a shell by that name asks as ssh does
        QVERIFY(QFile::copy(QStringLiteral("/bin/sh"), shell));
        ProgramRun run;
        run.setVariable("DBUS_SESSION_BUS_ADDRESS", qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"));
        run.setVariable("VARNEL_ASKPASS", QStringLiteral("1"));
        run.setVariable("ASK", programPath(QStringLiteral("varnel")));
        const QString ask = QStringLiteral("for i in 1 2 3 4 5 6 7 8 9 10; do \"$ASK\" prompt; done; :");
        const auto answersTo = [&](const QString& program, const QStringList& arguments) {
            run.startProgram(program, arguments);
            run.wait(std::chrono::seconds(30));
            return run.output().count("secret\n");
        };
        const QString command = QStringLiteral("-c");
        QCOMPARE(answersTo(shell, {command, ask}), 8);
        QCOMPARE(answersTo(shell, {command, ask}), 8); // another process
        QCOMPARE(answersTo(QStringLiteral("/bin/sh"), {command, ask}), 10);
        QCOMPARE(answersTo(shell, {command, ask, QStringLiteral("-qW"), QStringLiteral("box:22")}), 0);
        QCOMPARE(answersTo(shell, {command, QStringLiteral("\"$0\" -c '%1'; :").arg(ask), shell}), 0);
    }

    void callerIsJudged()
    {
        QTemporaryDir folder;
        const auto counts = [&folder] { return folder.path(); };
        const AskpassCaller ssh{.pid = QCoreApplication::applicationPid(),
                                .started = QStringLiteral("1"),
                                .name = QStringLiteral("ssh"),
                                .arguments = {QStringLiteral("-oW=W"), QStringLiteral("me@gpu-box")},
                                .hasSshAbove = false};
        AskpassCaller later = ssh;
        later.started = QStringLiteral("2");
        for (int i = 0; i < 8; ++i)
            QVERIFY(mayAnswer(ssh, counts));
        QVERIFY(!mayAnswer(ssh, counts));
        QVERIFY(mayAnswer(later, counts)); // the number was given to another one
        // Counts of those that have ended are swept away.
        AskpassCaller gone = ssh;
        gone.pid = 2147483647;
        QVERIFY(mayAnswer(gone, counts));
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files).size(), 2);
        // Where nothing can be counted, nothing is said, except to who is no ssh.
        const auto readOnly = [] { return QStringLiteral("/proc"); };
        const auto none = []() -> QString { throw Error(QStringLiteral("no folder")); };
        QVERIFY(!mayAnswer(later, readOnly));
        QVERIFY_THROWS_EXCEPTION(Error, mayAnswer(later, none));
        QVERIFY(mayAnswer(AskpassCaller{}, none));
    }

    void modeIsDecidedBeforeAnythingElse_data()
    {
        QTest::addColumn<QStringList>("environment");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("mode");
        const auto row = [](const char* name, const QStringList& environment, const QStringList& arguments,
                            CommandMode mode) {
            QTest::newRow(name) << environment << arguments << static_cast<int>(mode);
        };
        const QString askpass = QStringLiteral("VARNEL_ASKPASS=1");
        const QString host = QStringLiteral("XCTestConfigurationFilePath=");
        const QString ctl = QStringLiteral("ctl");
        row("askpass wins", {askpass, host}, {ctl}, CommandMode::Askpass);
        for (const char* const value : {"", "0", "01", "true", "yes", "1 "})
            row(value, {QStringLiteral("VARNEL_ASKPASS=") + QLatin1String(value)}, {}, CommandMode::Window);
        row("command line before test host", {host}, {ctl}, CommandMode::Ctl);
        row("test host", {host}, {QStringLiteral("CTL")}, CommandMode::TestHost);
        row("not first", {}, {QStringLiteral("--foo"), ctl}, CommandMode::Window);
    }
    void modeIsDecidedBeforeAnythingElse()
    {
        QFETCH(QStringList, environment);
        QFETCH(QStringList, arguments);
        const Environment lookUp = [&](const char* name) -> std::optional<QByteArray> {
            for (const QString& entry : environment) {
                if (entry.startsWith(QLatin1String(name) + QLatin1Char('=')))
                    return entry.mid(entry.indexOf(QLatin1Char('=')) + 1).toUtf8();
            }
            return std::nullopt;
        };
        QTEST(static_cast<int>(chooseMode(lookUp, arguments)), "mode");
    }
};

QTEST_GUILESS_MAIN(AskpassTest)
#include "AskpassTest.moc"
