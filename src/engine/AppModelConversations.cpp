// The list of conversations, their settings and the composer.
#include "engine/AppModelPrivate.h"

#include "base/Text.h"
#include "store/ModelRoles.h"
#include "store/NewConversation.h"
#include "store/Preferences.h"
#include "store/ProjectFiles.h"

#include <algorithm>

namespace varnel {

namespace {

constexpr std::chrono::seconds undoTime(10);

} // namespace

ChatSession* AppModel::edit(const QUuid& id)
{
    const std::size_t index = m_sessions.indexOf(id);
    return index < m_sessions.size() ? &m_sessions.edit(index) : nullptr;
}

ChatMessage* AppModel::editMessage(const QUuid& session, const QUuid& message)
{
    ChatSession* const conversation = edit(session);
    if (!conversation)
        return nullptr;
    const auto found = findMessage(conversation->messages, message);
    return found == conversation->messages.end() ? nullptr : &*found;
}

std::size_t AppModel::placeFor(const ChatSession& session) const
{
    const auto comesBefore = [](const ChatSession& a, const ChatSession& b) {
        return a.pinned != b.pinned ? a.pinned : a.updatedAt > b.updatedAt;
    };
    std::size_t place = 0;
    for (const ChatSession& other : m_sessions) {
        if (other.id == session.id)
            continue;
        if (!comesBefore(other, session))
            break;
        ++place;
    }
    return place;
}

void AppModel::moveIntoPlace(const QUuid& id)
{
    // Only this one may stand in the wrong place now; it goes in front of those that are as new.
    const std::size_t index = m_sessions.indexOf(id);
    m_sessions.move(index, placeFor(m_sessions[index]));
    Q_EMIT sessionsChanged();
    announceSession(id);
}

void AppModel::touch(const QUuid& id)
{
    edit(id)->updatedAt = m_services.clock.now();
    moveIntoPlace(id);
    saveSessions();
}

void AppModel::announceSession(const QUuid& id)
{
    if (id == m_selection)
        m_historyUse.reset();
    Q_EMIT sessionChanged(id);
    if (id == m_selection)
        Q_EMIT selectedSessionChanged();
}

void AppModel::select(const QUuid& id)
{
    if (id == m_selection || !session(id))
        return;
    m_selection = id;
    announceSelection();
}

void AppModel::announceSelection()
{
    m_historyUse.reset();
    Q_EMIT selectionChanged();
    Q_EMIT undoesHereChanged();
    Q_EMIT selectedSessionChanged();
    Q_EMIT draftChanged();
    Q_EMIT attachmentIDsChanged();
}

void AppModel::insertNewConversation()
{
    ChatSession session = varnel::newConversation(m_services.preferences, m_services.clock.now());
    const std::size_t place = placeFor(session);
    m_sessions.insert(place, std::move(session));
}

void AppModel::insertAndSelect(ChatSession session)
{
    const QUuid id = session.id;
    const std::size_t place = placeFor(session);
    m_sessions.insert(place, std::move(session));
    // Whoever looks at the new list finds the selection in it.
    m_selection = id;
    Q_EMIT sessionsChanged();
    saveSessions();
    announceSelection();
}

void AppModel::newConversation()
{
    if (const ChatSession* const selected = selectedSession(); selected && selected->messages.empty())
        return;
    insertAndSelect(varnel::newConversation(m_services.preferences, m_services.clock.now()));
}

void AppModel::addConversation(ChatSession session)
{
    insertAndSelect(std::move(session));
}

void AppModel::rename(const QUuid& id, const QString& title)
{
    const QString trimmed = wellFormed(title).simplified();
    const ChatSession* const renamed = session(id);
    if (!renamed || trimmed.isEmpty() || trimmed == renamed->title)
        return;
    edit(id)->title = trimmed;
    announceSession(id);
    saveSessions();
}

void AppModel::togglePinned(const QUuid& id)
{
    ChatSession* const pinned = edit(id);
    if (!pinned)
        return;
    pinned->pinned = !pinned->pinned;
    moveIntoPlace(id);
    saveSessions();
}

void AppModel::duplicate(const QUuid& id)
{
    const ChatSession* const original = session(id);
    if (!original)
        return;
    ChatSession copy = *original;
    copy.id = QUuid::createUuid();
    copy.title = tr("Copy of %1").arg(original->title);
    copy.createdAt = copy.updatedAt = m_services.clock.now();
    // A reply that is still being written belongs to the original.
    std::erase_if(copy.messages,
                  [this](const ChatMessage& message) { return message.id == m_streamingMessage; });
    for (ChatMessage& message : copy.messages)
        message.id = QUuid::createUuid();
    insertAndSelect(std::move(copy));
}

void AppModel::remove(const QUuid& removedId)
{
    const QUuid id = removedId; // which may be that of the very conversation that goes
    const std::size_t index = m_sessions.indexOf(id);
    if (index == m_sessions.size())
        return;
    if (id == m_streamingSession) {
        showLatest();
        stop();
    } else if (id == m_preparing) {
        stop(); // whoever has to unlock a keyring for it first need not any more
    }
    if (m_replaced && (m_replaced->session == id || m_replaced->fork == id))
        setReplaced(nullptr);
    RemovedSession removed;
    removed.until = m_services.clock.steadyNow() + undoTime;
    removed.session = m_sessions[index];
    if (const auto draft = m_drafts.find(id); draft != m_drafts.end()) {
        removed.draft = draft->second;
        m_drafts.erase(draft);
        saveDrafts();
    }
    std::erase_if(removed.session.messages, isEmptyReply);
    m_sessions.remove(index);
    if (m_sessions.empty()) {
        insertNewConversation();
        removed.replacement = m_sessions.front().id;
    }
    const bool wasSelected = id == m_selection;
    if (wasSelected)
        m_selection = m_sessions[std::min(index, m_sessions.size() - 1)].id;
    Q_EMIT sessionsChanged();
    saveSessions();
    if (wasSelected)
        announceSelection();
    if (isUntouched(removed.session) && removed.draft.isEmpty())
        return;
    m_removed.push_back(std::move(removed));
    announceRemoved();
    if (!m_undoTime.isRunning())
        m_undoTime = followUndoTime();
}

/// Whether a conversation is as easily made anew.
bool AppModel::isUntouched(const ChatSession& session) const
{
    ChatSession fresh = newSettings();
    fresh.id = session.id;
    fresh.createdAt = session.createdAt;
    fresh.updatedAt = session.updatedAt;
    return session == fresh;
}

void AppModel::undoRemove()
{
    if (m_removed.empty())
        return;
    RemovedSession removed = std::move(m_removed.back());
    m_removed.pop_back();
    announceRemoved();
    const ChatSession* const replacement = session(removed.replacement);
    if (replacement && isUntouched(*replacement) && !m_drafts.contains(removed.replacement))
        m_sessions.remove(m_sessions.indexOf(removed.replacement));
    if (!removed.draft.isEmpty()) {
        m_drafts[removed.session.id] = removed.draft;
        saveDrafts();
    }
    insertAndSelect(std::move(removed.session));
}

Task<void> AppModel::followUndoTime()
{
    const Clock& clock = m_services.clock;
    while (!m_removed.empty()) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(m_removed.front().until - clock.steadyNow());
        co_await clock.sleepFor(std::max(left, std::chrono::milliseconds(0)), {});
        const auto now = clock.steadyNow();
        std::erase_if(m_removed, [now](const RemovedSession& removed) { return removed.until <= now; });
        announceRemoved();
    }
}

