#include "base/Error.h"
#include "support/SshServer.h"
#include "tunnel/TunnelFixture.h"
#include "tunnel/TunnelProcess.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QTcpServer>
#include <QTest>

using namespace varnel;
using namespace varnel::test;
using namespace std::chrono_literals;

namespace {

qsizetype openDescriptors()
{
    return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::System | QDir::Files | QDir::Dirs).size();
}

/// Whether no ssh is below this process, neither running nor waiting to be collected.
bool noSshIsLeft()
{
    const QList<qint64> processes = descendantsOf(QCoreApplication::applicationPid());
    return std::none_of(processes.begin(), processes.end(), [](qint64 pid) {
        QFile name(QStringLiteral("/proc/%1/comm").arg(pid));
        return name.open(QIODevice::ReadOnly) && name.readAll() == "ssh\n";
    });
}

} // namespace

/// A tunnel that is opened and closed over and over, at every point of its life.
class TunnelCyclesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nothingIsLeftBehind()
    {
        if (!SshServer::isInstalled())
            QSKIP("openssh-server is not installed");
        const int cycles = qEnvironmentVariableIsSet("VARNEL_TUNNEL_CYCLES")
                               ? qEnvironmentVariableIntValue("VARNEL_TUNNEL_CYCLES")
                               : 200;
        SshClient client;
        const SshServer server(client);
        client.trust(server);
        client.addHost(QStringLiteral("gpu-box"), server);
        QTcpServer portFinder;
        portFinder.listen(QHostAddress::LocalHost);
        ConnectionSettings settings;
        settings.sshUser = server.user();
        settings.sshHost = QStringLiteral("gpu-box");
        settings.localPort = portFinder.serverPort();
        portFinder.close();

        TunnelFixture tunnel(client.program());
        tunnel.start(settings);
        QVERIFY(tunnel.opens());
        tunnel.controller.stop();
        QVERIFY(waitUntil(noSshIsLeft));
        const qsizetype descriptors = openDescriptors();
        QRandomGenerator random(20261121);
        int opened = 0;
        for (int cycle = 0; cycle < cycles; ++cycle) {
            Task<void> start = tunnel.controller.start(settings, {});
            switch (random.bounded(20)) {
            case 0:
                QVERIFY(waitUntil([&start] { return start.isFinished(); }));
                QVERIFY(tunnel.opens());
                ++opened;
                break;
            case 1:
                await(std::move(start));
                break;
            case 2:
                if (const auto child = tunnel.controller.detach())
                    child->terminate();
                break;
            default:
                await(tunnel.clock.sleepFor(std::chrono::milliseconds(random.bounded(25)), {}));
            }
            tunnel.controller.stop();
        }
        QVERIFY(opened > 0);
        QVERIFY(waitUntil(noSshIsLeft));
        QVERIFY(waitUntil([descriptors] { return openDescriptors() == descriptors; }));
        QCOMPARE(tunnel.reports, 0);
    }
};

QTEST_GUILESS_MAIN(TunnelCyclesTest)
#include "TunnelCyclesTest.moc"
