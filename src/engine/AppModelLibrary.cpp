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

} // namespace

void AppModel::showLibrary()
{
    m_libraryItems = m_library.items();
    Q_EMIT libraryItemsChanged();
    for (const SetAside& setAside : m_library.takeSetAside())
        notify(setAside.text());
}

void AppModel::importFiles(const QList<QUrl>& files, const QString& folder, bool andAttach)
{
    m_imports.push_back(followImport(files, folder, andAttach ? m_selection : QUuid()));
}

Task<void> AppModel::followImport(QList<QUrl> files, QString folder, QUuid attachTo)
{
    const QString root = m_library.root();
    for (const QUrl& file : std::as_const(files)) {
        QString failure;
        try {
            const Instant now = m_services.clock.now();
            LibraryItem item = co_await m_worker.run([root, file, folder, now](const std::stop_token&) {
                return copyIntoLibrary(root, file, folder, now);
            });
            const QUuid id = m_library.add(std::move(item)).id;
            showLibrary();
            if (session(attachTo)) {
                m_drafts[attachTo].attachments.push_back(id);
                saveDrafts();
                if (attachTo == m_selection)
                    Q_EMIT attachmentIDsChanged();
            }
        } catch (const Cancelled&) {
            co_return;
        } catch (const Error& error) {
            failure = error.message();
        }
        if (!failure.isEmpty())
            setStatusMessage(failure);
    }
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
    // What is deleted is attached nowhere.
    for (auto& [session, draft] : m_drafts)
        std::erase(draft.attachments, id);
    saveDrafts();
    showLibrary();
    Q_EMIT attachmentIDsChanged();
}

void AppModel::restoreItem(const QUuid& id)
{
    attempt([&] { m_library.restore(id); });
    showLibrary();
}

void AppModel::removeItemForGood(const QUuid& id)
{
    attempt([&] { m_library.removeForGood(id); });
    showLibrary();
}

void AppModel::backUp()
{
    m_backup = followBackup();
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
}

void AppModel::restoreBackup(const QString& name)
{
    if (!refuseWhileStreaming())
        m_backup = followRestore(name);
}

Task<void> AppModel::followRestore(QString name)
{
    QString status;
    try {
        co_await m_keeper.backUp(m_library.items());
        BackupContents contents = co_await readBackup(&m_worker, m_location.folder(), name);
        m_library.replaceItems(std::move(contents.items));
        m_sessions = std::move(contents.sessions);
        m_sessions.sort();
        if (m_sessions.empty())
            insertNewConversation();
        setFailure(std::nullopt);
        setReplaced(nullptr);
        setRemoved(nullptr);
        m_selection = QUuid();
        Q_EMIT sessionsChanged();
        select(m_sessions.front().id);
        saveSessions();
        showLibrary();
        status = tr("Restored backup %1").arg(name);
    } catch (const Cancelled&) {
        co_return;
    } catch (const Error& error) {
        status = error.message();
    }
    setStatusMessage(status);
}

std::vector<PlannedProjectFile> AppModel::planProjectFiles(const QUuid& message)
{
    const ChatSession* const selected = selectedSession();
    const ChatMessage* const reply = messageOf(selected, message);
    const std::vector<ProjectFile> files = reply ? projectFiles(reply->content) : std::vector<ProjectFile>();
    std::vector<PlannedProjectFile> planned;
    if (files.empty())
        setStatusMessage(noProjectFilesStatus());
    else
        attempt([&] { planned = varnel::planProjectFiles(*selected, files); });
    return planned;
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
    ProjectBackup backup;
    const bool done = attempt([&] {
        const std::vector<QUrl> written = varnel::writeProjectFiles(*selected, files, backup);
        const QUrl folder = selected->projectURL().value_or(QUrl());
        setStatusMessage(projectWriteStatus(written.size(), folder));
        m_services.log.log(projectWriteLogLine(folder));
    });
    if (done || !backup.files.empty())
        m_projectBackup = std::move(backup);
    Q_EMIT projectFilesChanged();
}

void AppModel::restoreProjectFiles()
{
    if (!m_projectBackup)
        return;
    const QStringList problems = varnel::restoreProjectFiles(*m_projectBackup);
    m_projectBackup.reset();
    setStatusMessage(problems.isEmpty() ? tr("The overwritten files are back as they were.")
                                        : problems.join(QLatin1Char(' ')));
    Q_EMIT projectFilesChanged();
}

} // namespace varnel
