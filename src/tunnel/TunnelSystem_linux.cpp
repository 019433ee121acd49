#include "tunnel/TunnelSystem.h"

#include "base/Worker.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <array>
#include <netinet/in.h>
#include <unistd.h>

namespace varnel {

namespace {

/// How an address and port stand in the kernel's table: the address as this machine's number of the bytes on
/// the wire.
QByteArray tableAddress(quint32 address, int port)
{
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%08X:%04X", htonl(address), static_cast<unsigned>(port));
    return text.data();
}

/// The numbers of the sockets that listen on the port, in the network that the process sees.
QList<QByteArray> listeningSockets(const QString& process, int port)
{
    // Read whole: a file of /proc says nothing of its size.
    QFile table(process + QStringLiteral("/net/tcp"));
    if (!table.open(QIODevice::ReadOnly))
        return {};
    const QByteArray loopback = tableAddress(INADDR_LOOPBACK, port);
    const QByteArray any = tableAddress(INADDR_ANY, port);
    QList<QByteArray> sockets;
    for (const QByteArray& line : table.readAll().split('\n')) {
        // sl, local address, remote address, state, queues, timer, retransmissions, user, time-out, socket
        const QList<QByteArray> fields = line.simplified().split(' ');
        if (fields.size() > 9 && (fields[1] == loopback || fields[1] == any) && fields[3] == "0A")
            sockets.append(fields[9]);
    }
    return sockets;
}

bool listens(qint64 pid, int port)
{
    const QString process = QStringLiteral("/proc/%1").arg(pid);
    const QList<QByteArray> sockets = listeningSockets(process, port);
    if (sockets.isEmpty())
        return false;
    const QDir descriptors(process + QStringLiteral("/fd"));
    for (const QString& name :
         descriptors.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)) {
        std::array<char, 64> target{};
        const QByteArray link = QFile::encodeName(descriptors.filePath(name));
        const ssize_t length = ::readlink(link.constData(), target.data(), target.size());
        const QByteArrayView text(target.data(), std::max<ssize_t>(length, 0));
        if (text.startsWith("socket:[") && text.endsWith(']') &&
            sockets.contains(text.sliced(8).chopped(1).toByteArray()))
            return true;
    }
    return false;
}

} // namespace

QString ownProgramPath()
{
    const QFileInfo program(QFile::symLinkTarget(QStringLiteral("/proc/self/exe")));
    return program.isExecutable() ? program.absoluteFilePath() : QString();
}

QString lsofPath()
{
    return QStringLiteral("/usr/bin/lsof");
}

QString psPath()
{
    return QStringLiteral("/bin/ps");
}

Task<bool> listensOnLoopback(const ProcessRunner&, Worker& worker, qint64 pid, int port, std::stop_token stop)
{
    return worker.run([pid, port](const std::stop_token&) { return listens(pid, port); }, std::move(stop));
}

} // namespace varnel
