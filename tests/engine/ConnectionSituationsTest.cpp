#include "engine/TunnelStage.h"
#include "tunnel/LoopbackPort.h"

#include <csignal>
#include <unistd.h>

using namespace varnel;
using namespace varnel::test;
using namespace std::chrono_literals;

namespace {

QString text(const char* words)
{
    return QString::fromUtf8(words);
}

ConnectionSettings direct(const QUrl& url)
{
    ConnectionSettings settings;
    settings.mode = ConnectionMode::Direct;
    settings.directURL = url.toString();
    return settings;
}

const QStringList connectedDirectly{text("<connecting>"), text("<connected>"),
                                    text("Connected to 127.0.0.1 · 2 models")};

const QString connecting = text("Connecting to gpu-box");

/// How many ssh run that this test started.
int sshCount()
{
    const QList<qint64> all = descendantsOf(::getpid());
    return static_cast<int>(std::count_if(all.begin(), all.end(), [](qint64 pid) {
        QFile name(QStringLiteral("/proc/%1/comm").arg(pid));
        return name.open(QIODevice::ReadOnly) && name.readAll() == "ssh\n";
    }));
}

/// A tunnel of the stage's settings, as an earlier run leaves it, that does not hear that it should end.
void leaveFrozenTunnel(QProcess& ssh, const TunnelStage& stage)
{
    ssh.start(stage.client.program(), sshArguments(stage.settings, SavedPassword::None));
    const SystemProcessRunner runner;
    Worker worker;
    QVERIFY(waitUntil([&] {
        const auto port = static_cast<int>(stage.settings.localPort);
        return await(listensOnLoopback(runner, worker, ssh.processId(), port, {}));
    }));
    ::kill(static_cast<pid_t>(ssh.processId()), SIGSTOP);
}

} // namespace

