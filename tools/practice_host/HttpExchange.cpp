#include "practice_host/HttpExchange.h"

#include "practice_host/HttpConnection.h"

namespace varnel::practice {

HttpExchange::HttpExchange(HttpRequest request, HttpConnection& connection)
    : m_request(std::move(request))
    , m_connection(&connection)
{}

QByteArray HttpExchange::path() const
{
    const qsizetype query = target().indexOf('?');
    return query < 0 ? target() : target().first(query);
}

QByteArray HttpExchange::head(int status, const std::vector<HttpHeader>& headers) const
{
    QByteArray text = statusLine(status);
    for (const HttpHeader& header : headers)
        text += header.name + ": " + header.value + "\r\n";
    if (!m_request.keepsConnection())
        text += "Connection: close\r\n";
    return text;
}

void HttpExchange::reply(int status, const QByteArray& contentType, const QByteArray& body,
                         const std::vector<HttpHeader>& headers)
{
    if (!isOpen())
        return;
    QByteArray text = head(status, headers);
    if (!contentType.isEmpty())
        text += "Content-Type: " + contentType + "\r\n";
    text += "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n";
    m_connection->write(text);
    if (method() != "HEAD")
        m_connection->write(body);
    m_connection->finishExchange(m_request.keepsConnection());
}

void HttpExchange::beginReply(int status, const std::vector<HttpHeader>& headers)
{
    if (!isOpen())
        return;
    m_form = Form::Chunked;
    m_connection->write(head(status, headers) + "Transfer-Encoding: chunked\r\n\r\n");
}

void HttpExchange::sendChunk(QByteArrayView chunk)
{
    if (!isOpen() || chunk.isEmpty() || method() == "HEAD")
        return;
    m_connection->write(QByteArray::number(chunk.size(), 16) + "\r\n" + chunk.toByteArray() + "\r\n");
}

void HttpExchange::endReply()
{
    if (!isOpen())
        return;
    if (m_form == Form::Chunked && method() != "HEAD")
        m_connection->write("0\r\n\r\n");
    m_connection->finishExchange(m_request.keepsConnection());
}

void HttpExchange::sendRaw(QByteArrayView bytes)
{
    if (!isOpen())
        return;
    if (m_form == Form::Unbegun)
        m_form = Form::Raw;
    m_connection->write(bytes);
}

void HttpExchange::close()
{
    if (isOpen())
        m_connection->close();
}

void HttpExchange::abort()
{
    if (isOpen())
        m_connection->abort();
}

qint64 HttpExchange::unsentBytes() const
{
    return isOpen() ? m_connection->unsentBytes() : 0;
}

void HttpExchange::flush()
{
    if (isOpen())
        m_connection->flush();
}

void HttpExchange::detach()
{
    m_connection.clear();
    // The callbacks usually keep this exchange themselves; they would keep it for ever.
    m_onClosed = nullptr;
    m_onBytesWritten = nullptr;
}

void HttpExchange::notifyClosed()
{
    const std::function<void()> callback = std::move(m_onClosed);
    detach();
    if (callback)
        callback();
}

void HttpExchange::notifyBytesWritten() const
{
    // A copy, because the callback may end the reply, which takes the callbacks away.
    const std::function<void()> callback = m_onBytesWritten;
    if (callback)
        callback();
}

} // namespace varnel::practice
