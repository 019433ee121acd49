#pragma once

#include "base/Error.h"

#include <QByteArray>
#include <QByteArrayView>

#include <optional>
#include <vector>

namespace varnel::practice {

struct HttpHeader
{
    QByteArray name;
    QByteArray value;

    bool operator==(const HttpHeader&) const = default;
};

/// One request as it arrived: nothing is decoded but the chunks of its body.
struct HttpRequest
{
    QByteArray method;
    /// Path and query as they were sent.
    QByteArray target;
    /// 1 for HTTP/1.1, 0 for HTTP/1.0.
    int minorVersion = 1;
    std::vector<HttpHeader> headers;
    QByteArray body;

    bool operator==(const HttpRequest&) const = default;

    /// The value of the first header of that name in any casing; empty if there is none.
    QByteArray header(QByteArrayView name) const;
    /// Whether the client may send another request on the same connection.
    bool keepsConnection() const;
};

/// What arrived is no request that the server takes; it is answered with the status and the connection is
/// closed.
class HttpRefusal : public Error
{
public:
    HttpRefusal(int status, QString reason);

    int status() const noexcept { return m_status; }

private:
    int m_status;
};

/// Cuts the bytes of one connection into requests, however they are cut on their way.
class HttpRequestReader
{
public:
    static constexpr qsizetype headLimit = 64LL * 1024;
    static constexpr qsizetype bodyLimit = 256LL * 1024 * 1024;

    void feed(QByteArrayView bytes);
    /// The next complete request, or nothing as long as bytes are missing. Throws HttpRefusal, after which
    /// the reader is of no further use.
    std::optional<HttpRequest> next();
    /// True once for a request whose client waits for "100 Continue" before it sends the body.
    bool takeExpectsContinue();

private:
    enum class Stage {
        Head,
        Body,
        ChunkSize,
        ChunkData,
        ChunkEnd,
        Trailer,
        Complete,
    };

    /// Goes one step further; false if bytes are missing.
    bool advance();
    bool readHead();
    void beginBody();
    bool readBody();
    bool readChunkSize();
    bool readChunkEnd();
    bool readTrailer();
    /// A line without its line break; nothing as long as it is not complete.
    std::optional<QByteArray> takeLine();
    /// Moves up to m_missing bytes from the buffer to the body; whether all of them were there.
    bool takeBodyBytes();

    Stage m_stage = Stage::Head;
    HttpRequest m_request;
    QByteArray m_buffer;
    qsizetype m_missing = 0;
    qsizetype m_trailerSize = 0;
    bool m_expectsContinue = false;
};

} // namespace varnel::practice
