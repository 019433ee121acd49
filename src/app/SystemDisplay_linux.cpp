#include "app/SystemDisplay.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace varnel {

namespace {

/// Whether somebody listens there. What cannot be told at once counts as there; then Qt finds out.
bool answers(const sockaddr* address, socklen_t size)
{
    const int made = socket(address->sa_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (made < 0)
        return errno != EAFNOSUPPORT;
    int problem = connect(made, address, size) == 0 ? 0 : errno;
    if (problem == EINPROGRESS) {
        // This computer has refused the connection by now if there is nobody.
        pollfd waiting{made, POLLOUT, 0};
        socklen_t length = sizeof problem;
        if (poll(&waiting, 1, 0) != 1 || getsockopt(made, SOL_SOCKET, SO_ERROR, &problem, &length) != 0)
            problem = 0;
    }
    close(made);
    return problem == 0 || problem == EAGAIN; // many wait to be let in
}

/// @param name a path, or a NUL and a name that is no file's.
bool socketAnswers(const QByteArray& name)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const auto length = static_cast<std::size_t>(name.size());
    if (length >= sizeof(address.sun_path))
        return false;
    std::memcpy(&address.sun_path[0], name.constData(), length);
    return answers(reinterpret_cast<const sockaddr*>(&address),
                   static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + length));
}

bool waylandAnswers()
{
    if (!qEnvironmentVariableIsEmpty("WAYLAND_SOCKET"))
        return true; // a connection that is made already
    const QByteArray name = qgetenv("WAYLAND_DISPLAY");
    return !name.isEmpty() &&
           socketAnswers(name.startsWith('/') ? name : qgetenv("XDG_RUNTIME_DIR") + '/' + name);
}

/// Whether a display of this computer is reached through its network, as those that ssh forwards are.
bool portAnswers(int number)
{
    constexpr int firstPort = 6000;
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<uint16_t>(firstPort + number));
    sockaddr_in6 address6 = {};
    address6.sin6_family = AF_INET6;
    address6.sin6_addr = in6addr_loopback;
    address6.sin6_port = address.sin_port;
    return answers(reinterpret_cast<const sockaddr*>(&address), sizeof address) ||
           answers(reinterpret_cast<const sockaddr*>(&address6), sizeof address6);
}

/// Reads "[host]:number[.screen]". What is written in another way, or is on another computer, counts as
/// there: looking for it could take long.
bool x11Answers()
{
    const QByteArray name = qgetenv("DISPLAY");
    if (name.contains('/'))
        return true;
    const qsizetype colon = name.lastIndexOf(':');
    if (colon < 0)
        return false;
    const QByteArray host = name.first(colon);
    const QByteArray digits = name.sliced(colon + 1).split('.').constFirst();
    bool isNumber = false;
    const int number = digits.toInt(&isNumber);
    constexpr int lastNumber = 65535 - 6000;
    if (!isNumber || number < 0 || number > lastNumber)
        return false;
    if (host == "localhost")
        return portAnswers(number);
    if (!host.isEmpty() && host != "unix")
        return true;
    const QByteArray path = "/tmp/.X11-unix/X" + QByteArray::number(number);
    return socketAnswers('\0' + path) || socketAnswers(path) || portAnswers(number);
}

} // namespace

bool hasDisplay()
{
    // A platform that somebody named needs no server: "offscreen", for one.
    return !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") || waylandAnswers() || x11Answers();
}

QString windowModulePath()
{
    const QFileInfo program(QFile::symLinkTarget(QStringLiteral("/proc/self/exe")));
    return program.path() + QStringLiteral("/../lib/varnel/libvarnel_window");
}

} // namespace varnel
