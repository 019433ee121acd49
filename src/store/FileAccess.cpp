#include "store/FileAccess.h"

#include "base/Clock.h"
#include "base/JsonReader.h"
#include "store/FileCopy.h"
#include "store/FileSystem.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace varnel {

namespace {

FileStamp stampOfStatus(const struct stat& status)
{
    return {.inode = static_cast<quint64>(status.st_ino),
            .size = static_cast<qint64>(status.st_size),
            .modified = modificationTime(status)};
}

/// "<folder>/<name>.<word>-<time>.<suffix>", a path at which there is nothing yet.
QString pathAside(const QString& file, QLatin1String word)
{
    const QFileInfo info(file);
    const QString stamp = toIso8601(SystemClock().now()).replace(QLatin1Char(':'), QLatin1Char('-'));
    for (int copy = 1;; ++copy) {
        const QString number = copy > 1 ? QStringLiteral("-%1").arg(copy) : QString();
        QString path = QStringLiteral("%1/%2.%3-%4%5.%6")
                           .arg(info.path(), info.completeBaseName(), word, stamp, number, info.suffix());
        const QFileInfo there(path);
        if (!there.exists() && !there.isSymLink())
            return path;
    }
}

} // namespace

std::optional<FileStamp> stampOf(const QString& file)
{
    struct stat status = {};
    if (::stat(QFile::encodeName(file).constData(), &status) != 0)
        return std::nullopt;
    return stampOfStatus(status);
}

FileStamp stampOf(int descriptor)
{
    struct stat status = {};
    ::fstat(descriptor, &status);
    return stampOfStatus(status);
}

Error fileError(const QString& file, const QString& what, int code)
{
    return Error(QStringLiteral("%1 %2: %3").arg(file, what, qt_error_string(code)));
}

FileDescriptor openRegularFile(const QString& file)
{
    // Without O_NONBLOCK, opening a pipe waits until somebody writes into it.
    FileDescriptor opened(
        ::open(QFile::encodeName(file).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!opened.isOpen())
        throw fileError(file, QStringLiteral("could not be opened"), errno);
    struct stat status = {};
    if (::fstat(opened.get(), &status) != 0)
        throw fileError(file, QStringLiteral("could not be opened"), errno);
    if (S_ISDIR(status.st_mode))
        throw Error(QStringLiteral("%1 is a folder, not a file.").arg(file));
    if (!S_ISREG(status.st_mode))
        throw Error(QStringLiteral("%1 is not a regular file.").arg(file));
    return opened;
}

std::optional<FileContents> readFile(const QString& file, qint64 limit)
{
    const QFileInfo info(file);
    if (!info.exists() && !info.isSymLink())
        return std::nullopt;
    const FileDescriptor opened = openRegularFile(file);
    FileContents contents;
    contents.stamp = stampOf(opened.get());
    if (contents.stamp.size > limit)
        throw Error(QStringLiteral("%1 is larger than %2 MiB.").arg(file).arg(limit / 1024 / 1024));
    const auto size = static_cast<std::size_t>(contents.stamp.size);
    const auto padding = static_cast<std::size_t>(JsonParser::padding);
    contents.bytes = std::make_unique_for_overwrite<char[]>(size + padding);
    contents.size = readInto(opened.get(), contents.bytes.get(), size, file);
    std::fill_n(contents.bytes.get() + contents.size, padding, '\0');
    return contents;
}

QString withoutLink(const QString& file)
{
    const QFileInfo info(file);
    return info.isSymLink() && info.isFile() ? info.canonicalFilePath() : file;
}

std::size_t readInto(int descriptor, char* bytes, std::size_t size, const QString& file)
{
    std::size_t read = 0;
    while (read < size) {
        const ssize_t count = ::read(descriptor, bytes + read, size - read);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            throw fileError(file, QStringLiteral("could not be read"), errno);
        if (count == 0)
            break;
        read += static_cast<std::size_t>(count);
    }
    return read;
}

FileBeginning readBeginning(const QString& file, qint64 limit)
{
    const FileDescriptor opened = openRegularFile(file);
    const qint64 size = stampOf(opened.get()).size;
    FileBeginning beginning{.bytes = QByteArray(std::min(size, limit), Qt::Uninitialized), .size = size};
    const std::size_t read = readInto(opened.get(), beginning.bytes.data(),
                                      static_cast<std::size_t>(beginning.bytes.size()), file);
    beginning.bytes.truncate(static_cast<qsizetype>(read));
    return beginning;
}

void syncFolder(const QString& folder)
{
    const FileDescriptor opened(
        ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened.isOpen() || ::fsync(opened.get()) != 0) {
        // Some file systems that are mounted over a network cannot sync a folder and say so.
        if (errno != EINVAL && errno != ENOTSUP)
            throw fileError(folder, QStringLiteral("could not be saved"), errno);
    }
}

void makeFolder(const QString& folder)
{
    if (QFileInfo(folder).isDir())
        return;
    const QString above = QFileInfo(QDir::cleanPath(folder)).path();
    if (above != folder)
        makeFolder(above);
    if (::mkdir(QFile::encodeName(folder).constData(), S_IRWXU) != 0 && !QFileInfo(folder).isDir())
        throw fileError(folder, QStringLiteral("could not be made"), errno);
}

QString setAsideUnreadable(const QString& file)
{
    QString aside = pathAside(file, QLatin1String("unreadable"));
    // Unlike Qt's, this rename takes folders and links too, and never copies.
    std::error_code error;
    std::filesystem::rename(QFile::encodeName(file).toStdString(), QFile::encodeName(aside).toStdString(),
                            error);
    if (error)
        throw Error(QStringLiteral("%1 cannot be read and could not be renamed to %2: %3")
                        .arg(file, aside, QString::fromStdString(error.message())));
    return aside;
}

QString keepAside(const QString& file)
{
    QString aside = pathAside(file, QLatin1String("changed"));
    // A second name takes no room and no time; where the file system knows none, it is a copy.
    const QString source = withoutLink(file);
    if (::link(QFile::encodeName(source).constData(), QFile::encodeName(aside).constData()) != 0)
        copyFile(source, aside);
    return aside;
}

} // namespace varnel
