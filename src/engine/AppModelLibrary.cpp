// The library, backups and the files of projects.
#include "engine/AppModelPrivate.h"

#include "app/DiagnosticsLog.h"
#include "base/Text.h"
#include "store/Backups.h"
#include "store/LibraryStore.h"
#include "store/ProjectFiles.h"
#include "store/ProjectWrite.h"

#include <algorithm>

namespace varnel {

namespace {

const ChatMessage* messageOf(const ChatSession* session, const QUuid& id)
{
    if (!session)
        return nullptr;
    const auto found = std::find_if(session->messages.begin(), session->messages.end(),
                                    [&id](const ChatMessage& message) { return message.id == id; });
    return found == session->messages.end() ? nullptr : &*found;
}

/// Reads a backup and copies stored files back that are gone.
Task<BackupContents> readBackup(Worker* worker, QString root, QString name)
{
    co_return co_await worker->run([root, name](const std::stop_token&) {
        const std::vector<Backup> backups = listBackups(root);
        const auto found = std::find_if(backups.begin(), backups.end(),
                                        [&name](const Backup& backup) { return backup.name == name; });
        if (found == backups.end())
            throw Error(QStringLiteral("There is no backup %1.").arg(name));
        return varnel::restoreBackup(root, *found);
    });
}

constexpr const char* backupIsUnfinished =
    QT_TRANSLATE_NOOP("varnel::AppModel", "A backup is still being made or restored.");

struct WrittenProject
{
    std::size_t count = 0;
    ProjectBackup backup;
    std::optional<QString> failure;
};

/// Each file waits for the disk, so this is work for another thread.
WrittenProject writeProject(const ChatSession& session, const std::vector<ProjectFile>& files)
{
    WrittenProject written;
    try {
        written.count = writeProjectFiles(session, files, written.backup).size();
    } catch (const Error& error) {
        // What was written before the failure can still be taken back.
        written.failure = error.message();
    }
    return written;
}

} // namespace

void AppModel::showLibrary()
{
    m_libraryItems = m_library.items();
    Q_EMIT libraryItemsChanged();
}

void AppModel::importFiles(const QList<QUrl>& files, const QString& folder, bool andAttach,
                           const QUuid& session)
{
    std::vector<std::function<LibraryItem()>> makers;
    for (const QUrl& file : files) {
        makers.emplace_back([root = m_library.root(), file, folder, now = m_services.clock.now()] {
            return copyIntoLibrary(root, file, folder, now);
        });
    }
    const QUuid attachTo = session.isNull() ? m_selection : session;
    keepTask(followImport(std::move(makers), andAttach ? attachTo : QUuid()));
}

void AppModel::importContents(const std::function<QByteArray()>& contents, const QString& fileName,
                              const QString& folder, bool andAttach)
{
    const auto store = [contents, fileName, folder, root = m_library.root(), now = m_services.clock.now()] {
        return storeInLibrary(root, contents(), fileName, folder, now);
    };
    keepTask(followImport({store}, andAttach ? m_selection : QUuid()));
}

void AppModel::countImports(int change)
{
    m_imports += change;
    Q_EMIT isImportingChanged();
}

Task<void> AppModel::followImport(std::vector<std::function<LibraryItem()>> makers, QUuid attachTo)
{
    countImports(1);
    for (const auto& make : std::as_const(makers)) {
        QString failure;
        try {
            LibraryItem item =
                co_await m_worker.run([make = make](const std::stop_token&) { return make(); });
            const QUuid id = m_library.add(std::move(item)).id;
            showLibrary();
            if (session(attachTo)) {
                m_drafts[attachTo].attachments.push_back(id);
                saveDrafts();
                if (attachTo == m_selection)
                    Q_EMIT attachmentIDsChanged();
            }
        } catch (const Cancelled&) {
            break;
        } catch (const Error& error) {
            failure = error.message();
        }
        if (!failure.isEmpty()) {
            setStatusMessage(failure);
            Q_EMIT importFailed(attachTo);
        }
    }
    countImports(-1);
}

void AppModel::addLink(const QString& title, const QString& url, const QString& note, const QString& folder)
{
    attempt([&] {
        m_library.addLink(wellFormed(title), wellFormed(url), wellFormed(note), wellFormed(folder),
                          m_services.clock.now());
    });
    showLibrary();
}

void AppModel::changeItem(const QUuid& id, const std::function<void(LibraryItem&)>& change)
{
    attempt([&] { m_library.changeItem(id, change); });
    showLibrary();
}

void AppModel::deleteItem(const QUuid& id)
{
    attempt([&] { m_library.markDeleted(id, m_services.clock.now()); });
    detachEverywhere(id);
    showLibrary();
}

/// What is deleted is attached nowhere.
void AppModel::detachEverywhere(const QUuid& item)
{
    for (auto& [session, draft] : m_drafts)
        std::erase(draft.attachments, item);
    saveDrafts();
    Q_EMIT attachmentIDsChanged();
}

void AppModel::restoreItem(const QUuid& id)
{
    attempt([&] { m_library.restore(id); });
    showLibrary();
}

void AppModel::removeItemForGood(const QUuid& id)
{
    if (attempt([&] { m_library.removeForGood(id); }))
        detachEverywhere(id);
    showLibrary();
}

void AppModel::backUp()
{
    if (!refuseSecondBackup())
        m_backup = followBackup();
}

bool AppModel::refuseSecondBackup()
{
    // Another in its place would end it in the middle, and without a word.
    if (!m_backup.isRunning())
        return false;
    setStatusMessage(tr(backupIsUnfinished));
    Q_EMIT backupEnded(m_statusMessage);
    return true;
}

Task<void> AppModel::followBackup()
{
    QString status;
    try {
        const Backup backup = co_await m_keeper.backUp(m_library.items());
        status = backup.statusText();
    } catch (const Cancelled&) {
        co_return;
    } catch (const Error& error) {
        status = error.message();
    }
    setStatusMessage(status);
    Q_EMIT backupEnded(status);
}

void AppModel::restoreBackup(const QString& name)
{
    if (refuseSecondBackup())
        return;
    // With every file that arrives there would be another change to make a backup of first.
    if (isImporting())
        setStatusMessage(tr("Files are still being copied into the library. Wait until they are there."));
    if (isImporting() || refuseWhileStreaming())
        Q_EMIT backupEnded(m_statusMessage);
    else
        m_backup = followRestore(name);
}

/// Reads a backup, which puts back the files it has, and makes one that holds all there is when it is done:
/// both take their time, and the user may go on meanwhile.
Task<BackupContents> AppModel::exchangeBackups(QString name)
{
    BackupContents contents;
    SessionList savedSessions;
    std::vector<LibraryItem> savedItems;
    do {
        savedSessions = m_sessions;
        savedItems = m_library.items();
        contents = co_await readBackup(&m_worker, m_location.folder(), name);
        // A backup is named after its second, which another one may have taken just now.
        const std::vector<Backup> backups = listBackups(m_location.folder());
        if (!backups.empty() && backups.front().name == backupName(m_services.clock.now()))
            co_await m_services.clock.sleepFor(std::chrono::seconds(1), {});
        co_await m_keeper.backUp(m_library.items());
        // While a reply runs nothing is restored, and with every piece of it there would be another change.
    } while (!isBusy() && (savedSessions != m_sessions || savedItems != m_library.items()));
    co_return contents;
}

Task<void> AppModel::followRestore(QString name)
{
    QString status;
    try {
        BackupContents contents = co_await exchangeBackups(name);
        if (refuseWhileStreaming()) { // begun while the backup was read
            Q_EMIT backupEnded(m_statusMessage);
            co_return;
        }
        m_library.replaceItems(std::move(contents.items));
        m_sessions = std::move(contents.sessions);
        m_sessions.sort();
        if (m_sessions.empty())
            insertNewConversation();
        setFailure(std::nullopt);
        setReplaced(nullptr);
        m_removed.clear();
        announceRemoved();
        m_selection = m_sessions.front().id;
        Q_EMIT sessionsChanged();
        announceSelection();
        saveSessions();
        showLibrary();
        status = (QStringList(tr("Restored backup %1").arg(name)) + contents.leftOut).join(QLatin1Char(' '));
    } catch (const Cancelled&) {
        co_return;
    } catch (const Error& error) {
        status = error.message();
    }
    setStatusMessage(status);
    Q_EMIT backupEnded(status);
}

Task<std::vector<PlannedProjectFile>> AppModel::planProjectFiles(QUuid message)
{
    const ChatSession* const selected = selectedSession();
    const ChatMessage* const reply = messageOf(selected, message);
    ChatSession session;
    session.projectPath = selected ? selected->projectPath : QString();
    std::vector<PlannedProjectFile> planned;
    QString problem;
    try {
        planned = co_await m_projectWorker.run(
            [session, text = reply ? reply->content : QString()](const std::stop_token&) {
                const std::vector<ProjectFile> files = projectFiles(text);
                if (files.empty())
                    throw Error(noProjectFilesStatus());
                return varnel::planProjectFiles(session, files);
            });
    } catch (const Error& error) {
        problem = error.message();
    }
    if (!problem.isEmpty())
        setStatusMessage(problem);
    co_return planned;
}

void AppModel::writeProjectFiles(const QUuid& message, const QStringList& paths)
{
    const ChatSession* const selected = selectedSession();
    const ChatMessage* const reply = messageOf(selected, message);
    std::vector<ProjectFile> files = reply ? projectFiles(reply->content) : std::vector<ProjectFile>();
    if (!paths.isEmpty())
        std::erase_if(files,
                      [&paths](const ProjectFile& file) { return !paths.contains(file.relativePath); });
    if (files.empty()) {
        setStatusMessage(noProjectFilesStatus());
        return;
    }
    ChatSession session;
    session.projectPath = selected->projectPath;
    keepTask(followProjectWrite(std::move(session), std::move(files)));
}

Task<void> AppModel::followProjectWrite(ChatSession session, std::vector<ProjectFile> files)
{
    const QUrl folder = session.projectURL().value_or(QUrl());
    WrittenProject written =
        co_await m_projectWorker.run([session = std::move(session), files = std::move(files)](
                                         const std::stop_token&) { return writeProject(session, files); });
    const QStringList status(written.failure.value_or(projectWriteStatus(written.count, folder)));
    setStatusMessage((status + written.backup.lost()).join(QLatin1Char(' ')));
    if (!written.failure)
        m_services.log.log(projectWriteLogLine(folder));
    if (!written.failure || !written.backup.files.empty())
        m_projectBackup = std::move(written.backup);
    Q_EMIT projectFilesChanged();
}

void AppModel::restoreProjectFiles()
{
    if (!m_projectBackup)
        return;
    keepTask(followProjectRestore(*std::exchange(m_projectBackup, std::nullopt)));
}

Task<void> AppModel::followProjectRestore(ProjectBackup backup)
{
    ProjectRestore restored = co_await m_projectWorker.run(
        [backup = std::move(backup)](const std::stop_token&) { return varnel::restoreProjectFiles(backup); });
    // What a writing since then overwrote is the last that can be put back.
    if (!m_projectBackup && !restored.remaining.files.empty())
        m_projectBackup = std::move(restored.remaining);
    setStatusMessage(restored.problems.isEmpty() ? tr("The overwritten files are back as they were.")
                                                 : restored.problems.join(QLatin1Char(' ')));
    Q_EMIT projectFilesChanged();
}

} // namespace varnel
