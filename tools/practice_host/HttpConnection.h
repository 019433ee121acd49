#pragma once

#include "practice_host/HttpExchange.h"
#include "practice_host/HttpRequest.h"

#include <QObject>

#include <functional>
#include <memory>

class QTcpSocket;

namespace varnel::practice {

/// "HTTP/1.1 404 Not Found" and its line break.
QByteArray statusLine(int status);

/// One client of the HttpServer: reads its requests one after the other and deletes itself when the client is
/// gone.
class HttpConnection final : public QObject
{
public:
    /// Takes the socket; `handler` outlives the connection.
    HttpConnection(QTcpSocket* socket, const std::function<void(std::shared_ptr<HttpExchange>)>& handler,
                   QObject* parent);
    HttpConnection(const HttpConnection&) = delete;
    HttpConnection& operator=(const HttpConnection&) = delete;
    HttpConnection(HttpConnection&&) = delete;
    HttpConnection& operator=(HttpConnection&&) = delete;
    ~HttpConnection() override;

    void write(QByteArrayView bytes);
    void flush();
    qint64 unsentBytes() const;
    /// The reply has ended: the next request is read, or the connection closed.
    void finishExchange(bool keepsConnection);
    void close();
    void abort();

private:
    void readRequest();
    void refuse(const HttpRefusal& refusal);
    void notifyBytesWritten() const;
    void disconnected();
    void releaseExchange();

    QTcpSocket* m_socket;
    const std::function<void(std::shared_ptr<HttpExchange>)>& m_handler;
    HttpRequestReader m_reader;
    std::shared_ptr<HttpExchange> m_exchange;
    bool m_refused = false;
};

} // namespace varnel::practice
