// The way to the server: opening and closing it, looking whether it answers, and what is said of it.
#include "engine/AppModelPrivate.h"

#include "app/DiagnosticsLog.h"
#include "engine/ConnectionTexts.h"
#include "engine/Probe.h"
#include "engine/TunnelOpening.h"
#include "store/Preferences.h"
#include "tunnel/TunnelProcess.h"

namespace varnel {

void AppModel::setOffline(const QString& message)
{
    assign(m_linkState, LinkState::Offline, &AppState::linkStateChanged);
    assign(m_connectionReport, message, &AppState::connectionReportChanged);
    assign(m_connectionDetail, message, &AppState::connectionDetailChanged);
    setStatusMessage(message);
}

void AppModel::openConnection()
{
    m_stopConnection.request_stop();
    m_stopConnection = std::stop_source();
    if (m_connection.mode == ConnectionMode::SshTunnel)
        m_connectionTask = followConnection(m_stopConnection.get_token());
    else
        m_connectionTask = followProbe(m_stopConnection.get_token());
}

void AppModel::checkConnection()
{
    // An attempt that this one replaces shall not leave its ssh behind.
    if (!m_tunnelIsUp)
        dropTunnel();
    m_stopConnection.request_stop();
    m_stopConnection = std::stop_source();
    m_connectionTask = followProbe(m_stopConnection.get_token());
}

void AppModel::checkAtStart()
{
    if (m_connection.mode != ConnectionMode::SshTunnel)
        checkConnection();
}

Task<void> AppModel::followConnection(std::stop_token stop)
{
    const QString host = m_connection.hostLabel();
    assign(m_linkState, LinkState::Connecting, &AppState::linkStateChanged);
    setStatusMessage(QStringLiteral("Connecting to %1").arg(host));
    QString failureText;
    try {
        const TunnelObserver observer{
            .onStarted =
                [this] {
                    assign(m_tunnelIsUp, true, &AppState::tunnelIsUpChanged);
                    m_services.log.log(QStringLiteral("tunnel started ") + tunnelDescription(m_connection));
                },
            .onExited =
                [this](const QString& summary) {
                    assign(m_tunnelIsUp, false, &AppState::tunnelIsUpChanged);
                    m_services.log.log(QStringLiteral("tunnel exited ") +
                                       tunnelExitDetail(m_tunnelStatus, summary));
                },
        };
        co_await openTunnel(m_tunnel, m_port, m_services.clock, m_connection, observer, stop);
        co_await probeServer(stop);
    } catch (const Cancelled&) {
        co_return; // whoever stopped it says what is to be said
    } catch (const Error& error) {
        failureText = error.message();
    }
    if (!failureText.isEmpty())
        setOffline(failureText);
}

Task<void> AppModel::followProbe(std::stop_token stop)
{
    assign(m_linkState, LinkState::Connecting, &AppState::linkStateChanged);
    try {
        co_await probeServer(stop);
    } catch (const Cancelled&) {
        co_return; // a newer attempt says what is to be said
    }
}

Task<bool> AppModel::probeServer(std::stop_token stop)
{
    const QUrl base = m_connection.baseURL();
    QString failure;
    try {
        const ProbeResult result = co_await probe(OllamaClient(base, m_http, std::chrono::seconds(5)), stop);
        if (stop.stop_requested())
            throw Cancelled(); // the answer came together with the stop
        const QString host = m_connection.hostLabel();
        const QString count = QString::number(result.models.size());
        const QString report = reportOf(result);
        assign(m_connectionReport, report, &AppState::connectionReportChanged);
        assign(m_connectionDetail, QStringLiteral("Connected to %1. %2").arg(host, report),
               &AppState::connectionDetailChanged);
        assign(m_linkState, LinkState::Connected, &AppState::linkStateChanged);
        assign(m_installedModels, result.models, &AppState::installedModelsChanged);
        setStatusMessage(QStringLiteral("Connected to %1 · %2 models").arg(host, count));
        m_services.log.log(
            QStringLiteral("probe %1 %2 models=%3").arg(base.toString(), result.version, count));
        m_services.log.log(QStringLiteral("Connected to %1 models=%2").arg(host, count));
        refreshRunningModels();
        co_return true;
    } catch (const Error& error) {
        failure = error.message();
    }
    m_services.log.log(QStringLiteral("probe failed ") + failure);
    setOffline(unansweredMessage(m_connection, m_tunnelIsUp));
    co_return false;
}

void AppModel::tunnelEnded(int status, const QString& output)
{
    m_tunnelStatus = status;
    assign(m_tunnelIsUp, false, &AppState::tunnelIsUpChanged);
    if (m_linkState == LinkState::Connecting)
        return; // the attempt under way reports it
    const QString summary = TunnelController::summary(output);
    QString message = QStringLiteral("The tunnel to %1 closed.").arg(m_connection.hostLabel());
    if (!summary.isEmpty())
        message += QLatin1Char(' ') + summary;
    setOffline(message);
    m_services.log.log(QStringLiteral("tunnel closed %1").arg(tunnelExitDetail(status, summary)));
}

void AppModel::dropTunnel()
{
    m_stopConnection.request_stop();
    if (const std::shared_ptr<TunnelProcess> child = m_tunnel.detach())
        child->terminate();
    assign(m_tunnelIsUp, false, &AppState::tunnelIsUpChanged);
}

void AppModel::closeConnection()
{
    dropTunnel();
    const QString message = QStringLiteral("Disconnected from %1").arg(m_connection.hostLabel());
    assign(m_linkState, LinkState::Offline, &AppState::linkStateChanged);
    assign(m_connectionDetail, message, &AppState::connectionDetailChanged);
    setStatusMessage(message);
    m_services.log.log(QStringLiteral("tunnel stopped"));
}

void AppModel::setConnection(const ConnectionSettings& settings)
{
    attempt([&] { m_services.preferences.setConnection(settings); });
    if (settings == m_connection)
        return;
    // What is known belongs to the server that was reached before.
    dropTunnel();
    assign(m_connection, settings, &AppState::connectionChanged);
    assign(m_linkState, LinkState::Unknown, &AppState::linkStateChanged);
    assign(m_connectionReport, QStringLiteral("Not tested"), &AppState::connectionReportChanged);
    assign(m_connectionDetail, m_connection.hostLabel(), &AppState::connectionDetailChanged);
    assign(m_installedModels, {}, &AppState::installedModelsChanged);
    assign(m_runningModels, {}, &AppState::runningModelsChanged);
}

void AppModel::refreshRunningModels()
{
    if (!m_isStreaming)
        m_running = followRunning({});
}

Task<void> AppModel::followRunning(std::stop_token stop)
{
    try {
        const QUrl base = m_connection.baseURL();
        const OllamaClient client(base, m_http, std::chrono::seconds(5));
        std::vector<OllamaRunning> running = co_await client.listRunning(stop);
        if (base != m_connection.baseURL())
            co_return; // another server by now
        m_runningModels = std::move(running);
        // Said even if it is the same: the time it was asked counts.
        Q_EMIT runningModelsChanged();
    } catch (const Cancelled&) {
        co_return;
    } catch (const Error&) {
        co_return; // it only tells whether a model is being loaded; the turn itself says what is wrong
    }
}

} // namespace varnel
