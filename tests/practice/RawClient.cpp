#include "practice/RawClient.h"

#include "support/Await.h"

#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace varnel::test {

namespace {

/// How many bytes of `text` the reply takes; sets `complete` if its end is among them.
qsizetype readChunks(QByteArrayView text, RawReply& reply)
{
    const QByteArray bytes = text.toByteArray();
    qsizetype at = 0;
    while (!reply.complete) {
        const qsizetype line = bytes.indexOf("\r\n", at);
        const qsizetype size = line < 0 ? 0 : bytes.sliced(at, line - at).toLongLong(nullptr, 16);
        if (line < 0 || bytes.size() < line + 2 + size + 2)
            break;
        at = line + 2 + size + 2;
        reply.body += bytes.sliced(line + 2, size);
        reply.complete = size == 0;
        if (!reply.complete)
            reply.chunks.push_back(size);
    }
    return at;
}

/// Reads a reply from the front of `text`; returns how many bytes it takes.
qsizetype readReply(const QByteArray& text, RawReply& reply)
{
    const qsizetype end = text.indexOf("\r\n\r\n");
    if (end < 0)
        return 0;
    const QList<QByteArray> lines = text.first(end).split('\n');
    reply.status = lines.first().mid(9, 3).toInt();
    for (const QByteArray& line : lines.sliced(1))
        reply.headers.insert(line.left(line.indexOf(':')).toLower(),
                             line.mid(line.indexOf(':') + 1).trimmed());
    const qsizetype start = end + 4;
    if (reply.headers.contains("transfer-encoding"))
        return start + readChunks(QByteArrayView(text).sliced(start), reply);
    const qsizetype length = reply.headers.value("content-length").toLongLong();
    reply.body = text.mid(start, length);
    reply.complete = reply.body.size() == length;
    return start + reply.body.size();
}

} // namespace

QList<QByteArray> RawReply::lines() const
{
    QList<QByteArray> all = body.split('\n');
    all.removeAll(QByteArray());
    return all;
}

RawClient::RawClient(quint16 port)
    : m_socket(::socket(AF_INET, SOCK_STREAM, 0))
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        qFatal("no connection to port %d", port);
}

void RawClient::send(const QByteArray& bytes) const
{
    if (::send(m_socket, bytes.constData(), static_cast<std::size_t>(bytes.size()), MSG_NOSIGNAL) !=
        bytes.size())
        qFatal("the request was not sent");
}

void RawClient::request(const QByteArray& method, const QByteArray& target, const QByteArray& body,
                        const QByteArray& headers) const
{
    send(method + ' ' + target + " HTTP/1.1\r\nHost: practice\r\n" + headers +
         "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body);
}

RawReply RawClient::reply()
{
    RawReply reply;
    qsizetype size = 0;
    qsizetype seen = -1;
    waitUntil([&] {
        if (received().size() != seen) {
            seen = m_received.size();
            reply = {};
            size = readReply(m_received, reply);
        }
        return reply.complete || m_end != End::Open;
    });
    m_received.remove(0, size);
    return reply;
}

RawClient::End RawClient::waitForEnd()
{
    waitUntil([this] {
        received();
        return m_end != End::Open;
    });
    return m_end;
}

const QByteArray& RawClient::received()
{
    std::array<char, 64 * 1024> buffer{};
    while (m_end == End::Open) {
        const ssize_t count = ::recv(m_socket, buffer.data(), buffer.size(), MSG_DONTWAIT);
        if (count > 0)
            m_received.append(buffer.data(), count);
        else if (count == 0)
            m_end = End::Closed;
        else if (errno == ECONNRESET)
            m_end = End::Reset;
        else
            break;
    }
    return m_received;
}

void RawClient::leave()
{
    if (m_socket >= 0)
        ::close(std::exchange(m_socket, -1));
}

} // namespace varnel::test
