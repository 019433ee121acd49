#include "store/ProjectPlan.h"

#include "store/ConfinedPath.h"
#include "store/SelfRunningFile.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>

#include <algorithm>

namespace varnel {

namespace {

/// Finds paths that differ from others only where some file systems see no difference.
class TwinSearch
{
public:
    explicit TwinSearch(const std::vector<ProjectFile>& files)
    {
        for (const ProjectFile& file : files)
            addPath(file.relativePath);
    }

    /// @param path relative to `folder`.
    QString twin(const QString& folder, const QString& path)
    {
        qsizetype end = 0;
        do {
            end = path.indexOf(QLatin1Char('/'), end + 1);
            const QString part = end < 0 ? path : path.first(end);
            if (const QString other = otherThan(part, m_spellings.value(foldedPath(part))); !other.isEmpty())
                return other;
            if (const QString other = inFolder(folder, part); !other.isEmpty())
                return other;
        } while (end >= 0);
        return {};
    }

private:
    void addPath(const QString& path)
    {
        for (qsizetype end = path.indexOf(QLatin1Char('/')); end >= 0;
             end = path.indexOf(QLatin1Char('/'), end + 1))
            addSpelling(path.first(end));
        addSpelling(path);
    }

    void addSpelling(const QString& part)
    {
        QStringList& spellings = m_spellings[foldedPath(part)];
        if (!spellings.contains(part))
            spellings.append(part);
    }

    static QString otherThan(const QString& name, const QStringList& alike)
    {
        const auto other = std::ranges::find_if(alike, [&name](const QString& each) { return each != name; });
        return other == alike.end() ? QString() : *other;
    }

    /// A name beside the last of `part` that is its twin; with the folders before it.
    QString inFolder(const QString& folder, const QString& part)
    {
        const qsizetype slash = part.lastIndexOf(QLatin1Char('/')) + 1;
        const QString above = part.first(slash);
        const QString name = part.sliced(slash);
        if (!m_names.contains(above)) {
            QHash<QString, QStringList>& names = m_names[above];
            const QDir dir(folder + QLatin1Char('/') + above);
            const QStringList entries =
                dir.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
            for (const QString& entry : entries)
                names[foldedPath(entry)].append(entry);
        }
        const QString other = otherThan(name, m_names[above].value(foldedPath(name)));
        return other.isEmpty() ? other : above + other;
    }

    QHash<QString, QStringList> m_spellings;             // of each path and folder of the reply
    QHash<QString, QHash<QString, QStringList>> m_names; // of the folders that were looked into
};

void plan(PlannedProjectFile& planned, const ConfinedPath& place, ConfinedFolder::Lookup lookup)
{
    std::optional<QByteArray> earlier;
    if (QFileInfo::exists(place.folder))
        planned.notKept = whyNotKept(ConfinedFolder(place.folder, lookup), place.relative, earlier);
    if (!planned.notKept.isEmpty()) {
        planned.change = ProjectFileChange::Changed;
        return;
    }
    if (!earlier) {
        planned.change = ProjectFileChange::New;
        return;
    }
    planned.change = *earlier == planned.file.contents.toUtf8() ? ProjectFileChange::Unchanged
                                                                : ProjectFileChange::Changed;
    planned.earlier = *std::move(earlier);
}

} // namespace

std::vector<PlannedProjectFile> planProjectFiles(const ChatSession& session,
                                                 const std::vector<ProjectFile>& files,
                                                 ConfinedFolder::Lookup lookup)
{
    const std::optional<QUrl> folder = session.projectURL();
    if (!folder)
        throw ProjectWriteError::missingFolder();
    TwinSearch twins(files);
    std::vector<PlannedProjectFile> all;
    for (const ProjectFile& file : files) {
        PlannedProjectFile& planned = all.emplace_back();
        planned.file = file;
        planned.runsByItself = runsByItself(file.relativePath);
        try {
            const std::optional<ConfinedPath> place = confinedPath(folder->toLocalFile(), file.relativePath);
            if (!place)
                throw ProjectWriteError::outsideRoot(file.relativePath);
            // The folder itself may stand where things run, and a link may lead there.
            planned.runsByItself = planned.runsByItself || runsByItself(place->absolute());
            planned.twin = twins.twin(place->folder, file.relativePath);
            plan(planned, *place, lookup);
        } catch (const Error& error) {
            planned.change = ProjectFileChange::Refused;
            planned.problem = error.message();
        }
    }
    return all;
}

} // namespace varnel
