#include "ui/ProjectPreview.h"

#include "store/ProjectFiles.h"

#include <algorithm>

namespace varnel {

namespace {

/// The last file of each path, where its first one stood: that is what is there after all were written.
std::vector<PlannedProjectFile> lastOfEachPath(std::vector<PlannedProjectFile> files)
{
    std::vector<PlannedProjectFile> last;
    for (PlannedProjectFile& file : files) {
        const auto found =
            std::ranges::find(last, file.file.relativePath,
                              [](const PlannedProjectFile& each) { return each.file.relativePath; });
        if (found == last.end())
            last.push_back(std::move(file));
        else
            *found = std::move(file);
    }
    return last;
}

bool isTickable(const PlannedProjectFile& file)
{
    return file.change == ProjectFileChange::New || file.change == ProjectFileChange::Changed;
}

} // namespace

ProjectPreview::ProjectPreview(AppModel& app, QObject* parent)
    : QAbstractListModel(parent)
    , m_app(app)
{
    connect(&app, &AppModel::projectFilesChanged, this, &ProjectPreview::canRestoreChanged);
    connect(&app, &AppModel::projectFilesChanged, this, &ProjectPreview::noteFilesChanged);
    connect(&app, &AppModel::selectionChanged, this, &ProjectPreview::declineRestore);
    connect(&app, &AppModel::isStreamingChanged, this, [this] {
        if (m_app.isBusy())
            setOffersRestore(false);
    });
}

int ProjectPreview::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_files.size());
}

QVariant ProjectPreview::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const PlannedProjectFile& file = m_files[static_cast<std::size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
    case PathRole: {
        constexpr qsizetype longest = 500;
        return file.file.relativePath.left(longest);
    }
    case ChangeRole:
        return static_cast<int>(file.change);
    case StateRole: {
        static const std::array names{tr("new"), tr("changed"), tr("unchanged"), tr("refused")};
        const QString& name = names.at(static_cast<std::size_t>(file.change));
        return file.runsByItself ? tr("%1 · runs by itself").arg(name) : name;
    }
    case TickedRole:
        return m_ticked.contains(file.file.relativePath);
    case TickableRole:
        return isTickable(file);
    default:
        return {};
    }
}

QHash<int, QByteArray> ProjectPreview::roleNames() const
{
    return {{PathRole, "path"},
            {ChangeRole, "change"},
            {StateRole, "fileState"},
            {TickedRole, "ticked"},
            {TickableRole, "tickable"}};
}

void ProjectPreview::show(const QUuid& message, const QString& path)
{
    m_task = followShow(message, path);
}

Task<void> ProjectPreview::followShow(QUuid message, QString path)
{
    const QUuid session = m_app.selection();
    std::vector<PlannedProjectFile> files = co_await m_app.planProjectFiles(message);
    if (files.empty() || m_app.selection() != session)
        co_return;
    m_session = session;
    m_message = message;
    setNotice({});
    take(lastOfEachPath(std::move(files)));
    const auto meant = std::ranges::find_if(
        m_files, [&path](const PlannedProjectFile& each) { return each.file.relativePath == path; });
    if (meant != m_files.end())
        setCurrentRow(static_cast<int>(meant - m_files.begin()));
    m_isOpen = true;
    Q_EMIT shown();
}

void ProjectPreview::dismiss()
{
    m_isOpen = false;
}

void ProjectPreview::take(std::vector<PlannedProjectFile> files)
{
    beginResetModel();
    m_files = std::move(files);
    m_ticked.clear();
    for (const PlannedProjectFile& file : m_files) {
        if (isTickable(file) && !file.runsByItself)
            m_ticked.insert(file.file.relativePath);
    }
    endResetModel();
    Q_EMIT contentsChanged();
    Q_EMIT tickedChanged();
    m_currentRow = 0;
    compare();
    Q_EMIT currentRowChanged();
}