/// What is said and logged on the way to a server, whatever comes of it.
class ConnectionSituationsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void directly_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<bool>("answers");
        QTest::addColumn<QString>("status");
        const auto row = [](const char* name, ConnectionMode mode, bool answers, const char* status) {
            QTest::newRow(name) << static_cast<int>(mode) << answers << text(status);
        };
        row("direct", ConnectionMode::Direct, true, "Connected to 127.0.0.1 · 2 models");
        row("direct, silent", ConnectionMode::Direct, false, "Could not reach SERVER.");
        row("tunnel that is not open", ConnectionMode::SshTunnel, false,
            "Not connected to the SSH host. Connect opens the SSH tunnel.");
    }
    void directly()
    {
        QFETCH(int, mode);
        QFETCH(bool, answers);
        QFETCH(QString, status);
        Stage stage;
        const QString server = stage.server.url().toString();
        ConnectionSettings settings = stage.model->connection();
        settings.mode = static_cast<ConnectionMode>(mode);
        settings.localPort = freePort();
        stage.model->setConnection(settings);
        stage.trace.entries.clear();
        if (!answers)
            stage.server.stopListening();
        stage.model->checkConnection();
        QVERIFY(waitUntil([&] { return stage.model->linkState() != LinkState::Connecting; }));
        const QString link = answers ? text("<connected>") : text("<offline>");
        QVERIFY(matches(stage.trace.entries, {text("<connecting>"), link, status}, server));
        const QStringList lines = answers ? QStringList{text("probe SERVER 0.24.0 models=2"),
                                                        text("Connected to 127.0.0.1 models=2")}
                                          : QStringList{text("probe failed *")};
        QVERIFY(matches(stage.profile.logged(), lines, server));
        QVERIFY(matches({stage.model->connectionDetail()},
                        {answers ? text("Connected to 127.0.0.1. Reachable · 0.24.0 · 2 models") : status},
                        server));
    }

    void theNewestAttemptIsTheOneThatCounts()
    {
        Stage stage;
        Stage other;
        stage.model->checkAtStart();
        stage.model->openConnection();
        stage.model->closeConnection();
        QTest::qWait(100); // answers of what was cancelled would come now
        QVERIFY(matches(stage.trace.entries,
                        {text("<connecting>"), text("<offline>"), text("Disconnected from 127.0.0.1")}, {}));
        QCOMPARE(stage.profile.logged(), QStringList{text("tunnel stopped")});
        stage.trace.entries.clear();
        stage.model->checkConnection();
        stage.model->setConnection(direct(other.server.url()));
        QVERIFY(stage.model->installedModels().empty());
        stage.model->checkConnection();
        QVERIFY(waitUntil([&] { return stage.model->linkState() == LinkState::Connected; }));
        QVERIFY(matches(stage.trace.entries,
                        QStringList{text("<connecting>"), text("<unknown>")} + connectedDirectly, {}));
    }

    void namesThatAreEmptyOrTwiceInAListAreOne()
    {
        Stage stage;
        practice::HttpServer odd([](const Exchange& exchange) {
            exchange->reply(200, "application/json",
                            exchange->path() == "/api/tags"
                                ? QByteArray("{\"models\":[{\"name\":\"a\"},{\"name\":\"\"},{\"name\":\"a\"},"
                                             "{\"name\":\"b\"}]}")
                                : "{\"version\":\"1\\n" + QByteArray(100, 'x') + "\",\"models\":[]}");
        });
        odd.listen();
        stage.model->setConnection(direct(odd.url()));
        stage.model->checkConnection();
        QVERIFY(waitUntil([&] { return stage.model->linkState() == LinkState::Connected; }));
        QCOMPARE(stage.model->installedModels().size(), 2U);
        QCOMPARE(stage.model->statusMessage(), text("Connected to 127.0.0.1 · 2 models"));
        const QString version = text("1 ") + QString(62, u'x');
        QCOMPARE(stage.model->connectionReport(), text("Reachable · %1 · 2 models").arg(version));
    }

    void throughATunnel()
    {
        TunnelStage stage;
        const QString count = QString::number(practice::practiceModels().size());
        const QStringList opened{text("<connecting>"), connecting, text("<connected>"),
                                 text("Connected to gpu-box · %1 models").arg(count)};
        const QStringList openedLog{
            text("tunnel started %1@gpu-box %2").arg(stage.server.user(), stage.forward()), text("probe *"),
            text("Connected to gpu-box models=%1").arg(count)};
        stage.model->openConnection();
        QVERIFY(stage.waitFor(LinkState::Connected));
        QVERIFY(stage.model->tunnelIsUp());
        QVERIFY(matches(stage.trace.entries, opened, {}));
        QVERIFY(stage.logged(openedLog));

        // The tunnel of the same run makes way without a word, also when its end is reported late.
        stage.trace.entries.clear();
        stage.model->openConnection();
        QVERIFY(waitUntil([&] { return !stage.trace.entries.isEmpty(); }));
        QVERIFY(stage.waitFor(LinkState::Connected));
        QVERIFY(matches(stage.trace.entries, opened, {}));

        stage.trace.entries.clear();
        stage.server.dropConnections();
        QVERIFY(stage.waitFor(LinkState::Offline));
        QVERIFY(
            matches(stage.trace.entries, {text("<offline>"), text("The tunnel to gpu-box closed. *")}, {}));
        QVERIFY(!stage.model->tunnelIsUp());
        QVERIFY(stage.profile.logged().last().startsWith(text("tunnel closed status=255 ")));

        stage.trace.entries.clear();
        stage.model->openConnection();
        QVERIFY(stage.waitFor(LinkState::Connected));
        stage.model->closeConnection();
        QVERIFY(waitUntil([] { return descendantsOf(::getpid()).size() <= 3; }));
        QVERIFY(matches(stage.trace.entries,
                        opened + QStringList{text("<offline>"), text("Disconnected from gpu-box")}, {}));
        QCOMPARE(stage.profile.logged().last(), text("tunnel stopped"));
    }

    void aTunnelThatLeadsNowhereOrFails_data()
    {
        QTest::addColumn<QString>("host");
        QTest::addColumn<QStringList>("trace");
        QTest::addColumn<QStringList>("log");
        const auto failed = [](const QString& status) {
            return QStringList{text("<connecting>"), text("Connecting to *"), text("<offline>"), status};
        };
        QTest::newRow("nobody behind it")
            << text("gpu-box") << failed(text("The tunnel to gpu-box is open, but Ollama did not answer."))
            << QStringList{text("tunnel started *"), text("probe failed *")};
        QTest::newRow("no such host")
            << text("nowhere") << failed(text("The tunnel to nowhere did not stay open. connect to *"))
            << QStringList{text("tunnel exited status=255 connect to *")};
        QTest::newRow("an unknown key")
            << text("stranger")
            << failed(text("The tunnel to stranger did not stay open. Host key verification failed."))
            << QStringList{text("tunnel exited status=255 Host key verification failed.")};
        for (const char* const name : {"held", "bound", "stale"}) {
            QTest::addRow("a port that is %s", name)
                << text(name)
                << failed(text("Local port PORT is already in use, so the tunnel to %1 could not open.")
                              .arg(text(name)))
                << QStringList{};
        }
        QTest::newRow("a host that would be an option")
            << text("-oProxyCommand=x") << failed(text("*")) << QStringList{};
    }
    void aTunnelThatLeadsNowhereOrFails()
    {
        QFETCH(QString, host);
        QFETCH(QStringList, trace);
        QFETCH(QStringList, log);
        TunnelStage stage;
        stage.client.addHost(text("nowhere"), freePort());
        stage.settings.sshHost = host;
        stage.leadTo(freePort());
        const SshServer stranger(stage.client);
        stage.client.addHost(text("stranger"), stranger);
        stage.client.addHost(text("held bound stale"), stage.server);
        const auto port = static_cast<quint16>(stage.settings.localPort);
        QTcpServer holder;
        QTcpSocket silent;
        QProcess stale;
        if (host == u"held")
            QVERIFY(holder.listen(QHostAddress::LocalHost, port));
        else if (host == u"bound")
            QVERIFY(silent.bind(QHostAddress::LocalHost, port, QAbstractSocket::DontShareAddress));
        else if (host == u"stale")
            leaveFrozenTunnel(stale, stage);
        stage.start();
        stage.model->openConnection();
        QVERIFY(stage.waitFor(LinkState::Offline));
        if (host == u"stale") {
            QCOMPARE(sshCount(), 1); // that one, and none of ours
            QCOMPARE(stale.state(), QProcess::Running);
            ::kill(static_cast<pid_t>(stale.processId()), SIGCONT);
            QVERIFY(waitUntil([&] { return stale.state() == QProcess::NotRunning; })); // it was asked to
        }
        trace.replaceInStrings(text("PORT"), QString::number(stage.settings.localPort));
        QVERIFY(matches(stage.trace.entries, trace, {}));
        // On a slow machine ssh may fail after it was taken to be stable, and that stands in the log too.
        if (stage.profile.logged().size() > log.size() && log.value(0).startsWith(text("tunnel exited")))
            log.prepend(text("tunnel started *"));
        QVERIFY(stage.logged(log));
        QCOMPARE(stage.model->connectionReport(), stage.model->statusMessage());
        QCOMPARE(stage.model->connectionDetail(), stage.model->statusMessage());
    }

    void aTunnelThatEndsInACheckIsHeard_data()
    {
        QTest::addColumn<bool>("opens");
        QTest::newRow("while it opens") << true;
        QTest::newRow("later") << false;
    }
    void aTunnelThatEndsInACheckIsHeard()
    {
        QFETCH(bool, opens);
        TunnelStage stage;
        bool answers = !opens;
        std::vector<Exchange> waiting;
        practice::HttpServer host([&](const Exchange& exchange) {
            if (answers)
                exchange->reply(200, "application/json", "{\"version\":\"1\",\"models\":[]}");
            else
                waiting.push_back(exchange);
        });
        host.listen();
        stage.leadTo(host.port());
        stage.start();
        stage.model->openConnection();
        if (!opens) {
            QVERIFY(stage.waitFor(LinkState::Connected));
            answers = false;
            stage.model->checkConnection();
        }
        QVERIFY(waitUntil([&] { return !waiting.empty(); }));
        stage.trace.entries.clear();
        stage.server.dropConnections();
        QVERIFY(stage.waitFor(LinkState::Offline));
        QVERIFY(!stage.model->tunnelIsUp());
        QVERIFY(matches(
            stage.trace.entries,
            {text("<offline>"),
             text("The tunnel to gpu-box %1. *").arg(opens ? text("did not stay open") : text("closed"))},
            {}));
        QVERIFY(stage.profile.logged().last().startsWith(
            text("tunnel %1 status=255 ").arg(opens ? text("exited") : text("closed"))));
    }

    void whateverComesNextEndsAnOpening_data()
    {
        QTest::addColumn<QStringList>("rest");
        QTest::addColumn<int>("tunnels");
        QTest::newRow("disconnect") << QStringList{text("<offline>"), text("Disconnected from gpu-box")} << 0;
        QTest::newRow("check") << QStringList{text("<offline>"),
                                              text("Not connected to gpu-box. Connect opens the SSH tunnel.")}
                               << 0;
        QTest::newRow("connect") << QStringList{text("<connected>"), text("Connected to gpu-box · *")} << 1;
    }
    void whateverComesNextEndsAnOpening()
    {
        QFETCH(QStringList, rest);
        QFETCH(int, tunnels);
        const QByteArray next = QTest::currentDataTag();
        TunnelStage stage;
        stage.server.setFrozen(true);
        stage.model->openConnection();
        QVERIFY(waitUntil([] { return sshCount() == 1; }));
        QTest::qWait(300);
        if (next == "check")
            stage.model->checkConnection();
        else if (next == "connect")
            stage.model->openConnection();
        else
            stage.model->closeConnection();
        if (tunnels == 0)
            QVERIFY(stage.waitFor(LinkState::Offline));
        stage.server.setFrozen(false);
        QTest::qWait(1600); // an ssh that was left behind would have proved stable by now
        QVERIFY(stage.waitFor(tunnels > 0 ? LinkState::Connected : LinkState::Offline));
        QVERIFY(matches(stage.trace.entries, QStringList{text("<connecting>"), connecting} + rest, {}));
        QCOMPARE(stage.model->tunnelIsUp(), tunnels > 0);
        QCOMPARE(sshCount(), tunnels);
    }

    void quittingInAReplyKeepsItAndEndsTheTunnel()
    {
        TunnelStage stage;
        stage.model->openConnection();
        QVERIFY(stage.waitFor(LinkState::Connected));
        stage.model->chooseModel(text("practice-stall:1b"));
        stage.model->setDraft(text("one"));
        stage.model->send();
        const auto reply = [&] { return stage.model->selectedSession()->messages.back().content; };
        QVERIFY(waitUntil([&] { return stage.model->isStreaming() && !reply().isEmpty(); }));
        const QString shown = reply();
        stage.model->shutDown();
        QVERIFY(!stage.model->tunnelIsUp());
        QVERIFY(isLoopbackPortFree(static_cast<int>(stage.settings.localPort)));
        stage.start();
        QVERIFY(reply().startsWith(shown));
        QVERIFY(!stage.model->selectedSession()->messages.back().duration);
    }
};

QTEST_GUILESS_MAIN(ConnectionSituationsTest)
#include "ConnectionSituationsTest.moc"
