#pragma once

#include "base/Error.h"
#include "store/FileDescriptor.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace varnel {

/// A file of a confined folder could not be read or written.
class ConfinedFolderError : public Error
{
public:
    enum class Kind {
        Link,       ///< a symbolic link stands in the way, which is never followed
        TooLong,    ///< the file is larger than asked for
        Unreadable, ///< a regular file that cannot be read
        System,     ///< what the system said, or no regular file stands there
    };

    ConfinedFolderError(Kind kind, QString message)
        : Error(std::move(message))
        , m_kind(kind)
    {}

    Kind kind() const noexcept { return m_kind; }

private:
    Kind m_kind;
};

/// A folder whose files are read and replaced without ever leaving it, whatever other programs do to it in
/// the meantime: it is held open, and nothing below it is reached through a symbolic link.
///
/// Paths are relative, names joined by "/", none of them empty, "." or ".."; see confinedPath().
class ConfinedFolder
{
public:
    /// How the folder of a file is found.
    enum class Lookup {
        WholePath,  ///< in one system call where there is one for it
        NameByName, ///< one folder after the other, as on every system
    };

    /// Opens a folder that exists; links on the way to it are followed. Throws ConfinedFolderError.
    explicit ConfinedFolder(const QString& path, Lookup lookup = Lookup::WholePath);

    /// The bytes of a regular file, nothing when there is none. Throws ConfinedFolderError, also when the
    /// file has more than `limit` bytes.
    std::optional<QByteArray> read(const QString& relativePath, qint64 limit) const;

    /// Writes a file that appears whole or not at all, in the place of the one that is there. Folders that
    /// are missing are made. The permission bits of an earlier file are kept, but for set-uid and set-gid.
    /// Throws ConfinedFolderError.
    void replace(const QString& relativePath, const QByteArray& bytes) const;

private:
    enum class Missing { Fails, IsMade };

    FileDescriptor openParent(const QByteArray& path, Missing missing) const;

    FileDescriptor m_folder;
    Lookup m_lookup;
};

} // namespace varnel
