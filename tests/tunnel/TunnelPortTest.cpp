#include "tunnel/TunnelPort.h"
#include "support/Keyring.h"
#include "support/SshServer.h"
#include "tunnel/TunnelFixture.h"

#include <QProcess>
#include <QTcpServer>
#include <QTest>

#include <csignal>
#include <unistd.h>

using namespace varnel;
using namespace varnel::test;
using namespace std::chrono_literals;
using Occupant = TunnelPort::Occupant;
using End = ProcessOutput::End;

namespace {

/// Answers every tool as it is told to, and remembers what was run.
class ScriptedRunner final : public ProcessRunner
{
public:
    End end = End::Exited;
    QByteArray listing;
    mutable QStringList runs;

    Task<ProcessOutput> run(ProcessRequest request, std::stop_token) const override
    {
        runs.append(request.program + QLatin1Char(' ') + request.arguments.join(QLatin1Char(' ')));
        const bool isList = request.program.endsWith(QLatin1String("lsof"));
        co_return ProcessOutput{
            .end = end,
            .status = 1,
            .standardOutput = isList ? listing : " command of " + request.arguments[1].toLatin1() + "\n",
            .standardError = "warning"};
    }
};

/// Runs every tool as a user without rights.
class UnprivilegedRunner final : public ProcessRunner
{
public:
    Task<ProcessOutput> run(ProcessRequest request, std::stop_token stop) const override
    {
        request.arguments =
            QStringList{QStringLiteral("--reuid=65534"), QStringLiteral("--clear-groups"), request.program} +
            request.arguments;
        request.program = QStringLiteral("/usr/bin/setpriv");
        return m_runner.run(std::move(request), std::move(stop));
    }

private:
    SystemProcessRunner m_runner;
};

/// A port on which nobody listens, at least for now.
int freePort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return server.serverPort();
}

} // namespace

/// Who holds a port: with the real lsof and ps, and with real tunnels.
class TunnelPortTest : public QObject
{
    Q_OBJECT

    SystemProcessRunner m_runner;
    Worker m_worker;
    SystemClock m_clock;
    TunnelPort m_port{m_runner, m_worker, m_clock};

    std::vector<Occupant> occupants(int port) { return await(m_port.occupants(port, {}), 20s); }
    bool isBlocked(int port) { return await(m_port.isBlocked(port, {})); }

private Q_SLOTS:
    void listingIsReadLineByLine_data()
    {
        QTest::addColumn<int>("end");
        QTest::addColumn<QByteArray>("listing");
        QTest::addColumn<QList<int>>("pids");
        const auto row = [](const char* name, const QByteArray& listing, const QList<int>& pids,
                            End end = End::Exited) { QTest::newRow(name) << int(end) << listing << pids; };
        row("nobody", "", {});
        row("order, once each", "30\n4\n30\n\n 5\t\n", {30, 4, 5});
        row("no numbers", "lsof: no pwd entry\n12x\n7\n0\n-1\n99999999999\n", {7});
        row("no UTF-8", "7\n\xff\n", {});
        row("hangs", "7\n", {}, End::TimedOut);
        row("cannot be run", "", {}, End::FailedToStart);
        row("killed", "7\n", {7}, End::Signalled);
    }
    void listingIsReadLineByLine()
    {
        QFETCH(int, end);
        QFETCH(QByteArray, listing);
        QFETCH(QList<int>, pids);
        ScriptedRunner runner;
        runner.end = End(end);
        runner.listing = listing;
        QStringList runs{QStringLiteral("/usr/bin/lsof -nP -iTCP:11434 -sTCP:LISTEN -t")};
        std::vector<Occupant> expected;
        for (const int pid : pids) {
            runs.append(QStringLiteral("/bin/ps -p %1 -o command=").arg(pid));
            expected.push_back({pid, QStringLiteral("command of %1").arg(pid)});
        }
        QVERIFY(await(TunnelPort(runner, m_worker, m_clock).occupants(11434, {})) == expected);
        QCOMPARE(runner.runs, runs);
    }

    void portOfAnotherProgramIsItsOwn_data()
    {
        QTest::addColumn<QString>("address");
        QTest::addColumn<bool>("listens");
        QTest::addColumn<bool>("blocked");
        QTest::newRow("nobody") << "127.0.0.1" << false << false;
        QTest::newRow("127.0.0.1") << "127.0.0.1" << true << true;
        QTest::newRow("every address") << "0.0.0.0" << true << true;
        QTest::newRow("every address of both kinds") << "::" << true << true;
        QTest::newRow("::1") << "::1" << true << false;
    }
    void portOfAnotherProgramIsItsOwn()
    {
        QFETCH(QString, address);
        QFETCH(bool, listens);
        QTcpServer server;
        QVERIFY(server.listen(address == QLatin1String("::") ? QHostAddress(QHostAddress::Any)
                                                             : QHostAddress(address)));
        const int port = server.serverPort();
        if (!listens)
            server.close();
        QTEST(isBlocked(port), "blocked");
        const std::vector<Occupant> found = occupants(port);
        QCOMPARE(found.size(), listens ? 1U : 0U);
        if (listens) {
            QCOMPARE(found[0].pid, ::getpid());
            QVERIFY(found[0].command.contains(QLatin1String("TunnelPortTest")));
        }
    }

