#include "store/InstanceChannel.h"

#include "store/RuntimeFolder.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

namespace varnel {

namespace {

const QByteArray raiseWord = QByteArrayLiteral("raise ");
constexpr qsizetype longestToken = 1024;

QString socketPath(const QString& dataFolder)
{
    return runtimePath(dataFolder, QStringLiteral(".socket"));
}

/// One message is one datagram, so there are no connections that could stay half open.
FileDescriptor makeSocket()
{
    FileDescriptor made(::socket(AF_UNIX, SOCK_DGRAM, 0));
    if (made.isOpen()) {
        ::fcntl(made.get(), F_SETFD, FD_CLOEXEC);
        ::fcntl(made.get(), F_SETFL, O_NONBLOCK);
    }
    return made;
}

sockaddr_un addressOf(const QString& path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const QByteArray name = QFile::encodeName(path);
    // The runtime folder is chosen so that it fits.
    std::memcpy(&address.sun_path[0], name.constData(),
                std::min(static_cast<std::size_t>(name.size()), sizeof(address.sun_path) - 1));
    return address;
}

bool isTokenCharacter(char c)
{
    return c > ' ' && c < 0x7f;
}

} // namespace

InstanceChannel::InstanceChannel(const QString& dataFolder, Raise raise)
    : m_path(socketPath(dataFolder))
    , m_raise(std::move(raise))
    , m_socket(makeSocket())
{
    // What stands there was left by a process that is gone: who is here holds the folder's lock.
    ::unlink(QFile::encodeName(m_path).constData());
    const sockaddr_un address = addressOf(m_path);
    if (!m_socket.isOpen() ||
        ::bind(m_socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0)
        throw fileError(m_path, QStringLiteral("could not be made"), errno);
    m_notifier = std::make_unique<QSocketNotifier>(m_socket.get(), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] { receive(); });
}

InstanceChannel::~InstanceChannel()
{
    m_notifier.reset();
    ::unlink(QFile::encodeName(m_path).constData());
}

void InstanceChannel::receive()
{
    std::array<char, longestToken + 16> buffer{};
    const ssize_t count = ::recv(m_socket.get(), buffer.data(), buffer.size(), 0);
    const QByteArray message(buffer.data(), std::max<ssize_t>(count, 0));
    if (!message.startsWith(raiseWord))
        return;
    const QByteArray token = message.mid(raiseWord.size());
    m_raise(std::all_of(token.begin(), token.end(), isTokenCharacter) ? token : QByteArray());
}

bool InstanceChannel::askToRaise(const QString& dataFolder, const QByteArray& token)
{
    const FileDescriptor socket = makeSocket();
    const sockaddr_un address = addressOf(socketPath(dataFolder));
    const QByteArray message = raiseWord + (token.size() <= longestToken ? token : QByteArray());
    return socket.isOpen() &&
           ::sendto(socket.get(), message.constData(), static_cast<std::size_t>(message.size()), 0,
                    reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == message.size();
}

InstanceStart takeOrRaise(const QString& dataFolder, const QByteArray& token,
                          std::chrono::milliseconds patience)
{
    constexpr std::chrono::milliseconds pause(50);
    const auto end = std::chrono::steady_clock::now() + patience;
    for (;;) {
        if (std::optional<DataFolderLock> lock = DataFolderLock::take(dataFolder))
            return {.lock = std::move(lock), .other = OtherInstance::None};
        if (InstanceChannel::askToRaise(dataFolder, token))
            return {.lock = std::nullopt, .other = OtherInstance::Raised};
        if (std::chrono::steady_clock::now() >= end)
            return {.lock = std::nullopt, .other = OtherInstance::Silent};
        std::this_thread::sleep_for(pause);
    }
}

} // namespace varnel
