#include "base/HttpClient.h"

#include "base/CurlSession.h"
#include "base/HttpTransfer.h"
#include "base/SystemProxy.h"

#include <QTimer>

namespace varnel {

namespace {

/// What the desktop answers within the limit. A look-up that hangs, such as one for a script on a server that
/// is gone, is given up, and the host is reached directly, as browsers do when that script cannot be had:
/// where a proxy is the only way out, connecting then fails and says so.
Task<QByteArray> askDesktop(std::shared_ptr<CurlSession> session, QUrl url, std::chrono::milliseconds limit,
                            std::stop_token stop)
{
    std::stop_source end;
    const std::stop_callback forward(stop, [&end] { end.request_stop(); });
    QTimer timer;
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, &timer, [&end] { end.request_stop(); });
    timer.start(limit);
    try {
        co_return co_await session->proxyLookup.run(
            [url](const std::stop_token& abandoned) {
                // Look-ups that were given up while they waited behind one that hangs are not made up for.
                return abandoned.stop_requested() ? QByteArray() : desktopProxyFor(url);
            },
            end.get_token());
    } catch (const Cancelled&) {
        if (stop.stop_requested())
            throw;
    }
    co_return QByteArray("");
}

/// Which proxy to use: nothing leaves it to libcurl and the environment, empty means none.
Task<std::optional<QByteArray>> findProxy(std::shared_ptr<CurlSession> session, QUrl url,
                                          std::chrono::milliseconds limit, std::stop_token stop)
{
    if (isLoopbackHost(url.host()))
        co_return QByteArray("");
    if (environmentNamesProxy())
        co_return std::nullopt;
    const QString key = url.scheme() + QLatin1Char(' ') + url.host();
    const auto now = std::chrono::steady_clock::now();
    std::erase_if(session->knownProxies,
                  [now](const auto& known) { return now - known.second.asked > std::chrono::minutes(1); });
    if (const auto known = session->knownProxies.find(key); known != session->knownProxies.end())
        co_return known->second.proxy;
    QByteArray proxy = co_await askDesktop(session, url, limit, std::move(stop));
    session->knownProxies.insert_or_assign(key,
                                           CurlSession::KnownProxy{proxy, std::chrono::steady_clock::now()});
    co_return proxy;
}

Task<HttpResponse> sendRequest(std::shared_ptr<CurlSession> session, HttpRequest request,
                               std::stop_token stop)
{
    if (stop.stop_requested())
        throw Cancelled();
    std::optional<QByteArray> proxy = QByteArray("");
    if (request.pinnedAddress.isEmpty())
        proxy = co_await findProxy(session, request.url, request.connectTimeout, stop);
    const auto transfer = std::make_shared<HttpTransfer>(std::move(session), std::move(request),
                                                         std::move(proxy), std::move(stop));
    co_await HttpTransfer::head(transfer);
    co_return HttpResponse(transfer);
}

Task<QByteArray> readWhole(std::shared_ptr<HttpTransfer> transfer, qint64 limit)
{
    QByteArray body;
    while (const std::optional<QByteArray> piece = co_await HttpTransfer::next(transfer)) {
        body += *piece;
        if (body.size() > limit) {
            const QString size = limit < 1024 * 1024 ? QStringLiteral("%1 bytes").arg(limit)
                                                     : QStringLiteral("%1 MiB").arg(limit / (1024 * 1024));
            throw TransportError(
                TransportError::Kind::TooLarge,
                QStringLiteral("The reply of %1 is longer than %2.").arg(transfer->peer(), size));
        }
    }
    co_return body;
}

Task<QByteArray> readBeginning(std::shared_ptr<HttpTransfer> transfer, qint64 limit)
{
    QByteArray body;
    try {
        while (body.size() < limit) {
            const std::optional<QByteArray> piece = co_await HttpTransfer::next(transfer);
            if (!piece)
                break;
            body += *piece;
        }
    } catch (const TransportError&) {
        // What arrived is all there is to show; the status that made somebody read this stands for the rest.
    }
    body.truncate(limit);
    co_return body;
}

} // namespace

HttpResponse::HttpResponse(std::shared_ptr<HttpTransfer> transfer)
    : m_transfer(std::move(transfer))
{}

int HttpResponse::status() const
{
    return m_transfer->status();
}
QByteArray HttpResponse::header(QByteArrayView name) const
{
    return m_transfer->header(name);
}
Task<std::optional<QByteArray>> HttpResponse::next()
{
    return HttpTransfer::next(m_transfer);
}
void HttpResponse::hold(bool isHeld)
{
    m_transfer->hold(isHeld);
}
Task<QByteArray> HttpResponse::readAll(qint64 limit)
{
    return readWhole(m_transfer, limit);
}
Task<QByteArray> HttpResponse::readUpTo(qint64 limit)
{
    return readBeginning(m_transfer, limit);
}

HttpClient::HttpClient(HttpClientOptions options)
    : m_session(std::make_shared<CurlSession>(std::move(options.certificateAuthorities)))
{}

HttpClient::~HttpClient() = default;

Task<HttpResponse> HttpClient::send(HttpRequest request, std::stop_token stop)
{
    return sendRequest(m_session, std::move(request), std::move(stop));
}

} // namespace varnel
