#include "store/ProjectWrite.h"

#include "store/ConfinedPath.h"

#include <QDir>

#include <algorithm>

namespace varnel {

namespace {

/// The project folder, which is made when the first file goes in: a refused path makes nothing.
class ProjectFolder
{
public:
    ProjectFolder(QString path, ConfinedFolder::Lookup lookup)
        : m_path(std::move(path))
        , m_lookup(lookup)
    {}

    ConfinedPath place(const ProjectFile& file) const
    {
        const std::optional<ConfinedPath> place = confinedPath(m_path, file.relativePath);
        if (!place)
            throw ProjectWriteError::outsideRoot(file.relativePath);
        return *place;
    }

    const ConfinedFolder& open(const ConfinedPath& place)
    {
        if (!m_folder) {
            // Should it fail, opening says why.
            static_cast<void>(QDir().mkpath(place.folder));
            m_folder.emplace(place.folder, m_lookup);
        }
        return *m_folder;
    }

private:
    QString m_path;
    ConfinedFolder::Lookup m_lookup;
    std::optional<ConfinedFolder> m_folder;
};

void writeOne(ProjectFolder& project, const ConfinedPath& place, const QByteArray& contents,
              ProjectBackup* backup)
{
    const ConfinedFolder& folder = project.open(place);
    if (backup == nullptr) {
        folder.replace(place.relative, contents);
        return;
    }
    backup->folder = place.folder;
    const auto again = std::ranges::find(backup->files, place.relative, &WrittenProjectFile::relativePath);
    if (again != backup->files.end()) {
        folder.replace(place.relative, contents);
        again->written = contents;
        return;
    }
    WrittenProjectFile written{
        .relativePath = place.relative, .written = contents, .earlier = std::nullopt, .lost = {}};
    const QString problem = whyNotKept(folder, place.relative, written.earlier);
    folder.replace(place.relative, contents);
    if (!problem.isEmpty())
        written.lost = QStringLiteral("What %1 held cannot be put back: %2").arg(place.relative, problem);
    backup->files.push_back(std::move(written));
}

std::vector<QUrl> writeAll(const ChatSession& session, const std::vector<ProjectFile>& files,
                           ProjectBackup* backup, ConfinedFolder::Lookup lookup)
{
    const std::optional<QUrl> folder = session.projectURL();
    if (!folder)
        throw ProjectWriteError::missingFolder();
    ProjectFolder project(folder->toLocalFile(), lookup);
    std::vector<QUrl> written;
    for (const ProjectFile& file : files) {
        const ConfinedPath place = project.place(file);
        try {
            writeOne(project, place, file.contents.toUtf8(), backup);
        } catch (const ConfinedFolderError& error) {
            // A link that came since the path was looked at.
            if (error.kind() == ConfinedFolderError::Kind::Link)
                throw ProjectWriteError::outsideRoot(file.relativePath);
            throw;
        }
        written.push_back(QUrl::fromLocalFile(place.absolute()));
    }
    return written;
}

void restore(const ConfinedFolder& folder, const WrittenProjectFile& file)
{
    if (folder.read(file.relativePath, ProjectBackup::largestFile) != file.written)
        throw Error(QStringLiteral("%1 was changed since and is left as it is.").arg(file.relativePath));
    folder.replace(file.relativePath, *file.earlier);
}

} // namespace

std::vector<QUrl> writeProjectFiles(const ChatSession& session, const std::vector<ProjectFile>& files,
                                    ConfinedFolder::Lookup lookup)
{
    return writeAll(session, files, nullptr, lookup);
}

std::vector<QUrl> writeProjectFiles(const ChatSession& session, const std::vector<ProjectFile>& files,
                                    ProjectBackup& backup, ConfinedFolder::Lookup lookup)
{
    backup = {};
    return writeAll(session, files, &backup, lookup);
}

QString whyNotKept(const ConfinedFolder& folder, const QString& relativePath,
                   std::optional<QByteArray>& earlier)
{
    try {
        earlier = folder.read(relativePath, ProjectBackup::largestFile);
        return {};
    } catch (const ConfinedFolderError& error) {
        using Kind = ConfinedFolderError::Kind;
        if (error.kind() != Kind::TooLong && error.kind() != Kind::Unreadable)
            throw;
        return error.message();
    }
}

QStringList ProjectBackup::lost() const
{
    QStringList lost;
    for (const WrittenProjectFile& file : files) {
        if (!file.lost.isEmpty())
            lost.append(file.lost);
    }
    return lost;
}

ProjectRestore restoreProjectFiles(const ProjectBackup& backup, ConfinedFolder::Lookup lookup)
{
    ProjectRestore result{.problems = backup.lost(), .remaining = {.folder = backup.folder, .files = {}}};
    std::vector<WrittenProjectFile>& remaining = result.remaining.files;
    std::ranges::copy_if(backup.files, std::back_inserter(remaining), [](const WrittenProjectFile& file) {
        return file.earlier && *file.earlier != file.written;
    });
    if (remaining.empty())
        return result;
    try {
        const ConfinedFolder folder(backup.folder, lookup);
        std::erase_if(remaining, [&](const WrittenProjectFile& file) {
            try {
                restore(folder, file);
                return true;
            } catch (const Error& error) {
                result.problems.append(error.message());
                return false;
            }
        });
    } catch (const Error& error) {
        result.problems.append(error.message());
    }
    return result;
}

} // namespace varnel
