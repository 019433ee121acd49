#include "practice_host/HttpServer.h"

#include "practice_host/HttpConnection.h"

#include <QTcpSocket>

namespace varnel::practice {

HttpServer::HttpServer(Handler handler)
    : m_handler(std::move(handler))
{
    QObject::connect(&m_server, &QTcpServer::newConnection, &m_context, [this] { accept(); });
}

HttpServer::~HttpServer() = default;

void HttpServer::listen(quint16 port, const QHostAddress& address)
{
    if (!m_server.listen(address, port))
        throw Error(QStringLiteral("Port %1 of %2 cannot be opened: %3.")
                        .arg(QString::number(port), address.toString(), m_server.errorString()));
}

QUrl HttpServer::url() const
{
    QUrl url;
    url.setScheme(QStringLiteral("http"));
    url.setHost(m_server.serverAddress().toString());
    url.setPort(port());
    return url;
}

void HttpServer::accept()
{
    while (QTcpSocket* socket = m_server.nextPendingConnection()) {
        ++m_accepted;
        ++m_open;
        socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        QObject::connect(socket, &QTcpSocket::disconnected, &m_context, [this] { --m_open; });
        if (m_rawHandler) {
            socket->setParent(&m_connections);
            QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            m_rawHandler(*socket);
        } else {
            new HttpConnection(socket, m_handler, &m_connections);
        }
    }
}

} // namespace varnel::practice