void AppModel::announceRemoved()
{
    assign(m_removedTitle, m_removed.empty() ? QString() : m_removed.back().session.title,
           &AppState::removedTitleChanged);
}

void AppModel::changeSettings(const std::function<void(ChatSession&)>& change)
{
    changeSettings(m_selection, change);
}

void AppModel::changeSettings(const QUuid& id, const std::function<void(ChatSession&)>& change)
{
    ChatSession* const conversation = edit(id);
    if (!conversation)
        return;
    ChatSession changed = *conversation;
    change(changed);
    changed.id = conversation->id;
    changed.messages = conversation->messages;
    changed.createdAt = conversation->createdAt;
    changed.updatedAt = conversation->updatedAt;
    changed.systemPrompt = wellFormed(changed.systemPrompt);
    if (changed == *conversation)
        return;
    *conversation = std::move(changed);
    announceSession(id);
    saveSessions();
}

void AppModel::chooseModel(const QString& name)
{
    if (name.isEmpty())
        return;
    changeSettings([&name](ChatSession& session) {
        session.model = name;
        session.answerBackend = AnswerBackend::Ollama;
    });
}

void AppModel::chooseRemoteModel(RemoteProvider provider, const QString& model)
{
    changeSettings([&](ChatSession& session) {
        session.answerBackend = AnswerBackend::Remote;
        session.remoteProvider = provider;
        session.remoteModel = model.isEmpty() ? m_services.preferences.remoteModel(provider) : model;
    });
}

