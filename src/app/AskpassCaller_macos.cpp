// Never built here: written after Apple's documentation, still to be tried on macOS.
#include "app/AskpassCaller.h"

#include "base/Error.h"

#include <QByteArray>

#include <cstring>
#include <libproc.h>
#include <sys/sysctl.h>
#include <unistd.h>

namespace varnel {

namespace {

proc_bsdinfo informationOf(int pid)
{
    proc_bsdinfo information{};
    if (::proc_pidinfo(pid, PROC_PIDTBSDINFO, 0, &information, sizeof information) != sizeof information)
        throw Error(QStringLiteral("The process %1 cannot be looked at.").arg(pid));
    return information;
}

QString nameOf(const proc_bsdinfo& information)
{
    return QString::fromUtf8(information.pbi_comm);
}

/// The arguments behind the program's name: the kernel hands out their count, the program's path, NULs, and
/// then the words, each ended by a NUL.
QStringList argumentsOf(int pid)
{
    int key[] = {CTL_KERN, KERN_PROCARGS2, pid};
    size_t size = 0;
    ::sysctl(key, 3, nullptr, &size, nullptr, 0);
    QByteArray block(static_cast<qsizetype>(size), '\0');
    int count = 0;
    if (size < sizeof count || ::sysctl(key, 3, block.data(), &size, nullptr, 0) != 0)
        throw Error(QStringLiteral("The arguments of the process %1 cannot be read.").arg(pid));
    block.resize(static_cast<qsizetype>(size));
    std::memcpy(&count, block.constData(), sizeof count);
    qsizetype at = block.indexOf('\0', sizeof count);
    while (at >= 0 && at < block.size() && block[at] == '\0')
        ++at;
    QStringList words;
    for (; count > 0 && at >= 0 && at < block.size(); --count) {
        const QByteArray word(block.constData() + at);
        words.append(QString::fromUtf8(word));
        at += word.size() + 1;
    }
    return words.mid(1);
}

bool hasSshAbove(int pid)
{
    try {
        while (pid > 1) {
            const proc_bsdinfo information = informationOf(pid);
            if (nameOf(information) == QLatin1String("ssh"))
                return true;
            pid = static_cast<int>(information.pbi_ppid);
        }
    } catch (const Error&) {
        return false; // it ended in the meantime, and whoever it had started belongs to nobody now
    }
    return false;
}

} // namespace

AskpassCaller askpassCaller()
{
    const int pid = ::getppid();
    if (pid <= 0)
        return {};
    const proc_bsdinfo information = informationOf(pid);
    return {.pid = pid,
            .started = QString::number(information.pbi_start_tvsec * 1000000 + information.pbi_start_tvusec),
            .name = nameOf(information),
            .arguments = argumentsOf(pid),
            .hasSshAbove = hasSshAbove(static_cast<int>(information.pbi_ppid))};
}

} // namespace varnel
