#pragma once

#include "practice_host/HttpRequest.h"

#include <QPointer>

#include <functional>
#include <memory>
#include <vector>

namespace varnel::practice {

class HttpConnection;

/// One request and the way to answer it, properly or byte by byte.
///
/// Whoever answers keeps the exchange; so does the connection, until the reply has ended. Once that is so, or
/// the connection is gone, everything that sends does nothing.
class HttpExchange
{
public:
    HttpExchange(HttpRequest request, HttpConnection& connection);

    const QByteArray& method() const noexcept { return m_request.method; }
    /// Path and query as they were sent.
    const QByteArray& target() const noexcept { return m_request.target; }
    /// The target up to its query, still percent-encoded.
    QByteArray path() const;
    /// The first header of that name in any casing; empty if there is none.
    QByteArray header(QByteArrayView name) const { return m_request.header(name); }
    const std::vector<HttpHeader>& headers() const noexcept { return m_request.headers; }
    const QByteArray& body() const noexcept { return m_request.body; }

    /// The whole reply at once, with its Content-Length.
    void reply(int status, const QByteArray& contentType, const QByteArray& body,
               const std::vector<HttpHeader>& headers = {});

    /// Begins a chunked reply; `headers` are sent besides Transfer-Encoding.
    void beginReply(int status, const std::vector<HttpHeader>& headers = {});
    /// One chunk of a reply that was begun; nothing is sent for an empty one, which would end the body.
    void sendChunk(QByteArrayView chunk);
    /// Ends a reply that was begun, or one that was sent raw, and lets the connection take its next request.
    void endReply();

    /// Exactly these bytes, at any time: before, inside or instead of a proper reply.
    void sendRaw(QByteArrayView bytes);

    /// Closes the connection in good order (FIN) once everything is sent.
    void close();
    /// Breaks the connection (RST) after handing what is unsent to the system.
    void abort();

    /// Whether there is still somebody to answer.
    bool isOpen() const noexcept { return !m_connection.isNull(); }
    /// Bytes that were sent here but not yet taken by the system; whoever sends much waits until they are
    /// few.
    qint64 unsentBytes() const;
    /// Hands what is unsent to the system now instead of at the next turn of the event loop.
    void flush();

    /// Called when the client leaves before the reply has ended.
    void onClosed(std::function<void()> callback) { m_onClosed = std::move(callback); }
    /// Called when the system took bytes, as long as the reply has not ended.
    void onBytesWritten(std::function<void()> callback) { m_onBytesWritten = std::move(callback); }

private:
    friend HttpConnection;

    enum class Form {
        Unbegun,
        Chunked,
        Raw,
    };

    QByteArray head(int status, const std::vector<HttpHeader>& headers) const;
    void detach();
    void notifyClosed();
    void notifyBytesWritten() const;

    HttpRequest m_request;
    QPointer<HttpConnection> m_connection;
    Form m_form = Form::Unbegun;
    std::function<void()> m_onClosed;
    std::function<void()> m_onBytesWritten;
};

} // namespace varnel::practice
