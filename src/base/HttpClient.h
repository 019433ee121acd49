#pragma once

#include "base/Task.h"
#include "base/TransportError.h"

#include <QByteArray>
#include <QUrl>

#include <chrono>
#include <memory>
#include <optional>
#include <stop_token>
#include <vector>

namespace varnel {

class CurlSession;
class HttpTransfer;

struct HttpHeader
{
    QByteArray name;
    QByteArray value;

    bool operator==(const HttpHeader&) const = default;
};

/// One HTTP request. Redirects are never followed: a request may carry keys and conversations, and where
/// those go is decided by whoever sends it.
struct HttpRequest
{
    QByteArray method = "GET";
    /// http or https; user-info in it becomes basic authentication.
    QUrl url;
    std::vector<HttpHeader> headers;
    QByteArray body;
    /// How long finding the host and connecting to it, TLS included, may take.
    std::chrono::milliseconds connectTimeout = std::chrono::seconds(30);
    /// How long no byte may move in either direction, from the start to the end of the answer. Not a limit of
    /// the whole.
    std::chrono::milliseconds idleTimeout = std::chrono::seconds(60);
    /// The numeric address (IPv6 without brackets) to connect to, whatever the URL's host resolves to now.
    /// The host still names what is asked for and whose certificate is checked. Such a request goes past
    /// every proxy, over a connection of its own that nothing else uses. Empty for the usual way.
    QByteArray pinnedAddress{};
    /// The longest block of headers taken, in bytes.
    qsizetype headerLimit = 256LL * 1024;
    /// After this many decoded bytes the body counts as complete, and the connection is closed. Nothing for
    /// the whole.
    std::optional<qint64> bodyLimit{};
};

/// The answer to a request, its body still arriving. Destroying it ends the transfer and closes the
/// connection.
class HttpResponse
{
public:
    explicit HttpResponse(std::shared_ptr<HttpTransfer> transfer);

    int status() const;
    bool isSuccess() const { return status() >= 200 && status() <= 299; }
    /// The first header of that name, in any case; empty if there is none.
    QByteArray header(QByteArrayView name) const;

    /// The next bytes of the body, decoded; nothing at its end. What arrived before a failure is handed out
    /// first. Throws TransportError or Cancelled.
    Task<std::optional<QByteArray>> next();
    /// While it is held, not much more is read ahead: for a reader that has enough to do and gives way to
    /// others for a moment. One that is not held may fall 32 MiB behind before the sender has to wait.
    void hold(bool isHeld);
    /// The whole body. Throws TransportError, also when the body is longer than `limit` bytes.
    Task<QByteArray> readAll(qint64 limit);
    /// The body, or its first `limit` bytes if it is longer or the connection fails; for texts of error
    /// answers.
    Task<QByteArray> readUpTo(qint64 limit);

private:
    std::shared_ptr<HttpTransfer> m_transfer;
};

struct HttpClientOptions
{
    /// A PEM file of certificate authorities in place of the system's; empty for the system's.
    QByteArray certificateAuthorities;
};

/// Sends HTTP requests from the event loop of its thread, over connections that it keeps for the next
/// request.
///
/// The system's proxy settings are honoured, but this computer is always reached directly. Nothing is kept
/// but connections: no cookies, no cache, no credentials. A POST or DELETE is never sent a second time by
/// itself.
class HttpClient
{
public:
    explicit HttpClient(HttpClientOptions options = {});
    HttpClient(const HttpClient&) = delete;
    HttpClient& operator=(const HttpClient&) = delete;
    HttpClient(HttpClient&&) = delete;
    HttpClient& operator=(HttpClient&&) = delete;
    ~HttpClient();

    /// Sends a request and returns when the head of its answer is there, whatever its status. A stop ends it
    /// at any point, also while the body is read later. Throws TransportError or Cancelled.
    Task<HttpResponse> send(HttpRequest request, std::stop_token stop);

private:
    std::shared_ptr<CurlSession> m_session;
};

} // namespace varnel
