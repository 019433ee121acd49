#pragma once

#include "base/Error.h"
#include "store/FileDescriptor.h"

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>

namespace varnel {

/// What tells one state of a file from another without reading it.
struct FileStamp
{
    quint64 inode = 0;
    /// In bytes.
    qint64 size = 0;
    /// Nanoseconds since 1970, by the clock of whoever wrote it.
    qint64 modified = 0;

    bool operator==(const FileStamp&) const = default;
};

/// What is at a path now; nothing if there is nothing. Links are followed.
std::optional<FileStamp> stampOf(const QString& file);
FileStamp stampOf(int descriptor);

/// "<file> <what>: <the system's reason>", for example "… could not be opened: Permission denied".
Error fileError(const QString& file, const QString& what, int code);

/// Opens a regular file for reading. Never waits: what is a folder, a pipe or a device is refused. Throws
/// Error.
FileDescriptor openRegularFile(const QString& file);

/// Reads up to `size` bytes; fewer only at the end. Throws Error that names `file`.
std::size_t readInto(int descriptor, char* bytes, std::size_t size, const QString& file);

/// The whole of a file, with room behind it that a JSON parser may read.
struct FileContents
{
    std::unique_ptr<char[]> bytes;
    std::size_t size = 0;
    FileStamp stamp;

    std::string_view text() const { return {bytes.get(), size}; }
};

/// Reads a regular file. Nothing if there is none; throws Error for anything else, also when it is larger
/// than `limit` bytes.
std::optional<FileContents> readFile(const QString& file, qint64 limit);

/// The path that a link to a file leads to; otherwise the path itself.
QString withoutLink(const QString& file);

/// The first bytes of a regular file, at most `limit`, and how many there are in all. Throws Error.
struct FileBeginning
{
    QByteArray bytes;
    qint64 size = 0;
};
FileBeginning readBeginning(const QString& file, qint64 limit);

/// Waits until the names in a folder are on the disk. Throws Error.
void syncFolder(const QString& folder);

/// Makes a folder and those above it unless they are there; new ones are for the user only. Throws Error.
void makeFolder(const QString& folder);

/// Renames a file, folder or link to "<name>.unreadable-<stamp>.<suffix>" in its folder, so that a new file
/// can take its place, and yields the new path. Throws Error when that fails; it is then where it was.
QString setAsideUnreadable(const QString& file);

/// Keeps the present contents of a file also under "<name>.changed-<stamp>.<suffix>" and yields that path.
/// Throws Error.
QString keepAside(const QString& file);

} // namespace varnel
