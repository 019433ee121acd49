#include "base/SecretStore.h"
#include "support/Keyring.h"
#include "support/ProgramRun.h"
#include "support/SshServer.h"
#include "tunnel/TunnelFixture.h"

#include <QDir>
#include <QFile>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include <csignal>
#include <optional>

using namespace varnel;
using namespace varnel::test;
using namespace std::chrono_literals;

namespace {

enum class HostKey { Known, Unknown, Changed };

/// One way in which a tunnel is opened, and what becomes of it.
struct Situation
{
    QByteArray server; ///< lines of the server's configuration
    std::optional<QString> password = {};
    HostKey hostKey = HostKey::Known;
    QByteArray jump = {};   ///< lines of the jump host's configuration, if there is one
    QByteArray client = {}; ///< lines of the host's entry in ssh's configuration
    bool portIsHeld = false;
    bool serverIsGone = false;
    QString summary = {}; ///< of the failure; empty if the tunnel opens
    QByteArray jumpLacks = {};
};

QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

const QByteArray onlyPassword = "AuthenticationMethods password";
const QByteArray onlyKey = "AuthenticationMethods publickey";

} // namespace

Q_DECLARE_METATYPE(Situation)

/// The controller with the real ssh, a real server, and the program itself as its helper.
class TunnelSituationsTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_runtime;
    std::optional<EnvironmentVariable> m_runtimeVariable;
    std::optional<Keyring> m_keyring;

    /// A controller whose password, if there is one, is in the keyring.
    std::unique_ptr<TunnelFixture> makeTunnel(const SshClient& client, const std::optional<QString>& password)
    {
        if (!password)
            return std::make_unique<TunnelFixture>(client.program());
        if (!m_keyring)
            m_keyring.emplace();
        std::shared_ptr<SecretStore> secrets = systemSecretStore();
        secrets->save(QStringLiteral("varnel.ssh.password"), *password);
        return std::make_unique<TunnelFixture>(client.program(), programPath(QStringLiteral("varnel")),
                                               secrets);
    }

    /// A tunnel to the server's own port.
    static ConnectionSettings settingsFor(const SshServer& server, int localPort)
    {
        ConnectionSettings settings;
        settings.sshUser = server.user();
        settings.sshHost = QStringLiteral("gpu-box");
        settings.localPort = localPort;
        settings.remoteBind = QStringLiteral("127.0.0.1:%1").arg(server.port());
        return settings;
    }

    static int freePort()
    {
        QTcpServer server;
        server.listen(QHostAddress::LocalHost);
        return server.serverPort();
    }

    /// What the far side says to who connects to the local port: an ssh server greets first.
    static QByteArray greeting(int port)
    {
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, quint16(port));
        waitUntil([&socket] { return socket.canReadLine(); });
        return socket.readLine().left(8);
    }

    static void waitForFrozenHelper(QList<qint64>& helpers)
    {
        QVERIFY(waitUntil([&helpers] {
            for (const qint64 pid : descendantsOf(QCoreApplication::applicationPid())) {
                if (contents(QStringLiteral("/proc/%1/comm").arg(pid)) == "varnel\n" &&
                    contents(QStringLiteral("/proc/%1/limits").arg(pid))
                        .contains("Max core file size        0  "))
                    helpers.append(pid);
            }
            return !helpers.isEmpty();
        }));
    }

