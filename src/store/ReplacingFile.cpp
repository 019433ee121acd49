#include "store/ReplacingFile.h"

#include "store/FileSystem.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace varnel {

/// The disk works on what is written while the rest is still being encoded.
static constexpr qint64 syncStep = qint64(4) * 1024 * 1024;

ReplacingFile::ReplacingFile(const QString& file)
    : m_file(withoutLink(file))
    , m_temporary(m_file + temporarySuffix())
{
    const QByteArray path = QFile::encodeName(m_temporary);
    // One that a crash left behind, and whatever else may stand there: it is never written through.
    ::unlink(path.constData());
    m_descriptor = FileDescriptor(
        ::open(path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!m_descriptor.isOpen())
        throw fileError(m_file, QStringLiteral("could not be saved"), errno);
    m_exists = true;
}

ReplacingFile::~ReplacingFile()
{
    if (m_exists)
        ::unlink(QFile::encodeName(m_temporary).constData());
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

FileStamp ReplacingFile::commit()
{
    sync();
    if (::rename(QFile::encodeName(m_temporary).constData(), QFile::encodeName(m_file).constData()) != 0)
        throw fileError(m_file, QStringLiteral("could not be saved"), errno);
    m_exists = false;
    syncFolder(QFileInfo(m_file).path());
    return stampOf(m_descriptor.get());
}

FileStamp ReplacingFile::commitNew()
{
    sync();
    const QByteArray temporary = QFile::encodeName(m_temporary);
    const QByteArray file = QFile::encodeName(m_file);
    if (::link(temporary.constData(), file.constData()) == 0) {
        ::unlink(temporary.constData());
    } else {
        // Not every file system knows a second name for a file; a look before the rename has to do there.
        const bool isKnown = errno != EPERM && errno != ENOTSUP && errno != EMLINK && errno != ENOSYS;
        if (isKnown || QFileInfo::exists(m_file))
            throw fileError(m_file, QStringLiteral("could not be saved"), isKnown ? errno : EEXIST);
        if (::rename(temporary.constData(), file.constData()) != 0)
            throw fileError(m_file, QStringLiteral("could not be saved"), errno);
    }
    m_exists = false;
    syncFolder(QFileInfo(m_file).path());
    return stampOf(m_descriptor.get());
}

} // namespace varnel
