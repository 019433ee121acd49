#pragma once

#include "practice_host/HttpExchange.h"

#include <QHostAddress>
#include <QTcpServer>
#include <QUrl>

#include <functional>
#include <memory>

class QTcpSocket;

namespace varnel::practice {

/// A small HTTP/1.1 server for this computer only, that can be as correct or as broken as its handler wants.
///
/// It serves the practice host and the tests. Requests of one connection come one after the other; a request
/// of over 64 KiB of headers is answered with 431, one of over 256 MiB of body with 413. A client that closes
/// its sending side counts as gone.
class HttpServer
{
public:
    /// Called once a request is there as a whole, on the event loop; it may answer at once or at any time
    /// after.
    using Handler = std::function<void(std::shared_ptr<HttpExchange>)>;
    /// Called with every new connection; the server owns the socket and deletes it when the connection ends.
    using RawHandler = std::function<void(QTcpSocket&)>;

    explicit HttpServer(Handler handler);
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;
    HttpServer(HttpServer&&) = delete;
    HttpServer& operator=(HttpServer&&) = delete;
    /// Closes all connections; exchanges that are still kept find nobody any more and no callback is called.
    ~HttpServer();

    /// From now on connections are handed over as they are, without a byte of HTTP read or written.
    void acceptRaw(RawHandler handler) { m_rawHandler = std::move(handler); }

    /// Begins to listen. Throws Error if the port cannot be had.
    /// @param port 0 for any free one.
    void listen(quint16 port = 0, const QHostAddress& address = QHostAddress(QHostAddress::LocalHost));
    /// Takes no new connections; those that are open stay so.
    void stopListening() { m_server.close(); }

    quint16 port() const { return m_server.serverPort(); }
    /// "http://127.0.0.1:" and the port, without a path.
    QUrl url() const;

    int acceptedConnections() const noexcept { return m_accepted; }
    int openConnections() const noexcept { return m_open; }

private:
    void accept();

    Handler m_handler;
    RawHandler m_rawHandler;
    int m_accepted = 0;
    int m_open = 0;
    QTcpServer m_server;
    // The parent of all connections; the context below is gone before it, so that nobody counts while they
    // go.
    QObject m_connections;
    QObject m_context;
};

} // namespace varnel::practice