void ProjectPreview::setTicked(int row, bool ticked)
{
    if (row < 0 || row >= rowCount() || !isTickable(m_files[static_cast<std::size_t>(row)]))
        return;
    const QString& path = m_files[static_cast<std::size_t>(row)].file.relativePath;
    if (ticked)
        m_ticked.insert(path);
    else
        m_ticked.erase(path);
    Q_EMIT dataChanged(index(row), index(row), {TickedRole});
    Q_EMIT tickedChanged();
}

void ProjectPreview::write()
{
    if (!m_ticked.empty() && m_app.selection() == m_session)
        m_task = followWrite();
}

Task<void> ProjectPreview::followWrite()
{
    // Nothing is written that nobody has seen.
    std::vector<PlannedProjectFile> now = lastOfEachPath(co_await m_app.planProjectFiles(m_message));
    if (m_app.selection() != m_session || m_ticked.empty() || !m_isOpen)
        co_return;
    if (now != m_files) {
        take(std::move(now));
        setNotice(tr("Something has changed since this was opened. Look again before it is written."));
        co_return;
    }
    m_isOverwriting = std::ranges::any_of(m_files, [this](const PlannedProjectFile& each) {
        return each.change == ProjectFileChange::Changed && m_ticked.contains(each.file.relativePath);
    });
    m_app.writeProjectFiles(m_message, QStringList(m_ticked.begin(), m_ticked.end()));
    Q_EMIT written();
}

void ProjectPreview::restore()
{
    m_isRestoring = true;
    setOffersRestore(false);
    m_app.restoreProjectFiles();
}

void ProjectPreview::setOffersRestore(bool offers)
{
    if (offers == m_offersRestore)
        return;
    m_offersRestore = offers;
    Q_EMIT offersRestoreChanged();
}

void ProjectPreview::noteFilesChanged()
{
    if (std::exchange(m_isOverwriting, false))
        setOffersRestore(canRestore() && m_app.selection() == m_session);
    if (std::exchange(m_isRestoring, false))
        m_task = followRestore();
}

Task<void> ProjectPreview::followRestore()
{
    std::vector<PlannedProjectFile> files;
    if (m_app.selection() == m_session && !m_message.isNull())
        files = co_await m_app.planProjectFiles(m_message);
    take(lastOfEachPath(std::move(files)));
}

void ProjectPreview::setCurrentRow(int row)
{
    if (row == m_currentRow || row < 0 || row >= rowCount())
        return;
    m_currentRow = row;
    compare();
    Q_EMIT currentRowChanged();
}

void ProjectPreview::compare()
{
    if (m_currentRow < 0 || m_currentRow >= rowCount()) {
        m_diff.setLines({});
        return;
    }
    const PlannedProjectFile& file = m_files[static_cast<std::size_t>(m_currentRow)];
    m_diff.setLines(lineDiff(QString::fromUtf8(file.earlier), file.file.contents));
}

QString ProjectPreview::currentNote() const
{
    constexpr qsizetype longest = 400;
    if (m_currentRow < 0 || m_currentRow >= rowCount())
        return {};
    const PlannedProjectFile& file = m_files[static_cast<std::size_t>(m_currentRow)];
    if (!file.problem.isEmpty())
        return file.problem.left(longest);
    QStringList notes;
    if (file.runsByItself)
        notes.append(
            tr("Something runs this file without being asked. Tick it only if you know what it does."));
    if (!file.notKept.isEmpty())
        notes.append(tr("What the file holds could not be put back. %1").arg(file.notKept.left(longest)));
    if (!file.twin.isEmpty())
        notes.append(tr("On some systems this is the same file as %1.").arg(file.twin.left(longest)));
    if (file.change == ProjectFileChange::Unchanged)
        notes.append(tr("The file holds this already."));
    return notes.join(QLatin1Char(' '));
}

QString ProjectPreview::folder() const
{
    constexpr qsizetype longest = 500;
    const ChatSession* const session = m_app.session(m_session);
    const std::optional<QUrl> url = session ? session->projectURL() : std::nullopt;
    return url ? projectFolderPath(*url).left(longest) : QString();
}

void ProjectPreview::setNotice(const QString& text)
{
    if (text == m_notice)
        return;
    m_notice = text;
    Q_EMIT noticeChanged();
}

} // namespace varnel
