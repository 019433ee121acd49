// What the tests of project files share: a project folder on a disk of its own.
#pragma once

#include "store/ProjectWrite.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <fcntl.h>
#include <mutex>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace varnel::test {

inline ProjectFile file(const QString& path, const QString& contents)
{
    return {.relativePath = path, .contents = contents};
}

/// A project folder with a neighbour that must never change.
struct Disk
{
    QTemporaryDir top;
    ChatSession session;

    Disk()
    {
        put(QStringLiteral("outside/secret"), "secret");
        put(QStringLiteral("project/kept"), "kept");
        session.projectPath = path(QStringLiteral("project"));
    }

    QString path(const QString& name) const { return top.filePath(name); }
    QByteArray encoded(const QString& name) const { return QFile::encodeName(path(name)); }
    void put(const QString& name, const QByteArray& bytes) const
    {
        QDir(top.path()).mkpath(QFileInfo(name).path());
        QFile opened(path(name));
        if (!opened.open(QIODevice::WriteOnly) || opened.write(bytes) != bytes.size())
            qFatal("%s cannot be written", qPrintable(name));
    }
    QByteArray get(const QString& name) const
    {
        QFile opened(path(name));
        return opened.open(QIODevice::ReadOnly) ? opened.readAll() : QByteArray("(none)");
    }
    void link(const QString& target, const QString& name) const
    {
        if (::symlink(QFile::encodeName(target).constData(), encoded(name).constData()) != 0)
            qFatal("%s cannot be linked", qPrintable(name));
    }
    /// Everything below a folder, with contents, as one text.
    QByteArray look(const QString& folder) const
    {
        QStringList lines;
        QDirIterator each(path(folder), QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                          QDirIterator::Subdirectories);
        while (each.hasNext()) {
            const QFileInfo info(each.next());
            const QString name = QDir(top.path()).relativeFilePath(info.filePath());
            lines += name + QLatin1Char(' ') +
                     (info.isFile() ? QString::fromUtf8(get(name)) : info.symLinkTarget());
        }
        lines.sort();
        return lines.join(QLatin1Char('\n')).toUtf8();
    }
    mode_t mode(const QString& name) const
    {
        struct stat status{};
        return ::lstat(encoded(name).constData(), &status) == 0 ? status.st_mode & 07777U : 0;
    }
};

inline bool isLink(const QByteArray& path)
{
    struct stat status{};
    return ::lstat(path.constData(), &status) == 0 && S_ISLNK(status.st_mode);
}

/// Exchanges two names of the disk as fast as it goes, on a thread of its own.
class Swapper
{
public:
    Swapper(QByteArray one, QByteArray other)
        : m_thread([this, one = std::move(one), other = std::move(other)](const std::stop_token& stop) {
            while (!stop.stop_requested()) {
                const std::unique_lock<std::mutex> swapping = hold();
                if (::renameat2(AT_FDCWD, one.constData(), AT_FDCWD, other.constData(), RENAME_EXCHANGE) == 0)
                    ++m_swaps;
            }
        })
    {}

    /// As long as it is held, nothing is swapped.
    std::unique_lock<std::mutex> hold() { return std::unique_lock(m_mutex); }

    int stop()
    {
        m_thread.request_stop();
        m_thread.join();
        return m_swaps;
    }

private:
    std::mutex m_mutex;
    std::atomic<int> m_swaps = 0;
    std::jthread m_thread;
};

} // namespace varnel::test
