#include "engine/AppState.h"

#include <algorithm>

namespace varnel {

const ChatSession* AppState::session(const QUuid& id) const
{
    const std::size_t index = m_sessions.indexOf(id);
    return index < m_sessions.size() ? &m_sessions[index] : nullptr;
}

const LibraryItem* AppState::libraryItem(const QUuid& id) const
{
    const auto found = std::find_if(m_libraryItems.begin(), m_libraryItems.end(),
                                    [&id](const LibraryItem& item) { return item.id == id; });
    return found == m_libraryItems.end() ? nullptr : &*found;
}

QString AppState::draft() const
{
    const auto found = m_drafts.find(m_selection);
    return found == m_drafts.end() ? QString() : found->second.text;
}

std::vector<QUuid> AppState::attachmentIDs() const
{
    const auto found = m_drafts.find(m_selection);
    return found == m_drafts.end() ? std::vector<QUuid>() : found->second.attachments;
}

ReplyFacts AppState::factsOf(const QUuid& message) const
{
    const auto found = m_facts.find(message);
    return found == m_facts.end() ? ReplyFacts() : found->second;
}

void AppState::setLibraryQuery(const QString& text)
{
    assign(m_libraryQuery, text, &AppState::libraryQueryChanged);
}

void AppState::setSessionQuery(const QString& text)
{
    assign(m_sessionQuery, text, &AppState::sessionQueryChanged);
}

void AppState::setModelQuery(const QString& text)
{
    assign(m_modelQuery, text, &AppState::modelQueryChanged);
}

void AppState::setStatusMessage(const QString& text)
{
    assign(m_statusMessage, text, &AppState::statusMessageChanged);
}

void AppState::clearStatus(const QString& text)
{
    if (m_statusMessage == text)
        setStatusMessage(QString());
}

} // namespace varnel
