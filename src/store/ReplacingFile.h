#pragma once

#include "store/FileAccess.h"

#include <QString>

#include <string_view>

namespace varnel {

/// A file that is written anew and takes the place of the old one only when it is complete and on the disk:
/// whoever reads sees the whole old or the whole new contents, also after a crash.
///
/// It is written under the name of the file and ".saving" in the same folder, for the user only. Unless it is
/// committed, nothing remains of it. Every function throws Error that says what failed and where.
class ReplacingFile
{
public:
    /// A link to a file is followed, so that a file the user keeps elsewhere stays there.
    explicit ReplacingFile(const QString& file);
    ReplacingFile(const ReplacingFile&) = delete;
    ReplacingFile& operator=(const ReplacingFile&) = delete;
    ReplacingFile(ReplacingFile&&) = delete;
    ReplacingFile& operator=(ReplacingFile&&) = delete;
    ~ReplacingFile();

    void write(std::string_view bytes);
    /// Waits until the contents are on the disk; the committing functions do so unless it was done.
    void sync();
    /// Puts the new file into the place of the old one and yields its stamp.
    FileStamp commit();
    /// The same, but fails when there is something in its place.
    FileStamp commitNew();

    /// What is added to the name while a file is written.
    static QString temporarySuffix() { return QStringLiteral(".saving"); }

private:
    QString m_file;
    QString m_temporary;
    FileDescriptor m_descriptor;
    /// Bytes that were written, and how many of them the disk was asked for.
    qint64 m_written = 0;
    qint64 m_started = 0;
    bool m_exists = false;
    bool m_isSynced = false;
};

} // namespace varnel
