// Writing the files of a reply into the project folder, and taking that back.
#pragma once

#include "store/ConfinedFolder.h"
#include "store/ProjectFiles.h"

#include <QByteArray>
#include <QStringList>
#include <QUrl>

#include <optional>
#include <vector>

namespace varnel {

/// A file that was written, and what stood there before.
struct WrittenProjectFile
{
    QString relativePath; ///< below ProjectBackup::folder, links resolved
    QByteArray written;
    std::optional<QByteArray> earlier; ///< nothing when the file is new, or its bytes were not kept
    /// One sentence that says so where a file was overwritten whose bytes could not be kept; else empty.
    QString lost;

    bool operator==(const WrittenProjectFile&) const = default;
};

/// What is needed to put back the files that were overwritten.
struct ProjectBackup
{
    /// Of a file larger than this, in bytes, nothing is kept.
    static constexpr qint64 largestFile = qint64(64) << 20;

    QString folder;
    std::vector<WrittenProjectFile> files; ///< each path once

    bool operator==(const ProjectBackup&) const = default;

    /// What of these files cannot be put back: a sentence for each.
    QStringList lost() const;
};

/// How putting back went.
struct ProjectRestore
{
    /// A sentence for each file that was not put back.
    QStringList problems;
    /// What is still to be put back: the only copy of these bytes.
    ProjectBackup remaining;
};

/// Writes the files into the project folder of the conversation, in their order, and yields where they are.
/// Missing folders are made, files that are there are replaced, each of them at once.
///
/// Throws ProjectWriteError, or ConfinedFolderError when the file system refuses; the files before the one
/// that failed stay written.
std::vector<QUrl> writeProjectFiles(const ChatSession& session, const std::vector<ProjectFile>& files,
                                    ConfinedFolder::Lookup lookup = ConfinedFolder::Lookup::WholePath);

/// The same, and keeps in `backup` what was overwritten; its earlier contents are dropped. It holds all files
/// that were written also when the last one failed. A file that is too large to be kept, or that may be
/// replaced but not read, is overwritten all the same.
std::vector<QUrl> writeProjectFiles(const ChatSession& session, const std::vector<ProjectFile>& files,
                                    ProjectBackup& backup,
                                    ConfinedFolder::Lookup lookup = ConfinedFolder::Lookup::WholePath);

/// Why a file that is there could not be put back after it was written; empty if it could, or if it cannot be
/// written at all, which is thrown as ConfinedFolderError. @param earlier becomes what it holds.
QString whyNotKept(const ConfinedFolder& folder, const QString& relativePath,
                   std::optional<QByteArray>& earlier);

/// Puts back what the files held that were overwritten; files that were new stay. A file that holds something
/// else by now is left alone. Never throws an Error.
ProjectRestore restoreProjectFiles(const ProjectBackup& backup,
                                   ConfinedFolder::Lookup lookup = ConfinedFolder::Lookup::WholePath);

} // namespace varnel
