// Files that a reply gives for the project folder of its conversation: what the model is told, and what is
// found in its answer.
#pragma once

#include "base/Error.h"
#include "store/ChatSession.h"
#include "store/ProjectFile.h"

#include <QString>
#include <QUrl>

#include <optional>
#include <vector>

namespace varnel {

/// Files of a reply were not written.
class ProjectWriteError : public Error
{
public:
    enum class Kind {
        OutsideRoot,   ///< a path that leads out of the project folder
        MissingFolder, ///< the conversation has no project folder
    };

    static ProjectWriteError outsideRoot(const QString& relativePath);
    static ProjectWriteError missingFolder();

    Kind kind() const noexcept { return m_kind; }

private:
    ProjectWriteError(Kind kind, QString message);

    Kind m_kind;
};

/// What the model is told about the project folder; empty when the conversation has none.
QString projectInstruction(const ChatSession& session);

/// The path that the info string of a fenced block names, such as "path:src/app.py"; nothing when it names
/// none, or one that is absolute or leads upwards.
std::optional<QString> projectPathOfInfo(QStringView info);

/// The files that a reply gives, in its order; a path may occur twice.
std::vector<ProjectFile> projectFiles(QStringView reply);

/// The path of a project folder as it is shown and logged: without "/" at its end.
QString projectFolderPath(const QUrl& folder);

/// The status texts of the project folder.
QString projectDirectoryStatus(const QString& projectPath);
QString projectWriteStatus(std::size_t count, const QUrl& folder);
QString noProjectFilesStatus();
/// The line of the diagnostics log after files were written.
QString projectWriteLogLine(const QUrl& folder);

} // namespace varnel
