#pragma once

#include "store/FileAccess.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <string_view>
#include <sys/types.h>

namespace varnel {

/// A file that is written anew and takes the place of the old one only when it is complete and on the disk:
/// whoever reads sees the whole old or the whole new contents, also after a crash.
///
/// It is written in the same folder. Unless it is committed, nothing remains of it. Every function throws
/// Error that says what failed and where.
class ReplacingFile
{
public:
    /// Whose the folder is.
    enum class Folder {
        /// The program's: the name while it is written is that of the file and ".saving", so that what a kill
        /// leaves is found again. The file is for the user only.
        Own,
        /// The user's: no name is taken that something of theirs may have. An earlier file's permission bits
        /// are kept, and a new one gets those that the user's mask leaves.
        Users,
    };

    /// A link to a file is followed, so that a file the user keeps elsewhere stays there.
    explicit ReplacingFile(const QString& file, Folder folder = Folder::Own);
    ReplacingFile(const ReplacingFile&) = delete;
    ReplacingFile& operator=(const ReplacingFile&) = delete;
    ReplacingFile(ReplacingFile&&) = delete;
    ReplacingFile& operator=(ReplacingFile&&) = delete;
    ~ReplacingFile();

    void write(std::string_view bytes);
    /// Waits until the contents are on the disk; the committing functions do so unless it was done.
    void sync();
    /// Puts the new file into the place of the old one.
    void commit();
    /// The same. @param stamp becomes that of the new file as soon as it is in its place, also when it throws
    /// because the disk then fails to say that it knows of it.
    void commit(std::optional<FileStamp>& stamp);
    /// The same, but fails when there is something in its place.
    void commitNew();

    /// What is added to the name while a file of the program is written.
    static QString temporarySuffix() { return QStringLiteral(".saving"); }

private:
    void openOwn();
    void openAmongUsers();

    QString m_file;
    QByteArray m_temporary;
    FileDescriptor m_descriptor;
    /// The permission bits to be given at the end; nothing for those it has.
    std::optional<mode_t> m_mode;
    /// Bytes that were written, and how many of them the disk was asked for.
    qint64 m_written = 0;
    qint64 m_started = 0;
    bool m_exists = false;
    bool m_isSynced = false;
};

} // namespace varnel