    void portIsBlockedWithoutAnAnswer()
    {
        // Bound by somebody who does not listen, and full of connections that nobody takes.
        QTcpServer busy;
        busy.listen(QHostAddress::LocalHost);
        busy.pauseAccepting();
        std::vector<std::unique_ptr<QTcpSocket>> waiting;
        for (int i = 0; i < 80; ++i) {
            waiting.push_back(std::make_unique<QTcpSocket>());
            waiting.back()->connectToHost(QHostAddress::LocalHost, busy.serverPort());
        }
        QVERIFY(isBlocked(busy.serverPort()));

        const int port = freePort();
        QTcpSocket bound;
        QVERIFY(bound.bind(QHostAddress::LocalHost, quint16(port), QAbstractSocket::DontShareAddress));
        QVERIFY(isBlocked(port));
        // What is left of an old connection is not in the way.
        QTcpServer server;
        server.listen(QHostAddress::LocalHost);
        const int served = server.serverPort();
        QTcpSocket client;
        client.connectToHost(QHostAddress::LocalHost, server.serverPort());
        QVERIFY(waitUntil([&server] { return server.hasPendingConnections(); }));
        const std::unique_ptr<QTcpSocket> accepted(server.nextPendingConnection());
        accepted->disconnectFromHost();
        QVERIFY(waitUntil([&client] { return client.state() == QAbstractSocket::UnconnectedState; }));
        server.close();
        QVERIFY(!isBlocked(served));
    }

    void anotherUsersProgramIsNotListedButBlocks()
    {
        if (::getuid() != 0)
            QSKIP("only root can look through the eyes of another user");
        QTcpServer server;
        server.listen(QHostAddress::LocalHost);
        const UnprivilegedRunner runner;
        const TunnelPort port(runner, m_worker, m_clock);
        QCOMPARE(await(port.occupants(server.serverPort(), {}), 20s).size(), 0U);
        QVERIFY(await(port.isBlocked(server.serverPort(), {})));
    }

    void onlyStaleTunnelsOfOursAreEnded_data()
    {
        QTest::addColumn<QString>("destination");
        QTest::addColumn<bool>("frozen");
        QTest::addColumn<bool>("ends");
        QTest::newRow("ours") << "gpu-box" << false << true;
        QTest::newRow("ours, ignores the signal") << "gpu-box" << true << false;
        QTest::newRow("to another host") << "gpu-box2" << false << false;
    }
    void onlyStaleTunnelsOfOursAreEnded()
    {
        if (!SshServer::isInstalled())
            QSKIP("openssh-server is not installed");
        QFETCH(QString, destination);
        QFETCH(bool, frozen);
        QFETCH(bool, ends);
        const EnvironmentVariable narrow("COLUMNS", "20"); // ps would cut the command line there
        SshClient client;
        const SshServer server(client);
        client.trust(server);
        client.addHost(QStringLiteral("gpu-box gpu-box2"), server);
        ConnectionSettings settings;
        settings.sshUser = server.user();
        settings.sshHost = QStringLiteral("gpu-box");
        settings.localPort = freePort();
        const int port = int(settings.localPort);
        ConnectionSettings stale = settings;
        stale.sshHost = destination;
        QProcess ssh;
        ssh.start(client.program(), sshArguments(stale, SavedPassword::None));
        QVERIFY(waitUntil(
            [&] { return await(listensOnLoopback(m_runner, m_worker, ssh.processId(), port, {})); }));
        QVERIFY(!await(listensOnLoopback(m_runner, m_worker, ::getpid(), port, {})));
        if (frozen)
            ::kill(pid_t(ssh.processId()), SIGSTOP);

        await(m_port.reclaim(settings, {}), 30s);
        const std::vector<Occupant> left = occupants(port);
        QCOMPARE(left.empty(), ends);
        QCOMPARE(isBlocked(port), !ends);
        if (ends) {
            QVERIFY(waitUntil([&ssh] { return ssh.state() == QProcess::NotRunning; }));
        } else {
            QCOMPARE(left[0].pid, qint32(ssh.processId()));
            ssh.kill();
            QVERIFY(waitUntil([&ssh] { return ssh.state() == QProcess::NotRunning; }));
        }
    }

    void nothingIsReclaimedWithoutADestination()
    {
        ScriptedRunner runner;
        await(TunnelPort(runner, m_worker, m_clock).reclaim(ConnectionSettings{}, {}));
        QVERIFY(runner.runs.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TunnelPortTest)
#include "TunnelPortTest.moc"
