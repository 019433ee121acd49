#include "base/HttpTransfer.h"

#include "base/CurlSession.h"

#include <cstring>
#include <new>

namespace varnel {

using namespace std::chrono;

HttpTransfer::HttpTransfer(std::shared_ptr<CurlSession> session, HttpRequest request,
                           const std::optional<QByteArray>& proxy, std::stop_token stop)
    : m_session(std::move(session))
    , m_request(std::move(request))
    , m_stop(std::move(stop))
    , m_handle(curl_easy_init())
    , m_lastActivity(steady_clock::now())
{
    if (!m_handle)
        throw std::bad_alloc();
    configure(proxy);
    configureRequest();
    if (!m_request.pinnedAddress.isEmpty())
        pinAddress();
    m_idleTimer.setSingleShot(true);
    QObject::connect(&m_idleTimer, &QTimer::timeout, &m_idleTimer, [this] { checkIdle(); });
    m_idleTimer.start(m_request.idleTimeout);
    m_onStop.emplace(m_stop, [this] { fail(std::make_exception_ptr(Cancelled())); });
    m_session->add(m_handle);
}

HttpTransfer::~HttpTransfer()
{
    end();
    curl_easy_cleanup(m_handle);
    curl_slist_free_all(m_headerList);
    curl_slist_free_all(m_connectTo);
}

void HttpTransfer::configure(const std::optional<QByteArray>& proxy)
{
    curl_easy_setopt(m_handle, CURLOPT_PRIVATE, this);
    curl_easy_setopt(m_handle, CURLOPT_ERRORBUFFER, m_errorText.data());
    curl_easy_setopt(m_handle, CURLOPT_NOSIGNAL, 1L);
    // Otherwise ending a transfer while its host is being looked up waits for the look-up.
    curl_easy_setopt(m_handle, CURLOPT_QUICK_EXIT, 1L);
    curl_easy_setopt(m_handle, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(m_handle, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(m_handle, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    curl_easy_setopt(m_handle, CURLOPT_ACCEPT_ENCODING, "gzip, deflate");
    curl_easy_setopt(m_handle, CURLOPT_CONNECTTIMEOUT_MS,
                     static_cast<long>(m_request.connectTimeout.count()));
    curl_easy_setopt(m_handle, CURLOPT_HEADERFUNCTION, &HttpTransfer::onHeader);
    curl_easy_setopt(m_handle, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(m_handle, CURLOPT_WRITEFUNCTION, &HttpTransfer::onBody);
    curl_easy_setopt(m_handle, CURLOPT_WRITEDATA, this);
    if (proxy)
        curl_easy_setopt(m_handle, CURLOPT_PROXY, proxy->constData());
    if (!m_session->certificateAuthorities().isEmpty()) {
        curl_easy_setopt(m_handle, CURLOPT_CAINFO, m_session->certificateAuthorities().constData());
        curl_easy_setopt(m_handle, CURLOPT_CAPATH, nullptr);
    }
}

void HttpTransfer::configureRequest()
{
    curl_easy_setopt(m_handle, CURLOPT_URL, m_request.url.toEncoded(QUrl::RemoveFragment).constData());
    if (!m_request.body.isEmpty()) {
        curl_easy_setopt(m_handle, CURLOPT_POSTFIELDS, m_request.body.constData());
        curl_easy_setopt(m_handle, CURLOPT_POSTFIELDSIZE_LARGE,
                         static_cast<curl_off_t>(m_request.body.size()));
        // A body that is being sent is activity too.
        curl_easy_setopt(m_handle, CURLOPT_NOPROGRESS, 0L);
        curl_easy_setopt(m_handle, CURLOPT_XFERINFOFUNCTION, &HttpTransfer::onProgress);
        curl_easy_setopt(m_handle, CURLOPT_XFERINFODATA, this);
    }
    if (m_request.method != "GET" || !m_request.body.isEmpty())
        curl_easy_setopt(m_handle, CURLOPT_CUSTOMREQUEST, m_request.method.constData());
    if (m_request.method == "HEAD")
        curl_easy_setopt(m_handle, CURLOPT_NOBODY, 1L);
    if (m_request.method != "GET" && m_request.method != "HEAD") {
        curl_easy_setopt(m_handle, CURLOPT_PREREQFUNCTION, &HttpTransfer::onReadyToSend);
        curl_easy_setopt(m_handle, CURLOPT_PREREQDATA, this);
    }
    // An empty "Expect" keeps libcurl from waiting for a "100 Continue" before it sends a large body.
    m_headerList = curl_slist_append(m_headerList, "Expect:");
    for (const HttpHeader& header : m_request.headers)
        m_headerList = curl_slist_append(m_headerList, (header.name + ": " + header.value).constData());
    curl_easy_setopt(m_handle, CURLOPT_HTTPHEADER, m_headerList);
}

void HttpTransfer::pinAddress()
{
    const QByteArray& address = m_request.pinnedAddress;
    const QByteArray host = address.contains(':') ? '[' + address + ']' : address;
    m_connectTo = curl_slist_append(nullptr, ("::" + host + ':').constData());
    curl_easy_setopt(m_handle, CURLOPT_CONNECT_TO, m_connectTo);
    // A kept connection to the same host may lead to an address that somebody else chose.
    curl_easy_setopt(m_handle, CURLOPT_FRESH_CONNECT, 1L);
    curl_easy_setopt(m_handle, CURLOPT_FORBID_REUSE, 1L);
}

std::size_t HttpTransfer::onHeader(char* bytes, std::size_t size, std::size_t count, void* transfer)
{
    auto& self = *static_cast<HttpTransfer*>(transfer);
    const std::size_t length = size * count;
    self.m_lastActivity = steady_clock::now();
    return self.takeHeaderLine(QByteArrayView(bytes, static_cast<qsizetype>(length))) ? length : 0;
}

bool HttpTransfer::takeHeaderLine(QByteArrayView line)
{
    m_headLength += line.size();
    if (m_headLength > m_request.headerLimit) {
        m_headTooLong = true;
        return false;
    }
    if (m_headComplete)
        return true; // a trailer behind a chunked body
    line = line.trimmed();
    if (line.startsWith("HTTP/")) {
        m_headers.clear();
        return true;
    }
    if (!line.isEmpty()) {
        const qsizetype colon = line.indexOf(':');
        if (colon > 0)
            m_headers.push_back(
                {line.first(colon).toByteArray(), line.sliced(colon + 1).trimmed().toByteArray()});
        return true;
    }
    long status = 0;
    curl_easy_getinfo(m_handle, CURLINFO_RESPONSE_CODE, &status);
    if (status >= 200) { // below are interim answers, the real one is still to come
        m_status = static_cast<int>(status);
        m_headComplete = true;
        m_wakeup.notify();
    }
    return true;
}

std::size_t HttpTransfer::onBody(char* bytes, std::size_t size, std::size_t count, void* transfer)
{
    auto& self = *static_cast<HttpTransfer*>(transfer);
    const std::size_t length = size * count;
    self.m_lastActivity = steady_clock::now();
    if (self.m_received.size() >= (self.m_isHeld ? heldLimit : unreadLimit)) {
        self.m_isPaused = true; // these bytes come again
        return CURL_WRITEFUNC_PAUSE;
    }
    if (self.m_request.bodyLimit && self.m_bodyLength + qint64(length) >= *self.m_request.bodyLimit) {
        self.m_received.append(bytes, *self.m_request.bodyLimit - self.m_bodyLength);
        self.m_bodyLength = *self.m_request.bodyLimit;
        self.m_bodyLimitReached = true;
        self.m_wakeup.notify();
        return 0;
    }
    self.m_bodyLength += qint64(length);
    self.m_received.append(bytes, static_cast<qsizetype>(length));
    self.m_wakeup.notify();
    return length;
}

int HttpTransfer::onProgress(void* transfer, curl_off_t, curl_off_t, curl_off_t, curl_off_t sent)
{
    auto& self = *static_cast<HttpTransfer*>(transfer);
    if (sent != self.m_bytesSent) {
        self.m_bytesSent = sent;
        self.m_lastActivity = steady_clock::now();
    }
    return 0;
}

int HttpTransfer::onReadyToSend(void* transfer, char*, char*, int, int)
{
    // libcurl sends a request again by itself when a kept connection turns out to be closed. The server may
    // have acted on the first one, so what changes something there is sent once only.
    return static_cast<HttpTransfer*>(transfer)->m_timesSent++ == 0 ? CURL_PREREQFUNC_OK
                                                                    : CURL_PREREQFUNC_ABORT;
}

void HttpTransfer::checkIdle()
{
    if (m_isPaused) // it is this side that keeps the other waiting
        m_lastActivity = steady_clock::now();
    const auto idle = steady_clock::now() - m_lastActivity;
    if (idle < m_request.idleTimeout) {
        m_idleTimer.start(ceil<milliseconds>(m_request.idleTimeout - idle));
        return;
    }
    const double limit = duration<double>(m_request.idleTimeout).count();
    fail(std::make_exception_ptr(TransportError(
        TransportError::Kind::TimedOut,
        QStringLiteral("%1 sent nothing for %2 seconds.").arg(peer(), QString::number(limit)))));
}

void HttpTransfer::complete(CURLcode result)
{
    if (m_bodyLimitReached)
        result = CURLE_OK;
    if (result == CURLE_OK && !m_headComplete)
        result = CURLE_GOT_NOTHING;
    fail(result == CURLE_OK ? nullptr : std::make_exception_ptr(describe(result)));
}

/// Ends the transfer; without a failure it has ended well.
void HttpTransfer::fail(std::exception_ptr failure)
{
    if (m_finished)
        return;
    m_failure = std::move(failure);
    end();
    m_wakeup.notify();
}

void HttpTransfer::end()
{
    if (m_finished)
        return;
    m_finished = true;
    m_idleTimer.stop();
    m_session->remove(m_handle);
}

QByteArray HttpTransfer::header(QByteArrayView name) const
{
    for (const HttpHeader& header : m_headers) {
        if (header.name.compare(name, Qt::CaseInsensitive) == 0)
            return header.value;
    }
    return {};
}

QString HttpTransfer::peer() const
{
    const int standardPort = m_request.url.scheme() == QLatin1String("https") ? 443 : 80;
    return QStringLiteral("%1 port %2")
        .arg(m_request.url.host(), QString::number(m_request.url.port(standardPort)));
}

Task<void> HttpTransfer::head(std::shared_ptr<HttpTransfer> transfer)
{
    while (!transfer->m_headComplete && !transfer->m_finished)
        co_await transfer->m_wakeup.wait();
    if (transfer->m_stop.stop_requested())
        throw Cancelled();
    if (!transfer->m_headComplete)
        std::rethrow_exception(transfer->m_failure);
}

Task<std::optional<QByteArray>> HttpTransfer::next(std::shared_ptr<HttpTransfer> transfer)
{
    while (transfer->m_received.isEmpty() && !transfer->m_finished && !transfer->m_stop.stop_requested())
        co_await transfer->m_wakeup.wait();
    if (transfer->m_stop.stop_requested())
        throw Cancelled();
    if (!transfer->m_received.isEmpty())
        co_return transfer->takeReceived();
    if (transfer->m_failure)
        std::rethrow_exception(transfer->m_failure);
    co_return std::nullopt;
}

QByteArray HttpTransfer::takeReceived()
{
    QByteArray bytes = std::exchange(m_received, QByteArray());
    if (std::exchange(m_isPaused, false) && !m_finished) {
        m_lastActivity = steady_clock::now();
        if (const CURLcode result = curl_easy_pause(m_handle, CURLPAUSE_CONT); result != CURLE_OK)
            complete(result); // the session is told nothing of that
    }
    return bytes;
}

/// What kept a connection from being made.
TransportError HttpTransfer::describeConnection(CURLcode result) const
{
    using Kind = TransportError::Kind;
    const QString detail = QString::fromUtf8(m_errorText.data()).trimmed();
    switch (result) {
    case CURLE_COULDNT_RESOLVE_HOST:
        return {Kind::Unresolved,
                QStringLiteral("The host \"%1\" could not be found.").arg(m_request.url.host())};
    case CURLE_COULDNT_RESOLVE_PROXY:
        return {Kind::Unresolved, QStringLiteral("The proxy for %1 could not be found.").arg(peer())};
    case CURLE_COULDNT_CONNECT:
        return {Kind::Unreachable, QStringLiteral("Could not connect to %1%2.").arg(peer(), systemReason())};
    case CURLE_OPERATION_TIMEDOUT:
        return {Kind::TimedOut,
                QStringLiteral("Could not connect to %1 within %2 seconds.")
                    .arg(peer(), QString::number(duration<double>(m_request.connectTimeout).count()))};
    case CURLE_PEER_FAILED_VERIFICATION:
        return {Kind::Insecure,
                QStringLiteral("The certificate of %1 could not be verified: %2.").arg(peer(), detail)};
    default:
        return {Kind::Insecure,
                QStringLiteral("A secure connection to %1 could not be made: %2.").arg(peer(), detail)};
    }
}

/// ": " and the system's own words for what went wrong; empty if it has none.
QString HttpTransfer::systemReason() const
{
    long error = 0;
    curl_easy_getinfo(m_handle, CURLINFO_OS_ERRNO, &error);
    if (error == 0)
        return {};
    return QStringLiteral(": ") + QString::fromLocal8Bit(std::strerror(static_cast<int>(error)));
}

TransportError HttpTransfer::describe(CURLcode result) const
{
    using Kind = TransportError::Kind;
    if (m_headTooLong || (result == CURLE_OUT_OF_MEMORY && !m_headComplete))
        return {Kind::TooLarge, QStringLiteral("%1 sent more headers than can be taken.").arg(peer())};
    if (result == CURLE_OUT_OF_MEMORY) // libcurl unpacks on while it is paused, up to a limit of its own
        return {Kind::TooLarge,
                QStringLiteral("The reply of %1 unpacks to more than can be taken.").arg(peer())};
    switch (result) {
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
    case CURLE_COULDNT_CONNECT:
    case CURLE_OPERATION_TIMEDOUT:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CERTPROBLEM:
        return describeConnection(result);
    case CURLE_GOT_NOTHING:
    case CURLE_ABORTED_BY_CALLBACK:
        return {Kind::Closed, QStringLiteral("The connection to %1 closed without an answer.").arg(peer())};
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_WEIRD_SERVER_REPLY:
        return {Kind::Malformed, QStringLiteral("%1 did not answer in HTTP.").arg(peer())};
    case CURLE_BAD_CONTENT_ENCODING:
        return {Kind::Malformed, QStringLiteral("The compressed reply of %1 is damaged.").arg(peer())};
    case CURLE_PARTIAL_FILE:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
        return {Kind::Closed, QStringLiteral("The connection to %1 closed before the reply was complete%2.")
                                  .arg(peer(), systemReason())};
    default: {
        const QString detail = QString::fromUtf8(m_errorText.data()).trimmed();
        const QString reason = detail.isEmpty() ? QString::fromUtf8(curl_easy_strerror(result)) : detail;
        return {Kind::Unusable, QStringLiteral("The request to %1 failed: %2.").arg(peer(), reason)};
    }
    }
}

} // namespace varnel