private Q_SLOTS:
    void initTestCase()
    {
        if (!SshServer::isInstalled() || !keyringInstalled())
            QSKIP("openssh-server or gnome-keyring is not installed");
        m_runtimeVariable.emplace("XDG_RUNTIME_DIR", m_runtime.path().toUtf8());
        qunsetenv("SSH_AUTH_SOCK");
    }

    void everySituationExplainsItself_data()
    {
        QTest::addColumn<Situation>("situation");
        const QString right = SshServer::password();
        const QString wrong = QStringLiteral("wrong");
        const QString unknownKey = QStringLiteral("Host key verification failed.");
        const auto row = [](const char* name, const Situation& situation) {
            QTest::newRow(name) << situation;
        };
        row("key login", {.server = onlyKey});
        row("password", {.server = onlyPassword, .password = right});
        row("key, with a password saved", {.server = onlyKey, .password = wrong});
        row("wrong password",
            {.server = {},
             .password = wrong,
             .client = "PubkeyAuthentication no",
             .summary = QStringLiteral("%u@127.0.0.1: Permission denied (publickey,password).")});
        row("no password", {.server = onlyPassword,
                            .summary = QStringLiteral("%u@127.0.0.1: Permission denied (password).")});
        row("unknown host key", {.server = {}, .hostKey = HostKey::Unknown, .summary = unknownKey});
        row("unknown host key, with a password saved",
            {.server = {}, .password = right, .hostKey = HostKey::Unknown, .summary = unknownKey});
        row("changed host key", {.server = {}, .hostKey = HostKey::Changed, .summary = unknownKey});
        row("refused forward",
            {.server = {},
             .portIsHeld = true,
             .summary = QStringLiteral("channel_setup_fwd_listener_tcpip: cannot listen to port: %p")});
        row("unreachable host",
            {.server = {},
             .serverIsGone = true,
             .summary = QStringLiteral("connect to host 127.0.0.1 port %s: Connection refused")});
        row("jump host, by key", {.server = onlyPassword,
                                  .password = right,
                                  .jump = onlyKey,
                                  .client = "ProxyJump jump",
                                  .jumpLacks = "password"});
        row("jump host that wants the password",
            {.server = onlyPassword,
             .password = right,
             .jump = onlyPassword,
             .client = "ProxyJump jump",
             .summary = QStringLiteral("Connection closed by UNKNOWN port 65535"),
             .jumpLacks = "Accepted password"});
        row("jump host by a command of the user's",
            {.server = onlyPassword,
             .password = right,
             .jump = onlyPassword,
             .client = "ProxyCommand %ssh jump nc %h %p",
             .summary = QStringLiteral("Connection closed by UNKNOWN port 65535"),
             .jumpLacks = "Accepted password"});
    }
    void everySituationExplainsItself()
    {
        QFETCH(Situation, situation);
        SshClient client;
        auto server = std::make_unique<SshServer>(client, situation.server);
        const std::optional<SshServer> jump =
            situation.jump.isEmpty() ? std::nullopt
                                     : std::optional<SshServer>(std::in_place, client, situation.jump);
        if (jump) {
            client.addHost(QStringLiteral("jump"), *jump);
            client.trust(*jump);
        }
        client.addHost(QStringLiteral("gpu-box"), *server,
                       QByteArray(situation.client).replace("%ssh", client.program().toUtf8()));
        if (situation.hostKey == HostKey::Known)
            client.trust(*server);
        else if (situation.hostKey == HostKey::Changed)
            client.trustWrongly(*server);
        QTcpServer holder;
        if (situation.portIsHeld)
            QVERIFY(holder.listen(QHostAddress::Any));
        const ConnectionSettings settings =
            settingsFor(*server, situation.portIsHeld ? holder.serverPort() : freePort());
        QString summary = situation.summary;
        summary.replace(QLatin1String("%p"), QString::number(settings.localPort))
            .replace(QLatin1String("%s"), QString::number(server->port()))
            .replace(QLatin1String("%u"), server->user());
        if (situation.serverIsGone)
            server.reset();

        const auto tunnel = makeTunnel(client, situation.password);
        tunnel->start(settings);
        const bool opened = tunnel->opens();
        QVERIFY2(opened == summary.isEmpty(), qPrintable(tunnel->output));
        if (opened) {
            QCOMPARE(greeting(int(settings.localPort)), QByteArray("SSH-2.0-"));
            QVERIFY(await(tunnel->controller.waitUntilStable(1ms, {})));
        } else {
            QCOMPARE(tunnel->reports, 1);
            QCOMPARE(tunnel->status, 255);
            QCOMPARE(TunnelController::summary(tunnel->output), summary);
            QCOMPARE(tunnel->output, tunnel->controller.output());
        }
        if (!situation.jumpLacks.isEmpty())
            QVERIFY2(!jump->log().contains(situation.jumpLacks), jump->log().constData());
        QVERIFY(!tunnel->output.contains(SshServer::password()));
        tunnel->controller.stop();
        QCOMPARE(tunnel->reports, opened ? 0 : 1);
    }

    void serverThatDropsIsReportedWithAllThatItSaid()
    {
        SshClient client;
        const QByteArray banner = QByteArray("welcome €\n").repeated(22000); // 264 kB would be no packet
        QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("banner")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(banner.left(250'000 - 250'000 % 12));
        file.close();
        QVERIFY(file.setPermissions(QFile::Permissions(0x7777)));
        QVERIFY(QFile::setPermissions(folder.path(), QFile::Permissions(0x7777)));
        const SshServer server(client, "Banner " + file.fileName().toUtf8());
        client.addHost(QStringLiteral("gpu-box"), server);
        client.trust(server);
        TunnelFixture tunnel(client.program());
        tunnel.start(settingsFor(server, freePort()));
        QVERIFY(tunnel.opens());
        QCOMPARE(tunnel.controller.output(), QString()); // published at the end only
        server.dropConnections();
        QVERIFY(tunnel.waitForReport());
        QCOMPARE(tunnel.status, 255);
        // Which of the two ssh notices first depends on whether it was about to write.
        const QStringList words{QStringLiteral("Connection to 127.0.0.1 closed by remote host."),
                                QStringLiteral("client_loop: send disconnect: Broken pipe")};
        QVERIFY(words.contains(TunnelController::summary(tunnel.output)));
        QVERIFY(tunnel.output.size() > 200'000);
        QVERIFY(!tunnel.controller.isRunning());
        // The next one opens again.
        tunnel.start(settingsFor(server, freePort()));
        QCOMPARE(tunnel.controller.output(), QString());
        QVERIFY(tunnel.opens());
    }

    void frozenServerStopsNothing_data()
    {
        QTest::addColumn<bool>("opened");
        QTest::newRow("before the login") << false;
        QTest::newRow("after the login") << true;
    }
    void frozenServerStopsNothing()
    {
        QFETCH(bool, opened);
        SshClient client;
        const SshServer server(client);
        client.addHost(QStringLiteral("gpu-box"), server);
        client.trust(server);
        server.setFrozen(!opened);
        TunnelFixture tunnel(client.program());
        tunnel.start(settingsFor(server, freePort()));
        if (opened)
            QVERIFY(tunnel.opens());
        server.setFrozen(true);
        QVERIFY(await(tunnel.controller.waitUntilStable(300ms, {})));
        // A slow login is no reason to believe in the forward.
        QCOMPARE(await(tunnel.controller.isListening({})), opened);
        tunnel.controller.stop();
        QVERIFY(!tunnel.controller.isRunning());
        QCOMPARE(tunnel.reports, 0);
    }

    void otherAddressOfThePortIsNotEnough()
    {
        // ssh gets ::1 and stays up, while requests to 127.0.0.1 go to somebody else.
        SshClient client;
        const SshServer server(client);
        client.addHost(QStringLiteral("gpu-box"), server);
        client.trust(server);
        QTcpServer holder;
        QVERIFY(holder.listen(QHostAddress::LocalHost));
        TunnelFixture tunnel(client.program());
        tunnel.start(settingsFor(server, holder.serverPort()));
        QVERIFY(waitUntil([&server] { return server.log().contains("Accepted publickey"); }));
        QVERIFY(await(tunnel.controller.waitUntilStable(300ms, {})));
        QVERIFY(!await(tunnel.controller.isListening({})));
    }

    void passwordIsSeenNowhere()
    {
        SshClient client;
        const SshServer server(client, onlyPassword);
        client.addHost(QStringLiteral("gpu-box"), server);
        client.trust(server);
        const auto tunnel = makeTunnel(client, SshServer::password());
        const ConnectionSettings settings = settingsFor(server, freePort());
        tunnel->start(settings);
        m_keyring->setFrozen(true); // so that the helper can be looked at while it waits
        QList<qint64> helpers;
        waitForFrozenHelper(helpers);
        QByteArray seen;
        for (const qint64 pid : descendantsOf(QCoreApplication::applicationPid())) {
            seen += contents(QStringLiteral("/proc/%1/cmdline").arg(pid));
            seen += contents(QStringLiteral("/proc/%1/environ").arg(pid));
        }
        m_keyring->setFrozen(false);
        QVERIFY(!helpers.isEmpty());
        QVERIFY(tunnel->opens());
        QVERIFY(seen.contains("VARNEL_ASKPASS=1") && seen.contains("NumberOfPasswordPrompts=1"));
        const QDir counts(m_runtime.filePath(QStringLiteral("varnel")));
        QCOMPARE(counts.entryList(QDir::Files).size(), 1);
        for (const QString& name : counts.entryList(QDir::Files))
            seen += name.toUtf8() + contents(counts.filePath(name));
        QVERIFY(!seen.contains("sentinel"));
        QVERIFY(!server.log().contains("sentinel"));
        // All that ssh said is told when it ends by itself.
        server.dropConnections();
        QVERIFY(tunnel->waitForReport());
        QVERIFY(!tunnel->output.isEmpty());
        QVERIFY(!tunnel->output.contains(QLatin1String("sentinel")));
    }
};

QTEST_GUILESS_MAIN(TunnelSituationsTest)
#include "TunnelSituationsTest.moc"
