#include "practice_host/HttpConnection.h"

#include <QTcpSocket>
#include <QTimer>

#include <sys/socket.h>

namespace varnel::practice {

namespace {

// How much a client may send ahead of the reply it waits for; the rest stays in its own buffers.
constexpr qint64 readAheadLimit = 1024LL * 1024;
constexpr std::chrono::seconds refusalLinger(2);

const char* reasonPhrase(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 307:
        return "Temporary Redirect";
    case 400:
        return "Bad Request";
    case 401:
        return "Unauthorized";
    case 404:
        return "Not Found";
    case 405:
        return "Method Not Allowed";
    case 413:
        return "Content Too Large";
    case 431:
        return "Request Header Fields Too Large";
    case 500:
        return "Internal Server Error";
    case 501:
        return "Not Implemented";
    case 502:
        return "Bad Gateway";
    case 503:
        return "Service Unavailable";
    default:
        return "Status";
    }
}

} // namespace

QByteArray statusLine(int status)
{
    return "HTTP/1.1 " + QByteArray::number(status) + ' ' + reasonPhrase(status) + "\r\n";
}

HttpConnection::HttpConnection(QTcpSocket* socket,
                               const std::function<void(std::shared_ptr<HttpExchange>)>& handler,
                               QObject* parent)
    : QObject(parent)
    , m_socket(socket)
    , m_handler(handler)
{
    m_socket->setParent(this);
    m_socket->setReadBufferSize(readAheadLimit);
    connect(m_socket, &QTcpSocket::readyRead, this, &HttpConnection::readRequest);
    connect(m_socket, &QTcpSocket::bytesWritten, this, &HttpConnection::notifyBytesWritten);
    connect(m_socket, &QTcpSocket::disconnected, this, &HttpConnection::disconnected);
    // What arrived before the connections were made announces itself no more.
    QTimer::singleShot(0, this, &HttpConnection::readRequest);
}

HttpConnection::~HttpConnection()
{
    releaseExchange();
}

void HttpConnection::write(QByteArrayView bytes)
{
    m_socket->write(bytes.data(), bytes.size());
}

void HttpConnection::flush()
{
    m_socket->flush();
}

qint64 HttpConnection::unsentBytes() const
{
    return m_socket->bytesToWrite();
}

void HttpConnection::finishExchange(bool keepsConnection)
{
    releaseExchange();
    if (!keepsConnection)
        m_socket->disconnectFromHost();
    else
        QTimer::singleShot(0, this, &HttpConnection::readRequest);
}

void HttpConnection::close()
{
    releaseExchange();
    m_socket->disconnectFromHost();
}

void HttpConnection::abort()
{
    releaseExchange();
    m_socket->flush();
    const linger immediately{.l_onoff = 1, .l_linger = 0};
    ::setsockopt(static_cast<int>(m_socket->socketDescriptor()), SOL_SOCKET, SO_LINGER, &immediately,
                 sizeof immediately);
    m_socket->abort();
}

void HttpConnection::readRequest()
{
    if (m_refused) {
        m_socket->readAll();
        return;
    }
    // A client that sends ahead waits until the reply before it has ended.
    if (m_exchange || m_socket->state() != QAbstractSocket::ConnectedState)
        return;
    m_reader.feed(m_socket->readAll());
    std::optional<HttpRequest> request;
    try {
        request = m_reader.next();
    } catch (const HttpRefusal& refusal) {
        refuse(refusal);
        return;
    }
    if (m_reader.takeExpectsContinue() && !request)
        write("HTTP/1.1 100 Continue\r\n\r\n");
    if (!request)
        return;
    m_exchange = std::make_shared<HttpExchange>(std::move(*request), *this);
    m_handler(m_exchange);
}

void HttpConnection::refuse(const HttpRefusal& refusal)
{
    m_refused = true;
    const QByteArray text = refusal.message().toUtf8();
    write(statusLine(refusal.status()) + "Content-Type: text/plain; charset=utf-8\r\nContent-Length: " +
          QByteArray::number(text.size()) + "\r\nConnection: close\r\n\r\n" + text);
    m_socket->flush();
    // Closing while the client still sends would reset the connection and take the answer with it, so its
    // bytes are thrown away for a moment first.
    if (m_socket->bytesToWrite() == 0)
        ::shutdown(static_cast<int>(m_socket->socketDescriptor()), SHUT_WR);
    QTimer::singleShot(refusalLinger, m_socket, &QTcpSocket::abort);
}

void HttpConnection::notifyBytesWritten() const
{
    if (const std::shared_ptr<HttpExchange> exchange = m_exchange)
        exchange->notifyBytesWritten();
}

void HttpConnection::disconnected()
{
    deleteLater();
    if (const std::shared_ptr<HttpExchange> exchange = std::exchange(m_exchange, nullptr))
        exchange->notifyClosed();
}

void HttpConnection::releaseExchange()
{
    if (const std::shared_ptr<HttpExchange> exchange = std::exchange(m_exchange, nullptr))
        exchange->detach();
}

} // namespace varnel::practice
