// What the tests of the stores share: a folder of their own, files in it, conversations to keep.
#pragma once

#include "store/SessionList.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#ifdef __linux__
#include <sys/mount.h>
#endif

namespace varnel::test {

inline const Instant noon = *fromIso8601("2026-03-18T12:00:00Z");

inline void writeFile(const QString& path, const QByteArray& contents)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(path));
    QCOMPARE(file.write(contents), contents.size());
}

inline QByteArray contentsOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(there is none)");
}

/// The names in a folder, hidden ones too.
inline QStringList namesIn(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                                  QDir::Name);
}

inline ChatMessage message(const QString& content, ChatRole role = ChatRole::User)
{
    return {.id = QUuid::createUuid(),
            .role = role,
            .content = content,
            .thinking = {},
            .createdAt = noon,
            .backend = {},
            .duration = std::nullopt};
}

inline ChatSession session(const QString& title, std::vector<ChatMessage> messages = {})
{
    ChatSession session;
    session.id = QUuid::createUuid();
    session.title = title;
    session.messages = std::move(messages);
    session.createdAt = session.updatedAt = noon;
    return session;
}

inline QStringList titlesOf(const SessionList& sessions)
{
    QStringList titles;
    for (const ChatSession& each : sessions)
        titles.append(each.title);
    return titles;
}

/// What `work` says when it fails; empty when it does not.
template <typename Work>
QString failureOf(Work work)
{
    try {
        work();
        return {};
    } catch (const Error& error) {
        return error.message();
    }
}

/// For root nothing is forbidden; while this lives the process is nobody's.
class AsNobody
{
public:
    explicit AsNobody(bool isWanted = true)
        : m_isRoot(isWanted && ::geteuid() == 0 && ::seteuid(65534) == 0)
    {}
    AsNobody(const AsNobody&) = delete;
    AsNobody& operator=(const AsNobody&) = delete;
    ~AsNobody()
    {
        if (m_isRoot && ::seteuid(0) != 0)
            std::abort();
    }

private:
    bool m_isRoot;
};

/// Lets nobody see a folder's names while things can be made and replaced in it: what is written gets there,
/// and that the disk knows of its name cannot be told.
class UnsyncableFolder
{
public:
    explicit UnsyncableFolder(QString folder)
        : m_folder(std::move(folder))
    {
        ::chmod(qPrintable(QFileInfo(m_folder).path()), 0755);
        ::chmod(qPrintable(m_folder), 0333);
        m_nobody.emplace();
    }
    UnsyncableFolder(const UnsyncableFolder&) = delete;
    UnsyncableFolder& operator=(const UnsyncableFolder&) = delete;
    ~UnsyncableFolder()
    {
        m_nobody.reset();
        ::chmod(qPrintable(m_folder), 0777);
    }

private:
    QString m_folder;
    std::optional<AsNobody> m_nobody;
};

/// A small file system in the place of a folder, where there may be one.
class SmallDisk
{
public:
    explicit SmallDisk(QString folder)
        : m_folder(std::move(folder))
    {
#ifdef __linux__
        m_isThere = ::mount("tmpfs", qPrintable(m_folder), "tmpfs", 0, "size=64k") == 0;
#endif
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;
    ~SmallDisk()
    {
#ifdef __linux__
        if (m_isThere)
            ::umount(qPrintable(m_folder));
#endif
    }

    bool isThere() const { return m_isThere; }

private:
    QString m_folder;
    bool m_isThere = false;
};

} // namespace varnel::test
