#include "tunnel/LoopbackPort.h"

#include <QtGlobal>

#include <cerrno>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace varnel {

namespace {

/// How long to wait for an answer; a program that hangs lets its connections queue up until one gets none.
constexpr int answerLimit = 500; // ms

class Socket
{
public:
    Socket()
        : m_descriptor(::socket(AF_INET, SOCK_STREAM, 0))
    {
        if (!isOpen())
            return;
        ::fcntl(m_descriptor, F_SETFD, FD_CLOEXEC);
        ::fcntl(m_descriptor, F_SETFL, O_NONBLOCK);
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    Socket(Socket&&) = delete;
    Socket& operator=(Socket&&) = delete;
    ~Socket()
    {
        if (isOpen())
            ::close(m_descriptor);
    }

    /// Whether the system had one to give.
    bool isOpen() const { return m_descriptor >= 0; }
    int descriptor() const { return m_descriptor; }

private:
    int m_descriptor;
};

sockaddr_in loopback(int port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<quint16>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

/// A connection attempt from the very port it goes to may meet itself halfway; that is nobody answering.
bool isConnectedToItself(const Socket& socket, int port)
{
    sockaddr_in own{};
    socklen_t length = sizeof own;
    return ::getsockname(socket.descriptor(), reinterpret_cast<sockaddr*>(&own), &length) == 0 &&
           own.sin_port == htons(static_cast<quint16>(port));
}

bool isAnswered(int port)
{
    const Socket socket;
    if (!socket.isOpen())
        return false;
    const sockaddr_in address = loopback(port);
    if (::connect(socket.descriptor(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        return !isConnectedToItself(socket, port);
    if (errno != EINPROGRESS)
        return false;
    pollfd waiting{.fd = socket.descriptor(), .events = POLLOUT, .revents = 0};
    if (::poll(&waiting, 1, answerLimit) == 0)
        return true; // held by somebody who is too busy to answer
    int error = 0;
    socklen_t length = sizeof error;
    ::getsockopt(socket.descriptor(), SOL_SOCKET, SO_ERROR, &error, &length);
    return error == 0 && !isConnectedToItself(socket, port);
}

bool canListen(int port)
{
    const Socket socket;
    if (!socket.isOpen())
        return false;
    // As ssh does it: what is left of closed connections is not in the way.
    const int yes = 1;
    ::setsockopt(socket.descriptor(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    const sockaddr_in address = loopback(port);
    return ::bind(socket.descriptor(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
           ::listen(socket.descriptor(), 1) == 0;
}

} // namespace

bool isLoopbackPortFree(int port)
{
    return !isAnswered(port) && canListen(port);
}

} // namespace varnel
