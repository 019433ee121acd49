#include "app/AskpassCaller.h"

#include "tunnel/SshCommandLine.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace varnel {

namespace {

constexpr qint64 answerLimit = 8;

/// Adds one to the number of answers that the file stands for, its length, and returns it; nothing is read
/// first, so that askpasses that run at the same time count right. -1 if it cannot be written.
qint64 countAnswer(const QString& file)
{
    const QByteArray name = QFile::encodeName(file);
    const int descriptor =
        ::open(name.constData(), O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (descriptor < 0)
        return -1;
    const bool isWritten = ::write(descriptor, "+", 1) == 1;
    // After an append, the position is where this answer ended, whoever else appends.
    const qint64 count = isWritten ? ::lseek(descriptor, 0, SEEK_CUR) : -1;
    ::close(descriptor);
    return count;
}

/// Removes the counts of those that have ended.
void removeOldCounts(const QDir& folder)
{
    for (const QString& name : folder.entryList({QStringLiteral("askpass-*")}, QDir::Files)) {
        const int pid = name.section(QLatin1Char('-'), 1, 1).toInt();
        if (pid > 0 && ::kill(pid, 0) != 0 && errno == ESRCH)
            QFile::remove(folder.filePath(name));
    }
}

} // namespace

QString userRuntimeFolder()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    return folder.isEmpty() ? QString() : folder + QStringLiteral("/varnel");
}

bool mayAnswer(const AskpassCaller& caller, const QString& folder)
{
    if (caller.name != QLatin1String("ssh"))
        return true;
    if (caller.hasSshAbove || parseSshCommandLine(caller.arguments).carriesConnection)
        return false;
    if (folder.isEmpty())
        return false;
    QDir().mkpath(folder);
    const qint64 count =
        countAnswer(folder + QStringLiteral("/askpass-%1-%2").arg(caller.pid).arg(caller.started));
    if (count == 1)
        removeOldCounts(QDir(folder));
    return count >= 1 && count <= answerLimit;
}

} // namespace varnel
