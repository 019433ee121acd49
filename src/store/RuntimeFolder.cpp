#include "store/RuntimeFolder.h"

#include "store/FileAccess.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace varnel {

namespace {

/// The path of a local socket must fit into 104 bytes on some systems; this much is for its name.
constexpr qsizetype longestFolder = 103 - 40;

QString chosenFolder()
{
    const QString offered = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (QDir::isAbsolutePath(offered) && QFileInfo(offered).isDir()) {
        const QString folder = QDir::cleanPath(offered) + QStringLiteral("/varnel");
        if (QFile::encodeName(folder).size() <= longestFolder)
            return folder;
    }
    const QString temporary = QStringLiteral("%1/varnel-%2").arg(QDir::tempPath()).arg(::getuid());
    // A temporary folder with a long path may still hold a lock, and the socket goes where it fits.
    return QFile::encodeName(temporary).size() <= longestFolder
               ? temporary
               : QStringLiteral("/tmp/varnel-%1").arg(::getuid());
}

} // namespace

QString runtimeFolder()
{
    const QString folder = chosenFolder();
    const QByteArray path = QFile::encodeName(folder);
    if (::mkdir(path.constData(), S_IRWXU) != 0 && errno != EEXIST)
        throw fileError(folder, QStringLiteral("could not be made"), errno);
    // In a folder that everybody may write to, somebody else may have been faster.
    struct stat status = {};
    if (::lstat(path.constData(), &status) != 0 || !S_ISDIR(status.st_mode) || status.st_uid != ::getuid())
        throw Error(QStringLiteral("%1 is not a folder of yours.").arg(folder));
    if ((status.st_mode & 0777U) != S_IRWXU && ::chmod(path.constData(), S_IRWXU) != 0)
        throw fileError(folder, QStringLiteral("is open to others"), errno);
    return folder;
}

QString runtimePath(const QString& dataFolder, const QString& suffix)
{
    const QString canonical = QFileInfo(dataFolder).canonicalFilePath();
    const QString path = canonical.isEmpty() ? QDir::cleanPath(dataFolder) : canonical;
    const QByteArray digest =
        QCryptographicHash::hash(QFile::encodeName(path), QCryptographicHash::Sha256).toHex().left(16);
    return runtimeFolder() + QStringLiteral("/data-") + QString::fromLatin1(digest) + suffix;
}

} // namespace varnel