void AppModel::chooseWorkContext(WorkContext context)
{
    attempt([&] { m_services.preferences.setWorkContext(context); });
    assign(m_workContext, context, &AppState::workContextChanged);
    const std::optional<BestModel> best = bestModel(context, m_installedModels);
    if (best)
        chooseModel(best->name);
    setStatusMessage(workContextStatus(context, best));
}

void AppModel::setSearch(SearchSource source)
{
    changeSettings([source](ChatSession& session) { session.search = source; });
}

void AppModel::setProjectPath(const QString& path, const QUuid& session)
{
    changeSettings(session.isNull() ? m_selection : session,
                   [&path](ChatSession& session) { session.projectPath = wellFormed(path); });
    setStatusMessage(projectDirectoryStatus(path));
}

void AppModel::setDraft(const QString& text)
{
    if (text == draft())
        return;
    m_drafts[m_selection].text = wellFormed(text);
    Q_EMIT draftChanged();
    saveDrafts();
}

/// Puts a text below what is drafted in a conversation.
void AppModel::addToDraft(const QUuid& session, const QString& text)
{
    QString& draft = m_drafts[session].text;
    if (!draft.trimmed().isEmpty())
        draft += QStringLiteral("\n\n");
    draft += text;
    saveDrafts();
    if (session == m_selection)
        Q_EMIT draftChanged();
}

void AppModel::attach(const QUuid& item)
{
    const LibraryItem* const found = libraryItem(item);
    std::vector<QUuid>& attachments = m_drafts[m_selection].attachments;
    if (!found || !found->isLive() ||
        std::find(attachments.begin(), attachments.end(), item) != attachments.end())
        return;
    attachments.push_back(item);
    Q_EMIT attachmentIDsChanged();
    saveDrafts();
}

void AppModel::detach(const QUuid& item)
{
    if (std::erase(m_drafts[m_selection].attachments, item) == 0)
        return;
    Q_EMIT attachmentIDsChanged();
    saveDrafts();
}

void AppModel::searchSessions()
{
    m_stopSessionSearch.request_stop();
    m_stopSessionSearch = std::stop_source();
    assign(m_sessionHits, std::nullopt, &AppState::sessionHitsChanged);
    const QString query = m_sessionQuery.simplified();
    if (!query.isEmpty())
        m_sessionSearch = followSessionSearch(query, m_stopSessionSearch.get_token());
}

void AppModel::searchSessionsAgain()
{
    // New conversations are searched as well; those known to hold the words stay shown meanwhile.
    if (m_sessionHits)
        m_sessionSearch = followSessionSearch(m_sessionQuery.simplified(), m_stopSessionSearch.get_token());
}

Task<void> AppModel::followSessionSearch(QString query, std::stop_token stop)
{
    try {
        assign(m_sessionHits, co_await varnel::searchSessions(&m_worker, m_sessions, std::move(query), stop),
               &AppState::sessionHitsChanged);
    } catch (const Cancelled&) {
        co_return; // a newer search is under way
    }
}

} // namespace varnel
