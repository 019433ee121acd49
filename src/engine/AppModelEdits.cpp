// Asking again: what replaces messages of a conversation or branches from them, and taking that back.
#include "engine/AppModelPrivate.h"

#include "base/Text.h"
#include "engine/PromptText.h"
#include "store/NewConversation.h"
#include "store/Preferences.h"

#include <algorithm>

namespace varnel {

namespace {

HandoffKind handoffKind(LibraryKind kind)
{
    switch (kind) {
    case LibraryKind::Image:
        return HandoffKind::Image;
    case LibraryKind::Pdf:
        return HandoffKind::Pdf;
    case LibraryKind::File:
    case LibraryKind::Link:
        break;
    }
    return HandoffKind::Text;
}

QString wordOf(HandoffKind kind)
{
    switch (kind) {
    case HandoffKind::Image:
        return QStringLiteral("image");
    case HandoffKind::Pdf:
        return QStringLiteral("PDF");
    case HandoffKind::Text:
        break;
    }
    return QStringLiteral("text");
}

} // namespace

void AppModel::setReplaced(std::unique_ptr<ReplacedMessages> replaced)
{
    m_replaced = std::move(replaced);
    const bool canUndo = m_replaced != nullptr;
    const bool undoesFork = canUndo && !m_replaced->fork.isNull();
    const QUuid session = !canUndo ? QUuid() : undoesFork ? m_replaced->fork : m_replaced->session;
    if (session == m_undoSession && undoesFork == m_undoesFork)
        return;
    m_canUndoEdit = canUndo;
    m_undoesFork = undoesFork;
    m_undoSession = session;
    Q_EMIT canUndoEditChanged();
    Q_EMIT undoesHereChanged();
}

/// Takes away the messages from one on, if there are any, keeping them for undoEdit().
void AppModel::replaceFrom(const QUuid& session, std::size_t index)
{
    ChatSession* const conversation = edit(session);
    auto& messages = conversation->messages;
    if (index >= messages.size())
        return;
    // What a failed turn left is worth less than what that turn replaced, so this goes on being kept.
    const bool isOfFailed = m_failure && m_failure->session == session && m_replaced &&
                            m_replaced->session == session && m_replaced->fork.isNull() &&
                            m_replaced->kept <= messages.size();
    auto replaced = isOfFailed ? std::move(m_replaced) : std::make_unique<ReplacedMessages>();
    if (!isOfFailed) {
        replaced->session = session;
        replaced->kept = messages.size();
    }
    const auto at = [&messages](std::size_t place) {
        return messages.begin() + static_cast<std::ptrdiff_t>(place);
    };
    if (index < replaced->kept) {
        replaced->messages.insert(replaced->messages.begin(), at(index), at(replaced->kept));
        replaced->kept = index;
    }
    messages.erase(at(index), messages.end());
    setReplaced(std::move(replaced));
    setFailure(std::nullopt);
    announceSession(session);
    Q_EMIT messagesChanged(session);
}

/// Puts a prompt with another content in place of one and all that follows it.
void AppModel::replacePrompt(const QUuid& session, std::size_t index, const QString& content)
{
    ChatMessage prompt = this->session(session)->messages[index];
    prompt.id = QUuid::createUuid();
    prompt.content = content;
    prompt.createdAt = m_services.clock.now();
    replaceFrom(session, index);
    edit(session)->messages.push_back(std::move(prompt));
    Q_EMIT messagesChanged(session);
}

void AppModel::tryAgain()
{
    if (!m_failure || refuseWhileStreaming() || refusesPassthrough(m_failure->session))
        return;
    const QUuid session = m_failure->session;
    const ChatSession* const conversation = this->session(session);
    const QUuid prompt = m_failure->prompt;
    if (conversation && indexOf(*conversation, prompt) < conversation->messages.size())
        resend(session, prompt);
}

void AppModel::editFailed()
{
    if (!m_failure || refuseWhileStreaming())
        return;
    const QUuid session = m_failure->session;
    const ChatSession* const conversation = this->session(session);
    const std::size_t prompt = conversation ? indexOf(*conversation, m_failure->prompt) : 0;
    if (!conversation || prompt == conversation->messages.size())
        return;
    const QString content = conversation->messages[prompt].content;
    Draft& draft = m_drafts[session];
    // What was typed since is not lost: it stays behind what comes back.
    const QString text = promptParts(content).prompt;
    draft.text = draft.text.isEmpty() ? text : text + QStringLiteral("\n\n") + draft.text;
    for (const LibraryItem& item : attachedItems(content)) {
        if (std::find(draft.attachments.begin(), draft.attachments.end(), item.id) == draft.attachments.end())
            draft.attachments.push_back(item.id);
    }
    replaceFrom(session, prompt);
    // At once and before the conversation without the prompt, so that its words are always on the disk.
    m_keeper.saveDrafts(m_drafts);
    saveSessions();
    if (session == m_selection) {
        Q_EMIT draftChanged();
        Q_EMIT attachmentIDsChanged();
    }
}

void AppModel::regenerate()
{
    if (!selectedSession() || refuseWhileStreaming() || refusesPassthrough(m_selection))
        return;
    const ChatSession* const selected = selectedSession();
    const auto& messages = selected->messages;
    const auto prompt = std::find_if(messages.rbegin(), messages.rend(), [](const ChatMessage& message) {
        return message.role == ChatRole::User;
    });
    if (prompt != messages.rend())
        resend(selected->id, prompt->id);
}

void AppModel::editAndResend(const QUuid& message, const QString& text)
{
    if (!selectedSession() || text.trimmed().isEmpty() || refuseWhileStreaming() ||
        refusesPassthrough(m_selection))
        return;
    const ChatSession* const selected = selectedSession();
    const std::size_t index = indexOf(*selected, message);
    if (index == selected->messages.size() || selected->messages[index].role != ChatRole::User)
        return;
    resend(selected->id, message, text);
}

void AppModel::fork(const QUuid& message)
{
    const ChatSession* const selected = selectedSession();
    const std::size_t index = selected ? indexOf(*selected, message) : 0;
    if (!selected || index == selected->messages.size() || refuseWhileStreaming())
        return;
    ChatSession forked = *selected;
    forked.id = QUuid::createUuid();
    forked.createdAt = forked.updatedAt = m_services.clock.now();
    forked.pinned = false;
    // A prompt goes into the composer, to be changed; a reply stays what it is.
    const bool isPrompt = forked.messages[index].role == ChatRole::User;
    Draft draft;
    if (isPrompt) {
        draft.text = promptParts(forked.messages[index].content).prompt;
        for (const LibraryItem& item : attachedItems(forked.messages[index].content))
            draft.attachments.push_back(item.id);
    }
    forked.messages.resize(isPrompt ? index : index + 1);
    for (ChatMessage& each : forked.messages)
        each.id = QUuid::createUuid();
    auto replaced = std::make_unique<ReplacedMessages>();
    replaced->session = selected->id;
    replaced->fork = forked.id;
    if (!draft.isEmpty())
        m_drafts[forked.id] = std::move(draft);
    saveDrafts();
    insertAndSelect(std::move(forked));
    setReplaced(std::move(replaced));
}

void AppModel::undoEdit()
{
    if (!m_replaced || refuseWhileStreaming())
        return;
    const std::unique_ptr<ReplacedMessages> replaced = std::move(m_replaced);
    setReplaced(nullptr);
    if (!replaced->fork.isNull()) {
        select(replaced->session);
        remove(replaced->fork);
        return;
    }
    ChatSession* const conversation = edit(replaced->session);
    if (!conversation || conversation->messages.size() < replaced->kept)
        return;
    conversation->messages.resize(replaced->kept);
    conversation->messages.insert(conversation->messages.end(), replaced->messages.begin(),
                                  replaced->messages.end());
    setFailure(std::nullopt);
    touch(replaced->session);
    Q_EMIT messagesChanged(replaced->session);
}

void AppModel::handOffReply(const QUuid& message)
{
    const ChatSession* const selected = selectedSession();
    const std::size_t index = selected ? indexOf(*selected, message) : 0;
    if (!selected || index == selected->messages.size())
        return;
    Draft draft{.text = selected->messages[index].content, .attachments = {}};
    openHandOff(std::move(draft));
    setStatusMessage(QStringLiteral("Opened a new conversation"));
}

void AppModel::handOffItem(const QUuid& item)
{
    const LibraryItem* const found = libraryItem(item);
    if (!found || !found->isLive())
        return;
    const QString kind = wordOf(handoffKind(found->kind));
    const LibraryItem handedOff = *found;
    openHandOff({.text = QStringLiteral("Read the attached %1").arg(kind), .attachments = {item}});
    setStatusMessage(unreadableReason(handedOff).isEmpty()
                         ? QStringLiteral("Opened a new conversation")
                         : QStringLiteral("Opened a new conversation. The current model cannot read this %1. "
                                          "Choose one under Send with.")
                               .arg(kind));
}

void AppModel::openHandOff(Draft draft)
{
    ChatSession session = varnel::newConversation(m_services.preferences, m_services.clock.now());
    m_drafts[session.id] = std::move(draft);
    saveDrafts();
    insertAndSelect(std::move(session));
}

} // namespace varnel
