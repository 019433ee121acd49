#pragma once

#include "engine/Stage.h"
#include "practice_host/PracticeHost.h"
#include "support/SshServer.h"

#include <QTcpServer>

namespace varnel::test {

/// A port on which nobody listens, at least for now.
inline quint16 freePort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return server.serverPort();
}

/// A model whose tunnel leads through a real server to a practice host; `ssh` is the real one.
class TunnelStage
{
public:
    TunnelStage()
    {
        practice.listen();
        client.trust(server);
        client.addHost(QStringLiteral("gpu-box"), server);
        profile.programs.ssh = client.program();
        settings.mode = ConnectionMode::SshTunnel;
        settings.sshHost = QStringLiteral("gpu-box");
        settings.sshUser = server.user();
        settings.localPort = freePort();
        leadTo(practice.port());
        start();
    }
    void leadTo(quint16 port) { settings.remoteBind = QStringLiteral("127.0.0.1:%1").arg(port); }
    void start()
    {
        model.reset();
        profile.preferences.setConnection(settings);
        model = std::make_unique<AppModel>(profile.services());
        trace.entries.clear();
        trace.follow(*model);
    }
    bool waitFor(LinkState state) const
    {
        return waitUntil([&] { return model->linkState() == state; }, std::chrono::seconds(30));
    }
    /// The lines of ssh, whose words are its own, apart from the fixed ones.
    bool logged(const QStringList& expected) const { return matches(profile.logged(), expected, {}); }
    QString forward() const
    {
        return QStringLiteral("%1:%2").arg(QString::number(settings.localPort), settings.remoteBind);
    }

    practice::PracticeHost practice{{.piece = {}, .slowStart = {}, .slowPiece = {}}};
    SshClient client;
    SshServer server{client};
    SystemClock clock;
    ModelProfile profile{clock};
    ConnectionSettings settings;
    Trace trace;
    std::unique_ptr<AppModel> model;
};

} // namespace varnel::test
