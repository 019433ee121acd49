#include "store/InstanceChannel.h"

#include "store/RuntimeFolder.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

namespace varnel {

namespace {

const QByteArray raiseWord = QByteArrayLiteral("raise ");
constexpr qsizetype longestToken = 1024;
constexpr char answer = '1';

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

/// What a message is sent and received with: its bytes, and an open file that goes along.
class Envelope
{
public:
    Envelope(char* bytes, std::size_t size)
        : m_bytes{.iov_base = bytes, .iov_len = size}
    {
        m_header.msg_iov = &m_bytes;
        m_header.msg_iovlen = 1;
        m_header.msg_control = m_control.data();
        m_header.msg_controllen = m_control.size();
    }

    msghdr* header() { return &m_header; }
    /// @param address outlives the envelope.
    void address(const sockaddr_un& address)
    {
        m_header.msg_name = const_cast<sockaddr_un*>(&address);
        m_header.msg_namelen = sizeof(address);
    }
    void put(const FileDescriptor& file)
    {
        const int number = file.get();
        cmsghdr* const control = CMSG_FIRSTHDR(&m_header);
        control->cmsg_level = SOL_SOCKET;
        control->cmsg_type = SCM_RIGHTS;
        control->cmsg_len = CMSG_LEN(sizeof(number));
        std::memcpy(CMSG_DATA(control), &number, sizeof(number));
    }
    /// What came along; none if nothing did.
    FileDescriptor takeDescriptor()
    {
        const cmsghdr* const control = CMSG_FIRSTHDR(&m_header);
        if (control == nullptr || control->cmsg_level != SOL_SOCKET || control->cmsg_type != SCM_RIGHTS)
            return {};
        int number = -1;
        std::memcpy(&number, CMSG_DATA(control), sizeof(number));
        ::fcntl(number, F_SETFD, FD_CLOEXEC);
        return FileDescriptor(number);
    }

private:
    iovec m_bytes;
    msghdr m_header{};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> m_control{};
};

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
    Envelope envelope(buffer.data(), buffer.size());
    const ssize_t count = ::recvmsg(m_socket.get(), envelope.header(), 0);
    const FileDescriptor asker = envelope.takeDescriptor();
    const QByteArray message(buffer.data(), std::max<ssize_t>(count, 0));
    if (!message.startsWith(raiseWord))
        return;
    const QByteArray token = message.mid(raiseWord.size());
    m_raise(std::all_of(token.begin(), token.end(), isTokenCharacter) ? token : QByteArray());
    // Who asked may have given up by now.
    if (asker.isOpen())
        static_cast<void>(::write(asker.get(), &answer, sizeof(answer)) == 1);
}

bool InstanceChannel::askToRaise(const QString& dataFolder, const QByteArray& token,
                                 std::chrono::milliseconds patience)
{
    const FileDescriptor socket = makeSocket();
    const sockaddr_un address = addressOf(socketPath(dataFolder));
    QByteArray message = raiseWord + (token.size() <= longestToken ? token : QByteArray());
    std::array<int, 2> ends{-1, -1};
    if (!socket.isOpen() || ::pipe(ends.data()) != 0)
        return false;
    const FileDescriptor answered(ends[0]);
    {
        // The answer's other end travels along. It is closed by whoever reads the message, and by the system
        // when nobody does any more, so that a message that is lost ends the waiting too.
        const FileDescriptor handedOver(ends[1]);
        Envelope envelope(message.data(), static_cast<std::size_t>(message.size()));
        envelope.address(address);
        envelope.put(handedOver);
        if (::sendmsg(socket.get(), envelope.header(), 0) != message.size())
            return false;
    }
    pollfd waiting{.fd = answered.get(), .events = POLLIN, .revents = 0};
    char byte = 0;
    return ::poll(&waiting, 1, static_cast<int>(patience.count())) == 1 &&
           ::read(answered.get(), &byte, sizeof(byte)) == 1;
}

InstanceStart takeOrRaise(const QString& dataFolder, const QByteArray& token,
                          std::chrono::milliseconds patience)
{
    constexpr std::chrono::milliseconds pause(50);
    const auto end = std::chrono::steady_clock::now() + patience;
    for (;;) {
        if (std::optional<DataFolderLock> lock = DataFolderLock::take(dataFolder))
            return {.lock = std::move(lock), .other = OtherInstance::None};
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            std::max(end - std::chrono::steady_clock::now(), std::chrono::steady_clock::duration::zero()));
        if (InstanceChannel::askToRaise(dataFolder, token, left))
            return {.lock = std::nullopt, .other = OtherInstance::Raised};
        if (std::chrono::steady_clock::now() >= end)
            return {.lock = std::nullopt, .other = OtherInstance::Silent};
        std::this_thread::sleep_for(pause);
    }
}

} // namespace varnel
