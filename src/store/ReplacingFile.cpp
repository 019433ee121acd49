#include "store/ReplacingFile.h"

#include "store/FileSystem.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace varnel {

/// The disk works on what is written while the rest is still being encoded.
static constexpr qint64 syncStep = qint64(4) * 1024 * 1024;
static constexpr int newFile = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;

ReplacingFile::ReplacingFile(const QString& file, Folder folder)
    : m_file(withoutLink(file))
{
    if (folder == Folder::Own)
        openOwn();
    else
        openAmongUsers();
    if (!m_descriptor.isOpen())
        throw fileError(m_file, QStringLiteral("could not be saved"), errno);
    m_exists = true;
}

void ReplacingFile::openOwn()
{
    m_temporary = QFile::encodeName(m_file + temporarySuffix());
    // One that a crash left behind, and whatever else may stand there: it is never written through.
    ::unlink(m_temporary.constData());
    m_descriptor = FileDescriptor(::open(m_temporary.constData(), newFile, S_IRUSR | S_IWUSR));
}

void ReplacingFile::openAmongUsers()
{
    constexpr mode_t permissionBits = 0777;
    constexpr mode_t everybody = 0666;
    constexpr int attempts = 100;
    struct stat earlier = {};
    if (::stat(QFile::encodeName(m_file).constData(), &earlier) == 0 && S_ISREG(earlier.st_mode))
        m_mode = earlier.st_mode & permissionBits;
    const QByteArray folder = QFile::encodeName(QFileInfo(m_file).path());
    for (int i = 0; i < attempts && !m_descriptor.isOpen(); ++i) {
        m_temporary =
            folder + "/.varnel-" + QByteArray::number(QRandomGenerator::global()->generate64(), 16) + ".tmp";
        // What replaces a file is nobody else's until it has its bits.
        const int number = ::open(m_temporary.constData(), newFile, m_mode ? S_IRUSR | S_IWUSR : everybody);
        if (number < 0 && errno != EEXIST)
            break;
        m_descriptor = FileDescriptor(number);
    }
}

ReplacingFile::~ReplacingFile()
{
    if (m_exists)
        ::unlink(m_temporary.constData());
}

void ReplacingFile::write(std::string_view bytes)
{
    m_isSynced = false;
    while (!bytes.empty()) {
        const ssize_t count = ::write(m_descriptor.get(), bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            throw fileError(m_file, QStringLiteral("could not be saved"), count < 0 ? errno : ENOSPC);
        bytes.remove_prefix(static_cast<std::size_t>(count));
        m_written += count;
    }
    if (m_written - m_started >= syncStep) {
        startSync(m_descriptor.get(), m_started, m_written - m_started);
        m_started = m_written;
    }
}

void ReplacingFile::sync()
{
    if (!m_isSynced && !syncFile(m_descriptor.get()))
        throw fileError(m_file, QStringLiteral("could not be saved"), errno);
    m_isSynced = true;
}

void ReplacingFile::commit()
{
    std::optional<FileStamp> stamp;
    commit(stamp);
}

void ReplacingFile::commit(std::optional<FileStamp>& stamp)
{
    if (m_mode && ::fchmod(m_descriptor.get(), *m_mode) != 0)
        throw fileError(m_file, QStringLiteral("could not be saved"), errno);
    sync();
    if (::rename(m_temporary.constData(), QFile::encodeName(m_file).constData()) != 0)
        throw fileError(m_file, QStringLiteral("could not be saved"), errno);
    m_exists = false;
    stamp = stampOf(m_descriptor.get());
    syncFolder(QFileInfo(m_file).path());
}

void ReplacingFile::commitNew()
{
    sync();
    const QByteArray file = QFile::encodeName(m_file);
    if (::link(m_temporary.constData(), file.constData()) == 0) {
        ::unlink(m_temporary.constData());
    } else {
        // Not every file system knows a second name for a file; a look before the rename has to do there.
        const bool isKnown = errno != EPERM && errno != ENOTSUP && errno != EMLINK && errno != ENOSYS;
        if (isKnown || QFileInfo::exists(m_file))
            throw fileError(m_file, QStringLiteral("could not be saved"), isKnown ? errno : EEXIST);
        if (::rename(m_temporary.constData(), file.constData()) != 0)
            throw fileError(m_file, QStringLiteral("could not be saved"), errno);
    }
    m_exists = false;
    syncFolder(QFileInfo(m_file).path());
}

} // namespace varnel
