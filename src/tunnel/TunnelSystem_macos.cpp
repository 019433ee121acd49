// Never built here: written after Apple's documentation, still to be tried on macOS.
#include "tunnel/TunnelSystem.h"

#include "base/ProcessRunner.h"

#include <QByteArray>
#include <QFileInfo>

#include <cstdint>
#include <mach-o/dyld.h>

namespace varnel {

namespace {

Task<bool> isListed(const ProcessRunner& runner, ProcessRequest request, QByteArray port,
                    std::stop_token stop)
{
    const ProcessOutput output = co_await runner.run(std::move(request), std::move(stop));
    if (output.end == ProcessOutput::End::TimedOut)
        co_return false;
    const QList<QByteArray> lines = output.standardOutput.split('\n');
    co_return lines.contains("n127.0.0.1:" + port) || lines.contains("n*:" + port);
}

} // namespace

QString ownProgramPath()
{
    uint32_t size = 0;
    _NSGetExecutablePath(nullptr, &size);
    QByteArray path(static_cast<qsizetype>(size), '\0');
    if (_NSGetExecutablePath(path.data(), &size) != 0)
        return {};
    const QFileInfo program(QString::fromUtf8(path.constData()));
    return program.isExecutable() ? program.canonicalFilePath() : QString();
}

QString lsofPath()
{
    return QStringLiteral("/usr/sbin/lsof");
}

QString psPath()
{
    return QStringLiteral("/bin/ps");
}

Task<bool> listensOnLoopback(const ProcessRunner& runner, Worker&, qint64 pid, int port, std::stop_token stop)
{
    const QString number = QString::number(port);
    return isListed(runner,
                    {.program = lsofPath(),
                     .arguments = {QStringLiteral("-nP"), QStringLiteral("-a"), QStringLiteral("-p"),
                                   QString::number(pid), QStringLiteral("-i4TCP:") + number,
                                   QStringLiteral("-sTCP:LISTEN"), QStringLiteral("-Fn")},
                     .environment = {}},
                    number.toLatin1(), std::move(stop));
}

} // namespace varnel
