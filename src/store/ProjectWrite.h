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
    std::optional<QByteArray> earlier; ///< nothing when the file is new

    bool operator==(const WrittenProjectFile&) const = default;
};

/// What is needed to put back the files that were overwritten.
struct ProjectBackup
{
    /// A file larger than this, in bytes, is not overwritten where a backup is made.
    static constexpr qint64 largestFile = qint64(64) << 20;

    QString folder;
    std::vector<WrittenProjectFile> files; ///< each path once

    bool operator==(const ProjectBackup&) const = default;
};

/// Writes the files into the project folder of the conversation, in their order, and yields where they are.
/// Missing folders are made, files that are there are replaced, each of them at once.
///
/// Throws ProjectWriteError, or ConfinedFolderError when the file system refuses; the files before the one
/// that failed stay written.
std::vector<QUrl> writeProjectFiles(const ChatSession& session, const std::vector<ProjectFile>& files,
                                    ConfinedFolder::Lookup lookup = ConfinedFolder::Lookup::WholePath);

/// The same, and keeps in `backup` what was overwritten; its earlier contents are dropped. It holds all files
/// that were written also when the last one failed.
std::vector<QUrl> writeProjectFiles(const ChatSession& session, const std::vector<ProjectFile>& files,
                                    ProjectBackup& backup,
                                    ConfinedFolder::Lookup lookup = ConfinedFolder::Lookup::WholePath);

/// Puts back what the files held that were overwritten; files that were new stay. A file that holds something
/// else by now is left alone. Yields a sentence for each that was not put back; never throws an Error.
QStringList restoreProjectFiles(const ProjectBackup& backup,
                                ConfinedFolder::Lookup lookup = ConfinedFolder::Lookup::WholePath);

} // namespace varnel
