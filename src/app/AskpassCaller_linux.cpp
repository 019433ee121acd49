#include "app/AskpassCaller.h"

#include "base/Error.h"

#include <QFile>

#include <unistd.h>

namespace varnel {

namespace {

/// What /proc tells of a process in its line of figures.
struct ProcessFigures
{
    QString name;
    qint64 parent = 0;
    QString started;
};

QByteArray processFile(qint64 pid, const char* name)
{
    QFile file(QStringLiteral("/proc/%1/").arg(pid) + QLatin1String(name));
    if (!file.open(QIODevice::ReadOnly))
        throw Error(QStringLiteral("%1: %2").arg(file.fileName(), file.errorString()));
    return file.readAll();
}

ProcessFigures figuresOf(qint64 pid)
{
    // "4711 (the name) S 4710 …": the name may hold anything, so its end is the last parenthesis.
    const QByteArray line = processFile(pid, "stat");
    const qsizetype start = line.indexOf('(') + 1;
    const qsizetype end = line.lastIndexOf(')');
    const QList<QByteArray> figures = line.mid(end + 2).split(' ');
    if (start == 0 || end < start || figures.size() < 20)
        throw Error(QStringLiteral("/proc/%1/stat: unknown form").arg(pid));
    return {.name = QString::fromUtf8(line.mid(start, end - start)),
            .parent = figures[1].toLongLong(),
            .started = QString::fromLatin1(figures[19])};
}

bool hasSshAbove(qint64 pid)
{
    try {
        while (pid > 1) {
            const ProcessFigures figures = figuresOf(pid);
            if (figures.name == QLatin1String("ssh"))
                return true;
            pid = figures.parent;
        }
    } catch (const Error&) {
        return false; // it ended in the meantime, and whoever it had started belongs to nobody now
    }
    return false;
}

} // namespace

AskpassCaller askpassCaller()
{
    const qint64 pid = ::getppid();
    if (pid <= 0)
        return {};
    const ProcessFigures figures = figuresOf(pid);
    AskpassCaller caller{.pid = pid,
                         .started = figures.started,
                         .name = figures.name,
                         .arguments = {},
                         .hasSshAbove = hasSshAbove(figures.parent)};
    QList<QByteArray> words = processFile(pid, "cmdline").split('\0');
    words.removeLast(); // behind the last NUL
    for (const QByteArray& word : words.mid(1))
        caller.arguments.append(QString::fromUtf8(word));
    return caller;
}

} // namespace varnel
