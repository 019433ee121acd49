#pragma once

#include "store/ProjectWrite.h"

#include <QByteArray>
#include <QString>

#include <vector>

namespace varnel {

/// What writing a file would do.
enum class ProjectFileChange {
    New,
    Changed,
    Unchanged,
    Refused, ///< it cannot be written
};

/// One file of a reply, as it is shown before anything is written.
struct PlannedProjectFile
{
    ProjectFile file;
    ProjectFileChange change = ProjectFileChange::New;
    /// What the file holds now; empty when it is new or refused, or cannot be kept.
    QByteArray earlier;
    /// Why what it holds could not be put back after it was written, as it is shown; else empty.
    QString notKept;
    /// Something runs it without being asked, so it is better not written unseen.
    bool runsByItself = false;
    /// A path in the reply or in the folder that is another one here but the same on file systems that do
    /// not tell cases apart; empty for none.
    QString twin;
    /// Why it is refused, as it is shown; else empty.
    QString problem;

    bool operator==(const PlannedProjectFile&) const = default;
};

/// What writeProjectFiles() with a backup would do with each file; changes nothing. Throws ProjectWriteError
/// when the conversation has no project folder.
std::vector<PlannedProjectFile>
planProjectFiles(const ChatSession& session, const std::vector<ProjectFile>& files,
                 ConfinedFolder::Lookup lookup = ConfinedFolder::Lookup::WholePath);

} // namespace varnel
