#pragma once

#include <QByteArray>
#include <QHash>

#include <vector>

namespace varnel::test {

/// A reply as far as it has arrived.
struct RawReply
{
    int status = 0;
    /// The names in lower case.
    QHash<QByteArray, QByteArray> headers;
    /// The body without its chunks.
    QByteArray body;
    /// The sizes of its chunks, empty for a body with a length.
    std::vector<qsizetype> chunks;
    /// Whether the body's end has arrived.
    bool complete = false;

    QList<QByteArray> lines() const;
};

/// A client that sees a connection as the system does: every byte, and whether it ended by closing or by a
/// reset.
class RawClient
{
public:
    enum class End {
        Open,
        Closed,
        Reset,
    };

    explicit RawClient(quint16 port);
    RawClient(const RawClient&) = delete;
    RawClient& operator=(const RawClient&) = delete;
    RawClient(RawClient&&) = delete;
    RawClient& operator=(RawClient&&) = delete;
    ~RawClient() { leave(); }

    void send(const QByteArray& bytes) const;
    /// A request with a body of that length.
    void request(const QByteArray& method, const QByteArray& target, const QByteArray& body = {},
                 const QByteArray& headers = {}) const;
    /// Turns the event loop until a whole reply is there or the connection has ended; the reply is taken
    /// away.
    RawReply reply();
    /// Turns the event loop until the connection has ended or a limit has passed.
    End waitForEnd();
    /// Everything that has arrived and was not taken.
    const QByteArray& received();
    void leave();

private:
    int m_socket = -1;
    QByteArray m_received;
    End m_end = End::Open;
};

} // namespace varnel::test
