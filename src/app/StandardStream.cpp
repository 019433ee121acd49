#include "app/StandardStream.h"

#include "base/Error.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace varnel {

QString neutraliseControls(const QString& text)
{
    QString shown;
    shown.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t unit = text.at(i).unicode();
        if (unit == u'\r' && i + 1 < text.size() && text.at(i + 1) == QLatin1Char('\n'))
            continue;
        if (unit == u'\n' || unit == u'\t')
            shown += QChar(unit);
        else if (unit < 0x20)
            shown += QChar(0x2400 + unit);
        else if (unit == 0x7f)
            shown += QChar(0x2421);
        else if ((unit >= 0x80 && unit < 0xa0) || (unit >= 0x202a && unit <= 0x202e) ||
                 (unit >= 0x2066 && unit <= 0x2069))
            shown += QChar(QChar::ReplacementCharacter);
        else
            shown += QChar(unit);
    }
    return shown;
}

void occupyClosedStreams()
{
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        // A new descriptor gets the lowest free number, which is this one.
        if (fcntl(descriptor, F_GETFD) == -1 && errno == EBADF)
            static_cast<void>(open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY));
    }
}

namespace {

/// The reader has gone: end as every tool in a pipeline does.
[[noreturn]] void endByBrokenPipe()
{
    std::signal(SIGPIPE, SIG_DFL);
    // Whoever started the program may have blocked it; raised, it would only wait then.
    sigset_t broken = {};
    sigemptyset(&broken);
    sigaddset(&broken, SIGPIPE);
    pthread_sigmask(SIG_UNBLOCK, &broken, nullptr);
    std::raise(SIGPIPE);
    _exit(128 + SIGPIPE);
}

} // namespace

StandardStream::StandardStream(int descriptor)
    : m_descriptor(descriptor)
    , m_isTerminal(isatty(descriptor) == 1)
{}

void StandardStream::write(const QString& text) const
{
    writeBytes((m_isTerminal ? neutraliseControls(text) : text).toUtf8());
}

void StandardStream::writeBytes(const QByteArray& bytes) const
{
    for (qsizetype written = 0; written < bytes.size();) {
        const ssize_t count = ::write(m_descriptor, bytes.constData() + written,
                                      static_cast<std::size_t>(bytes.size() - written));
        if (count >= 0) {
            written += count;
        } else if (errno == EAGAIN) {
            // Somebody else made the pipe non-blocking.
            pollfd waiting{m_descriptor, POLLOUT, 0};
            poll(&waiting, 1, -1);
        } else if (errno == EPIPE) {
            endByBrokenPipe();
        } else if (errno != EINTR) {
            throw Error(QStringLiteral("The output could not be written: %1.")
                            .arg(QString::fromLocal8Bit(std::strerror(errno))));
        }
    }
}

} // namespace varnel
