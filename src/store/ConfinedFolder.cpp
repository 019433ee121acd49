#include "store/ConfinedFolder.h"

#include "store/WholePathOpen.h"

#include <QFile>
#include <QRandomGenerator>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>

#include <system_error>

namespace varnel {

namespace {

constexpr mode_t permissionBits = 0777;

/// What a system call said, for the file it was about.
ConfinedFolderError failure(const char* action, const QByteArray& path, int code)
{
    using Kind = ConfinedFolderError::Kind;
    return {code == ELOOP ? Kind::Link : Kind::System,
            QStringLiteral("%1 could not be %2: %3")
                .arg(QFile::decodeName(path), QLatin1String(action),
                     QString::fromStdString(std::generic_category().message(code)))};
}

ConfinedFolderError notRegular(const QByteArray& path)
{
    return {ConfinedFolderError::Kind::System,
            QStringLiteral("%1 is not a regular file.").arg(QFile::decodeName(path))};
}

QByteArray lastName(const QByteArray& path)
{
    return path.sliced(path.lastIndexOf('/') + 1);
}

/// What stands under a name of a folder; nothing when nothing does. Throws for all but a regular file.
std::optional<struct stat> regularFile(const FileDescriptor& parent, const QByteArray& path,
                                       const char* action)
{
    struct stat status{};
    if (::fstatat(parent.get(), lastName(path).constData(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno == ENOENT)
            return std::nullopt;
        throw failure(action, path, errno);
    }
    if (S_ISLNK(status.st_mode))
        throw failure(action, path, ELOOP);
    if (!S_ISREG(status.st_mode))
        throw notRegular(path);
    return status;
}

/// Opens a folder by one name. A link is ELOOP on every system: some say that it is no folder.
FileDescriptor openFolder(const FileDescriptor& parent, const QByteArray& name)
{
    FileDescriptor folder(
        ::openat(parent.get(), name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder.isOpen() && errno == ENOTDIR) {
        struct stat status{};
        const bool isLink = ::fstatat(parent.get(), name.constData(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
                            S_ISLNK(status.st_mode);
        errno = isLink ? ELOOP : ENOTDIR;
    }
    return folder;
}

ConfinedFolderError unreadable(const QByteArray& path, int code)
{
    return {ConfinedFolderError::Kind::Unreadable, failure("read", path, code).message()};
}

/// All of an open file. Throws when there is more than `limit`, which is told before any of it is read if it
/// can be.
QByteArray readUpTo(const FileDescriptor& file, const QByteArray& path, qint64 limit)
{
    constexpr qint64 pieceSize = qint64(64) * 1024;
    struct stat status{};
    if (::fstat(file.get(), &status) != 0)
        throw failure("read", path, errno);
    if (!S_ISREG(status.st_mode))
        throw notRegular(path);
    QByteArray bytes;
    bytes.reserve(std::min<qint64>(status.st_size, limit));
    std::array<char, pieceSize> piece{};
    for (bool isMore = status.st_size <= limit; isMore && bytes.size() <= limit;) {
        const ssize_t count = ::read(file.get(), piece.data(), piece.size());
        if (count < 0 && errno != EINTR)
            throw unreadable(path, errno);
        isMore = count != 0;
        bytes.append(piece.data(), std::max<ssize_t>(count, 0));
    }
    if (std::max<qint64>(status.st_size, bytes.size()) > limit)
        throw ConfinedFolderError(ConfinedFolderError::Kind::TooLong,
                                  QStringLiteral("%1 is larger than %2 MiB.")
                                      .arg(QFile::decodeName(path), QString::number(limit >> 20)));
    return bytes;
}

bool writeAll(const FileDescriptor& file, const QByteArray& bytes)
{
    for (qsizetype written = 0; written < bytes.size();) {
        const ssize_t count = ::write(file.get(), bytes.constData() + written,
                                      static_cast<std::size_t>(bytes.size() - written));
        if (count < 0 && errno != EINTR)
            return false;
        written += std::max<ssize_t>(count, 0);
    }
    return true;
}

bool sync(const FileDescriptor& file)
{
    // Some file systems know no syncing.
    return ::fsync(file.get()) == 0 || errno == EINVAL || errno == ENOTSUP;
}

/// A new file beside the one it is to replace; removed at its end unless it was renamed.
class FreshFile
{
public:
    /// @param parent has to outlive the file.
    FreshFile(const FileDescriptor& parent, mode_t mode)
        : m_parent(parent)
    {
        constexpr int attempts = 100;
        for (int i = 0; i < attempts && !m_file.isOpen(); ++i) {
            m_name = ".varnel-" + QByteArray::number(QRandomGenerator::global()->generate64(), 16) + ".tmp";
            const int number = ::openat(parent.get(), m_name.constData(),
                                        O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
            if (number < 0 && errno != EEXIST)
                break;
            m_file = FileDescriptor(number);
        }
        m_isPresent = m_file.isOpen();
    }
    FreshFile(const FreshFile&) = delete;
    FreshFile& operator=(const FreshFile&) = delete;
    FreshFile(FreshFile&&) = delete;
    FreshFile& operator=(FreshFile&&) = delete;
    ~FreshFile()
    {
        if (m_isPresent)
            ::unlinkat(m_parent.get(), m_name.constData(), 0);
    }

    const FileDescriptor& file() const { return m_file; }
    bool renameTo(const QByteArray& name)
    {
        if (::renameat(m_parent.get(), m_name.constData(), m_parent.get(), name.constData()) != 0)
            return false;
        m_isPresent = false;
        return true;
    }

private:
    const FileDescriptor& m_parent;
    QByteArray m_name;
    FileDescriptor m_file;
    bool m_isPresent = false;
};

} // namespace

ConfinedFolder::ConfinedFolder(const QString& path, Lookup lookup)
    : m_folder(::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
    , m_lookup(lookup)
{
    if (!m_folder.isOpen())
        throw failure("opened", QFile::encodeName(path), errno);
}

FileDescriptor ConfinedFolder::openParent(const QByteArray& path, Missing missing) const
{
    const qsizetype end = path.lastIndexOf('/');
    if (end < 0)
        return FileDescriptor(::openat(m_folder.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const QByteArray parentPath = path.first(end);
    if (m_lookup == Lookup::WholePath) {
        FileDescriptor parent(openWholePath(m_folder.get(), parentPath.constData()));
        const bool walkHelps = errno == ENOSYS || errno == ENOTDIR || errno == ENOENT;
        if (parent.isOpen() || !walkHelps)
            return parent;
    }
    FileDescriptor folder;
    for (const QByteArray& name : parentPath.split('/')) {
        const FileDescriptor& above = folder.isOpen() ? folder : m_folder;
        FileDescriptor next = openFolder(above, name);
        if (!next.isOpen() && errno == ENOENT && missing == Missing::IsMade &&
            (::mkdirat(above.get(), name.constData(), permissionBits) == 0 || errno == EEXIST))
            next = openFolder(above, name);
        folder = std::move(next);
        if (!folder.isOpen())
            break;
    }
    return folder;
}

std::optional<QByteArray> ConfinedFolder::read(const QString& relativePath, qint64 limit) const
{
    const QByteArray path = QFile::encodeName(relativePath);
    const FileDescriptor parent = openParent(path, Missing::Fails);
    if (!parent.isOpen() && errno == ENOENT)
        return std::nullopt;
    if (!parent.isOpen())
        throw failure("read", path, errno);
    if (!regularFile(parent, path, "read"))
        return std::nullopt;
    // Should it have become a pipe by now, opening must not wait for a writer.
    const FileDescriptor descriptor(::openat(parent.get(), lastName(path).constData(),
                                             O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!descriptor.isOpen() && errno == ELOOP)
        throw failure("read", path, errno);
    if (!descriptor.isOpen())
        throw unreadable(path, errno);
    return readUpTo(descriptor, path, limit);
}

void ConfinedFolder::replace(const QString& relativePath, const QByteArray& bytes) const
{
    constexpr const char* action = "written";
    const QByteArray path = QFile::encodeName(relativePath);
    const FileDescriptor parent = openParent(path, Missing::IsMade);
    if (!parent.isOpen())
        throw failure(action, path, errno);
    const std::optional<struct stat> earlier = regularFile(parent, path, action);
    // A new file gets what the user's mask leaves; what replaces one is nobody else's until it has its bits.
    constexpr mode_t everybody = 0666;
    constexpr mode_t ownerOnly = 0600;
    FreshFile fresh(parent, earlier ? ownerOnly : everybody);
    const bool isDone = fresh.file().isOpen() && writeAll(fresh.file(), bytes) &&
                        (!earlier || ::fchmod(fresh.file().get(), earlier->st_mode & permissionBits) == 0) &&
                        sync(fresh.file()) && fresh.renameTo(lastName(path));
    if (!isDone)
        throw failure(action, path, errno);
    // The file is there and whole; that its name survives a power cut is all that this could still fail at.
    static_cast<void>(sync(parent));
}

} // namespace varnel
