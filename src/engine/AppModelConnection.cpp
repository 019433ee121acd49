// The way to the server: opening and closing it, looking whether it answers, and what is said of it.
#include "engine/AppModelPrivate.h"

#include "app/DiagnosticsLog.h"
#include "engine/ConnectionTexts.h"
#include "engine/Probe.h"
#include "engine/TunnelOpening.h"
#include "store/Preferences.h"
#include "tunnel/TunnelProcess.h"

namespace varnel {

namespace {

/// How long a server that is only looked at may send nothing.
constexpr std::chrono::seconds probeTime(5);

} // namespace

void AppModel::setOffline(const QString& message)
{
    assign(m_linkState, LinkState::Offline, &AppState::linkStateChanged);
    assign(m_connectionReport, message, &AppState::connectionReportChanged);
    assign(m_connectionDetail, message, &AppState::connectionDetailChanged);
    setStatusMessage(message);
}

void AppModel::openConnection()
{
    dropOpening();
    m_stopConnection.request_stop();
    m_stopConnection = std::stop_source();
    if (m_connection.mode == ConnectionMode::SshTunnel)
        m_connectionTask = followConnection(m_stopConnection.get_token());
    else
        m_connectionTask = followProbe(m_stopConnection.get_token());
}

void AppModel::checkConnection()
{
    dropOpening();
    m_stopConnection.request_stop();
    m_stopConnection = std::stop_source();
    m_connectionTask = followProbe(m_stopConnection.get_token());
}

void AppModel::checkAtStart()
{
    if (m_connection.mode != ConnectionMode::SshTunnel)
        checkConnection();
    else
        m_startNotices.reset(); // nothing is going to be said over them
}

Task<void> AppModel::followConnection(std::stop_token stop)
{
    const QString host = m_connection.hostLabel();
    assign(m_linkState, LinkState::Connecting, &AppState::linkStateChanged);
    setStatusMessage(QStringLiteral("Connecting to %1").arg(host));
    QString failureText;
    m_tunnelExit.reset();
    m_isOpeningTunnel = true;
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
                                       tunnelExitDetail(m_tunnelExit ? m_tunnelExit->status : 0, summary));
                },
        };
        co_await openTunnel(m_tunnel, m_port, m_services.clock, m_connection, observer, stop);
        m_isOpeningTunnel = false;
        m_tunnelExit.reset(); // of the tunnel that made way
        co_await probeServer(stop);
        if (m_tunnelExit) {
            observer.onExited(m_tunnelExit->summary);
            throw tunnelDidNotStayOpen(host, m_tunnelExit->summary);
        }
    } catch (const Cancelled&) {
        co_return; // whoever stopped it says what is to be said
    } catch (const Error& error) {
        failureText = error.message();
        if (m_isOpeningTunnel && m_tunnel.isRunning())
            dropTunnel(); // one that is of no use
    }
    m_isOpeningTunnel = false;
    if (!failureText.isEmpty())
        setOffline(failureText);
    repeatStartNotices();
}

Task<void> AppModel::followProbe(std::stop_token stop)
{
    // How a tunnel ended during the attempt that this one replaces is still to be said.
    if (m_linkState != LinkState::Connecting)
        m_tunnelExit.reset();
    assign(m_linkState, LinkState::Connecting, &AppState::linkStateChanged);
    try {
        co_await probeServer(stop);
    } catch (const Cancelled&) {
        co_return; // a newer attempt says what is to be said
    }
    if (m_tunnelExit)
        sayTunnelClosed();
    repeatStartNotices();
}

/// Asks the server and says what came of it. If its tunnel ended meanwhile, m_tunnelExit tells how, and that
/// is for the caller to say.
Task<void> AppModel::probeServer(std::stop_token stop)
{
    const QUrl base = m_connection.baseURL();
    std::optional<ProbeResult> result;
    QString failure;
    try {
        HttpClient http;
        result = co_await probe(OllamaClient(base, http, probeTime), stop);
    } catch (const Error& error) {
        failure = error.message();
    }
    // An ssh that ends closes its connections first.
    if (!result && m_tunnelIsUp)
        co_await m_tunnel.waitUntilStable(std::chrono::milliseconds(500), stop);
    if (stop.stop_requested())
        throw Cancelled(); // the answer came together with the stop
    if (m_tunnelExit)
        co_return;
    if (result) {
        showConnected(base, *result);
        co_return;
    }
    m_services.log.log(QStringLiteral("probe failed ") + failure);
    setOffline(unansweredMessage(m_connection, m_tunnelIsUp));
}

void AppModel::showConnected(const QUrl& base, const ProbeResult& result)
{
    const QString host = m_connection.hostLabel();
    const QString count = QString::number(result.models.size());
    const QString report = reportOf(result);
    assign(m_connectionReport, report, &AppState::connectionReportChanged);
    assign(m_connectionDetail, QStringLiteral("Connected to %1. %2").arg(host, report),
           &AppState::connectionDetailChanged);
    assign(m_linkState, LinkState::Connected, &AppState::linkStateChanged);
    assign(m_installedModels, result.models, &AppState::installedModelsChanged);
    setStatusMessage(QStringLiteral("Connected to %1 · %2 models").arg(host, count));
    m_services.log.log(QStringLiteral("probe %1 %2 models=%3").arg(base.toString(), result.version, count));
    m_services.log.log(QStringLiteral("Connected to %1 models=%2").arg(host, count));
    refreshRunningModels();
}

void AppModel::tunnelEnded(int status, const QString& output)
{
    m_tunnelExit = {.status = status, .summary = TunnelController::summary(output)};
    assign(m_tunnelIsUp, false, &AppState::tunnelIsUpChanged);
    if (m_linkState != LinkState::Connecting) // else the attempt under way reports it
        sayTunnelClosed();
}

void AppModel::sayTunnelClosed()
{
    const TunnelExit exit = std::exchange(m_tunnelExit, std::nullopt).value_or(TunnelExit());
    QString message = QStringLiteral("The tunnel to %1 closed.").arg(m_connection.hostLabel());
    if (!exit.summary.isEmpty())
        message += QLatin1Char(' ') + exit.summary;
    setOffline(message);
    m_services.log.log(QStringLiteral("tunnel closed %1").arg(tunnelExitDetail(exit.status, exit.summary)));
}

void AppModel::dropTunnel()
{
    m_stopConnection.request_stop();
    m_isOpeningTunnel = false;
    if (const std::shared_ptr<TunnelProcess> child = m_tunnel.detach())
        child->terminate();
    assign(m_tunnelIsUp, false, &AppState::tunnelIsUpChanged);
}

/// An attempt that is replaced shall not leave its ssh behind, whether that has proved stable yet or not.
void AppModel::dropOpening()
{
    if (m_isOpeningTunnel)
        dropTunnel();
}

void AppModel::closeConnection()
{
    endStartNotices();
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
    endStartNotices();
    dropTunnel();
    clearStatus(QStringLiteral("Connecting to %1").arg(m_connection.hostLabel()));
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
        HttpClient http;
        const OllamaClient client(base, http, probeTime);
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
