#include "engine/AppModel.h"

#include "base/Text.h"
#include "store/NewConversation.h"
#include "store/Preferences.h"

#include <algorithm>

namespace varnel {

namespace {

constexpr std::chrono::seconds undoTime(10);

bool isEmptyReply(const ChatMessage& message)
{
    return message.role == ChatRole::Assistant && message.content.isEmpty() && message.thinking.isEmpty();
}

} // namespace

AppModel::AppModel(Services services, QObject* parent)
    : QObject(parent)
    , m_services(services)
    , m_connection(services.preferences.connection())
    , m_connectionReport(QStringLiteral("Not tested"))
    , m_connectionDetail(m_connection.hostLabel())
{
    insertNewConversation();
    m_selection = m_sessions.front().id;
}

AppModel::~AppModel()
{
    m_turn.reset();
    m_probe.reset();
    m_running.reset();
    m_undoTime.reset();
}

const ChatSession* AppModel::session(const QUuid& id) const
{
    const auto found = std::find_if(m_sessions.begin(), m_sessions.end(),
                                    [&id](const ChatSession& session) { return session.id == id; });
    return found == m_sessions.end() ? nullptr : &*found;
}

ChatSession* AppModel::find(const QUuid& id)
{
    return const_cast<ChatSession*>(session(id));
}

QString AppModel::draft() const
{
    const auto found = m_drafts.find(m_selection);
    return found == m_drafts.end() ? QString() : found->second;
}

QString AppModel::defaultModel() const
{
    return m_services.preferences.defaultModel();
}

QString AppModel::selectedTitle() const
{
    const ChatSession* const selected = selectedSession();
    return selected ? selected->title : QString();
}

QString AppModel::selectedModel() const
{
    const ChatSession* const selected = selectedSession();
    return selected ? selected->model : QString();
}

bool AppModel::selectedIsEmpty() const
{
    const ChatSession* const selected = selectedSession();
    return !selected || selected->messages.empty();
}

ReplyFacts AppModel::factsOf(const QUuid& message) const
{
    const auto found = m_facts.find(message);
    return found == m_facts.end() ? ReplyFacts() : found->second;
}

void AppModel::setDraft(const QString& text)
{
    if (text == draft())
        return;
    m_drafts[m_selection] = wellFormed(text);
    Q_EMIT draftChanged();
}

void AppModel::setSessionQuery(const QString& text)
{
    if (text == m_sessionQuery)
        return;
    m_sessionQuery = text;
    Q_EMIT sessionQueryChanged();
}

void AppModel::select(const QUuid& id)
{
    if (id == m_selection || !session(id))
        return;
    m_selection = id;
    Q_EMIT selectionChanged();
    Q_EMIT selectedSessionChanged();
    Q_EMIT draftChanged();
}

void AppModel::insertNewConversation()
{
    m_sessions.insert(m_sessions.begin(),
                      varnel::newConversation(m_services.preferences, m_services.clock.now()));
}

void AppModel::newConversation()
{
    if (const ChatSession* const selected = selectedSession(); selected && selected->messages.empty())
        return;
    insertNewConversation();
    Q_EMIT sessionsChanged();
    select(m_sessions.front().id);
}

void AppModel::announceSession(const QUuid& id)
{
    Q_EMIT sessionChanged(id);
    if (id == m_selection)
        Q_EMIT selectedSessionChanged();
}

void AppModel::touch(ChatSession& session)
{
    session.updatedAt = m_services.clock.now();
    moveIntoPlace(session);
}

void AppModel::moveIntoPlace(ChatSession& session)
{
    const QUuid id = session.id;
    // Only this one may stand in the wrong place now; it goes in front of those that are as new.
    const auto place = m_sessions.begin() + (&session - m_sessions.data());
    ChatSession moved = std::move(*place);
    m_sessions.erase(place);
    const auto comesBefore = [](const ChatSession& a, const ChatSession& b) {
        return a.pinned != b.pinned ? a.pinned : a.updatedAt > b.updatedAt;
    };
    const auto target = std::lower_bound(m_sessions.begin(), m_sessions.end(), moved, comesBefore);
    m_sessions.insert(target, std::move(moved));
    Q_EMIT sessionsChanged();
    announceSession(id);
}

void AppModel::rename(const QUuid& id, const QString& title)
{
    ChatSession* const session = find(id);
    const QString trimmed = wellFormed(title).simplified();
    if (!session || trimmed.isEmpty() || trimmed == session->title)
        return;
    session->title = trimmed;
    announceSession(id);
}

void AppModel::togglePinned(const QUuid& id)
{
    if (ChatSession* const session = find(id)) {
        session->pinned = !session->pinned;
        moveIntoPlace(*session);
    }
}

void AppModel::remove(const QUuid& id)
{
    const auto found = std::find_if(m_sessions.begin(), m_sessions.end(),
                                    [&id](const ChatSession& session) { return session.id == id; });
    if (found == m_sessions.end())
        return;
    if (id == m_streamingSession)
        stop();
    RemovedSession removed{.session = std::move(*found), .draft = m_drafts[id], .replacement = {}};
    std::erase_if(removed.session.messages, isEmptyReply);
    const auto next = m_sessions.erase(found);
    m_drafts.erase(id);
    QUuid neighbour;
    if (m_sessions.empty()) {
        insertNewConversation();
        neighbour = removed.replacement = m_sessions.front().id;
    } else {
        neighbour = next == m_sessions.end() ? m_sessions.back().id : next->id;
    }
    Q_EMIT sessionsChanged();
    if (id == m_selection)
        select(neighbour);
    // An empty conversation is as easily made anew.
    if (removed.session.messages.empty() && removed.draft.isEmpty())
        return;
    setRemoved(std::move(removed));
    m_undoTime = followUndoTime();
}

void AppModel::undoRemove()
{
    if (!m_removed)
        return;
    RemovedSession removed = std::move(*m_removed);
    setRemoved(std::nullopt);
    const QUuid id = removed.session.id;
    const ChatSession* const replacement = session(removed.replacement);
    if (replacement && replacement->messages.empty() && !m_drafts.contains(removed.replacement))
        m_sessions.erase(m_sessions.begin() + (replacement - m_sessions.data()));
    if (!removed.draft.isEmpty())
        m_drafts[id] = removed.draft;
    m_sessions.insert(m_sessions.begin(), std::move(removed.session));
    moveIntoPlace(m_sessions.front());
    select(id);
}

Task<void> AppModel::followUndoTime()
{
    co_await m_services.clock.sleepFor(undoTime, {});
    setRemoved(std::nullopt);
}

void AppModel::setRemoved(std::optional<RemovedSession> removed)
{
    m_removed = std::move(removed);
    Q_EMIT removedChanged();
}

QString AppModel::removedTitle() const
{
    return m_removed ? m_removed->session.title : QString();
}

void AppModel::chooseModel(const QString& name)
{
    ChatSession* const session = find(m_selection);
    if (!session || name.isEmpty() || name == session->model)
        return;
    session->model = name;
    announceSession(session->id);
}

void AppModel::setStatusMessage(const QString& text)
{
    if (text == m_statusMessage)
        return;
    m_statusMessage = text;
    Q_EMIT statusMessageChanged();
}

void AppModel::setLinkState(LinkState state)
{
    if (state == m_linkState)
        return;
    m_linkState = state;
    Q_EMIT linkStateChanged();
}

void AppModel::setConnectionTexts(const QString& report, const QString& detail)
{
    m_connectionReport = report;
    m_connectionDetail = detail;
    Q_EMIT connectionReportChanged();
    Q_EMIT connectionDetailChanged();
}

void AppModel::setFailure(std::optional<TurnFailure> failure)
{
    if (failure == m_failure)
        return;
    m_failure = std::move(failure);
    Q_EMIT failureChanged();
}

void AppModel::setStreaming(const QUuid& session, const QUuid& message)
{
    m_streamingSession = session;
    m_streamingMessage = message;
    m_isStreaming = !session.isNull();
    Q_EMIT isStreamingChanged();
}

} // namespace varnel
