#include "practice_host/PracticeHost.h"
#include "support/Await.h"
#include "support/SshServer.h"
#include "support/WindowRun.h"

#include <QDir>
#include <QFile>
#include <QTcpServer>
#include <QTest>

using namespace varnel::practice;
using namespace varnel::test;
using namespace std::chrono_literals;

/// The window behind a real ssh and a real server: connecting, a reply through the tunnel, and its end.
class TunnelFlowTest : public QObject
{
    Q_OBJECT

    PracticeHost m_host{{.piece = 0ms}};
    std::optional<SshClient> m_client;
    std::optional<SshServer> m_server;
    std::unique_ptr<WindowRun> m_window;

    static int freePort()
    {
        QTcpServer server;
        server.listen(QHostAddress::LocalHost);
        return server.serverPort();
    }
    QByteArray preferences() const
    {
        return "[General]\nvarnel.connection=\"@ByteArray({\\\"directURL\\\": \\\"\\\", \\\"localPort\\\": " +
               QByteArray::number(freePort()) +
               ", \\\"mode\\\": \\\"sshTunnel\\\", \\\"remoteBind\\\": \\\"127.0.0.1:" +
               QByteArray::number(m_host.port()) +
               "\\\", \\\"sshHost\\\": \\\"gpu-box\\\", \\\"sshUser\\\": \\\"" + m_server->user().toUtf8() +
               "\\\"})\"\nvarnel.defaultModel=practice-chat:70b\nvarnel.onboardingComplete=true\n";
    }
    /// The children of the program that are an ssh.
    QList<qint64> tunnels()
    {
        QList<qint64> found;
        for (const qint64 pid : descendantsOf(m_window->program().process().processId())) {
            QFile name(QStringLiteral("/proc/%1/comm").arg(pid));
            if (name.open(QIODevice::ReadOnly) && name.readAll() == "ssh\n")
                found.append(pid);
        }
        return found;
    }

private Q_SLOTS:
    void initTestCase()
    {
        if (const QString missing = WindowRun::missing(); !missing.isEmpty())
            QSKIP(qPrintable(missing));
        if (!SshServer::isInstalled())
            QSKIP("not installed: ssh and its server; scripts/setup does");
        m_host.listen();
        m_client.emplace();
        m_server.emplace(*m_client);
        m_client->trust(*m_server);
        m_client->addHost(QStringLiteral("gpu-box"), *m_server);
        m_window = std::make_unique<WindowRun>();
        ProgramRun& program = m_window->program();
        QVERIFY(QDir(program.folder()).mkdir(QStringLiteral(".ssh")));
        QVERIFY(QFile::copy(m_client->configuration(), program.folder() + QStringLiteral("/.ssh/config")));
        program.setVariable("LD_PRELOAD", QStringLiteral(VARNEL_OTHER_HOME));
        program.setPreferences(preferences());
        QVERIFY(m_window->open());
    }

    void theTunnelIsOpenedByHand()
    {
        QVERIFY(m_window->shows(QStringLiteral("push button | Connect")));
        QVERIFY(tunnels().isEmpty());
        QVERIFY(m_window->press("Connect"));
        QVERIFY(m_window->shows(QStringLiteral("status bar | Connected to gpu-box")));
        QCOMPARE(tunnels().size(), 1);
    }

    void aReplyComesThroughIt()
    {
        m_window->type(QStringLiteral("Tell me of lighthouses"));
        m_window->key("Return");
        QVERIFY(m_window->shows(QStringLiteral("list item | Reply: This is a practice reply")));
    }

    void disconnectingEndsIt()
    {
        QVERIFY(m_window->press("Disconnect"));
        QVERIFY(m_window->shows(QStringLiteral("status bar | Disconnected from gpu-box")));
        QVERIFY(m_window->shows(QStringLiteral("push button | Connect")));
        QVERIFY(waitUntil([this] { return tunnels().isEmpty(); }));
    }

    void quittingEndsIt()
    {
        QVERIFY(m_window->press("Connect"));
        QVERIFY(m_window->shows(QStringLiteral("status bar | Connected to gpu-box")));
        const QList<qint64> before = tunnels();
        QCOMPARE(before.size(), 1);
        QVERIFY(m_window->quit());
        QVERIFY(waitUntil([&] { return !QFile::exists(QStringLiteral("/proc/%1").arg(before[0])); }));
    }
};

QTEST_GUILESS_MAIN(TunnelFlowTest)
#include "TunnelFlowTest.moc"
