// Turns: what the user does about them, and what becomes of the conversation while one runs.
#include "engine/AppModelPrivate.h"

#include "app/DiagnosticsLog.h"
#include "base/Text.h"
#include "engine/ConversationTitle.h"
#include "engine/PromptText.h"
#include "providers/VarnelError.h"

#include <algorithm>

namespace varnel {

namespace {

const QString retryMessage = QStringLiteral("The reply stalled. Trying again…");

} // namespace

ChatMessage makeMessage(ChatRole role, QString content, Instant now)
{
    return {
        .id = QUuid::createUuid(),
        .role = role,
        .content = std::move(content),
        .thinking = {},
        .createdAt = now,
        .backend = {},
        .duration = {},
    };
}

bool AppModel::refuseWhileStreaming()
{
    if (!isBusy())
        return false;
    setStatusMessage(QStringLiteral("A reply is still running. Stop it or wait until it ends."));
    return true;
}

void AppModel::send()
{
    const ChatSession* const session = selectedSession();
    const QString prompt = draft().trimmed();
    const std::vector<QUuid> attachments = attachmentIDs();
    // A prompt that waits for its attachments stays a draft when the program ends before.
    if (m_isEnding || !session || (prompt.isEmpty() && attachments.empty()) || refuseWhileStreaming() ||
        refusesPassthrough(session->id))
        return;
    setPreparing(session->id);
    m_stopTurn = std::stop_source();
    m_turn = followSend(session->id, prompt, attachments, m_stopTurn.get_token());
}

bool AppModel::refusesPassthrough(QUuid session)
{
    const ChatSession* const conversation = this->session(session);
    if (!conversation || conversation->answerBackend != AnswerBackend::Remote || m_passthroughEnabled)
        return false;
    edit(session)->answerBackend = AnswerBackend::Ollama;
    announceSession(session);
    saveSessions();
    setStatusMessage(VarnelError::passthroughDisabled().message());
    return true;
}

/// Nothing of the conversation changes before it is known that the turn can be sent.
Task<void> AppModel::followSend(QUuid session, QString prompt, std::vector<QUuid> attachments,
                                std::stop_token stop)
{
    QString refusal;
    try {
        const ChatSession* const conversation = this->session(session);
        PromptMaterial material = co_await preparePrompt({.conversation = *conversation,
                                                          .prompt = prompt,
                                                          .items = itemsOf(attachments),
                                                          .isFollowUp = false},
                                                         stop);
        ChatSession* const changed = edit(session);
        ChatMessage message = makeMessage(ChatRole::User, material.content, m_services.clock.now());
        changed->messages.push_back(std::move(message));
        if (changed->title == QLatin1String("New conversation") && !prompt.isEmpty())
            changed->title = titleFromPrompt(prompt);
        takeFromDraft(session, prompt, attachments);
        setReplaced(nullptr);
        co_await runPrepared(session, std::move(material), stop);
        co_return;
    } catch (const Cancelled&) {
        refusal = QStringLiteral("Stopped.");
    } catch (const Error& error) {
        refusal = error.message();
    }
    setPreparing(QUuid());
    setStatusMessage(refusal);
}

/// What was typed or attached while the prompt was made ready stays in the composer.
void AppModel::takeFromDraft(const QUuid& session, const QString& prompt,
                             const std::vector<QUuid>& attachments)
{
    Draft& draft = m_drafts[session];
    const QString typed = draft.text.trimmed();
    if (typed.startsWith(prompt))
        draft.text = typed.mid(prompt.size());
    std::erase_if(draft.attachments, [&attachments](const QUuid& item) {
        return std::find(attachments.begin(), attachments.end(), item) != attachments.end();
    });
    if (draft.isEmpty())
        m_drafts.erase(session);
    saveDrafts();
    if (session == m_selection) {
        Q_EMIT draftChanged();
        Q_EMIT attachmentIDsChanged();
    }
}

/// Sends a prompt of a conversation once more, in place of what followed it.
/// @param edited what its own words are from now on, if they change.
void AppModel::resend(QUuid session, QUuid prompt, std::optional<QString> edited)
{
    setPreparing(session);
    m_stopTurn = std::stop_source();
    m_turn = followResend(session, prompt, std::move(edited), m_stopTurn.get_token());
}

/// Like followSend(), it changes nothing before it is known that the turn can be sent.
Task<void> AppModel::followResend(QUuid session, QUuid prompt, std::optional<QString> edited,
                                  std::stop_token stop)
{
    QString refusal;
    try {
        const ChatSession* const conversation = this->session(session);
        QString content = conversation->messages[indexOf(*conversation, prompt)].content;
        if (edited)
            content = withPrompt(content, wellFormed(*edited).trimmed());
        PromptMaterial material = co_await preparePrompt({.conversation = *conversation,
                                                          .prompt = content,
                                                          .items = mediaItemsOf(content),
                                                          .isFollowUp = true},
                                                         stop);
        // Looked for anew: messages may have gone meanwhile.
        const std::size_t index = indexOf(*this->session(session), prompt);
        if (index == this->session(session)->messages.size())
            throw Cancelled();
        if (edited)
            replacePrompt(session, index, content);
        else
            replaceFrom(session, index + 1);
        co_await runPrepared(session, std::move(material), stop);
        co_return;
    } catch (const Cancelled&) {
        refusal = QStringLiteral("Stopped.");
    } catch (const Error& error) {
        refusal = error.message();
    }
    setPreparing(QUuid());
    setStatusMessage(refusal);
}

/// The conversation ends with the prompt; its reply is put behind it and filled.
Task<void> AppModel::runPrepared(QUuid session, PromptMaterial material, std::stop_token stop)
{
    // Another server may be chosen while it runs.
    const ConnectionSettings connection = m_connection;
    const ChatSession& conversation = *this->session(session);
    const QUuid prompt = conversation.messages.back().id;
    const TurnRequest request = turnRequest(conversation, std::move(material));
    const QString searching = request.search ? searchingStatus(request.search->backend) : QString();
    setFailure(std::nullopt);
    setStatusMessage(searching);
    const QUuid message = beginReply(session, request);
    if (std::holds_alternative<OllamaQuestion>(request.question))
        m_running = followRunning(stop);

    std::exception_ptr exception;
    TurnFailure failure;
    try {
        co_await savePrompt(session, prompt, stop);
        const TurnOutcome outcome =
            co_await runTurn(request, turnServices(), observerOf(session, message), stop);
        completeReply(session, message, outcome);
        clearStatus(retryMessage);
        clearStatus(searching);
    } catch (const Cancelled&) {
        setStatusMessage(QStringLiteral("Stopped."));
    } catch (const Error&) {
        exception = std::current_exception();
    }
    if (exception)
        failure = failureOf(exception, request, connection, m_tunnelIsUp);
    endTurn(session, message, failure);
    const bool isLogged = std::holds_alternative<ProviderTurn>(request.question) && !failure.isDetailPrivate;
    if (isLogged && !failure.detail.isEmpty())
        m_services.log.log(QStringLiteral("chat failed, detail: ") + failure.detail);
}

/// Puts an empty reply at the end of a conversation, to be filled.
QUuid AppModel::beginReply(const QUuid& session, const TurnRequest& request)
{
    ChatMessage reply = makeMessage(ChatRole::Assistant, QString(), m_services.clock.now());
    reply.backend = request.backend;
    const QUuid message = reply.id;
    edit(session)->messages.push_back(std::move(reply));
    m_buffers = std::make_shared<TurnBuffers>();
    setStreaming(session, message);
    // Looked up anew: whoever was told may have handed the list to the saving thread.
    edit(session)->updatedAt = m_services.clock.now();
    moveIntoPlace(session);
    Q_EMIT messagesChanged(session);
    return message;
}

/// The prompt is on the disk before it leaves, and does not leave otherwise; the whole follows meanwhile.
Task<void> AppModel::savePrompt(QUuid session, QUuid prompt, std::stop_token stop)
{
    keep(session, prompt);
    const Task<void> saved = m_keeper.flushed(stop);
    // From here on a stop finds everything handed over.
    m_keeper.replyEnded(prompt);
    saveSessions();
    co_await saved;
    if (stop.stop_requested())
        throw Cancelled();
    if (const std::optional<QString> problem = m_keeper.failure(SavedFile::Recovery))
        throw Error(*problem);
}

TurnObserver AppModel::observerOf(const QUuid& session, const QUuid& message)
{
    return {
        .onProgress = [this, session,
                       message](const QString& thinking,
                                const QString& reply) { showReply(session, message, thinking, reply); },
        .onRetry =
            [this](const QString& description) {
                setStatusMessage(retryMessage);
                m_services.log.log(QStringLiteral("chat retry ") + description);
            },
        .onStep =
            [this, session, message](const SearchStep& step) {
                m_facts[message].steps.push_back(step);
                Q_EMIT messageChanged(session, message);
            },
        .approve = m_approval,
        .buffers = m_buffers,
    };
}

void AppModel::showReply(const QUuid& session, const QUuid& message, const QString& thinking,
                         const QString& reply)
{
    ChatMessage* const shown = editMessage(session, message);
    if (!shown)
        return;
    shown->thinking = thinking;
    shown->content = reply;
    keep(session, message);
    Q_EMIT messageChanged(session, message);
}

/// What came since the reply was shown last is in the conversation before that is saved or put aside.
void AppModel::showLatest()
{
    if (m_isStreaming && !m_buffers->isEmpty())
        showReply(m_streamingSession, m_streamingMessage, m_buffers->thinking(), m_buffers->reply());
}

void AppModel::keep(const QUuid& session, const QUuid& message)
{
    const ChatSession* const conversation = this->session(session);
    const std::size_t index = conversation ? indexOf(*conversation, message) : 0;
    if (!conversation || index == conversation->messages.size())
        return;
    m_keeper.keepReply({.session = session,
                        .prompt = index > 0 ? conversation->messages[index - 1].id : QUuid(),
                        .message = conversation->messages[index]});
}

void AppModel::completeReply(const QUuid& session, const QUuid& message, const TurnOutcome& outcome)
{
    ChatMessage* const reply = editMessage(session, message);
    if (!reply)
        return;
    reply->duration = outcome.duration.count();
    ReplyFacts& facts = m_facts[message];
    if (outcome.pieces > 0)
        facts.untilFirstPiece = outcome.untilFirstPiece.count();
    const double writing = (outcome.duration - outcome.untilFirstPiece).count();
    if (outcome.pieces >= 10 && writing > 0.1)
        facts.tokensPerSecond = (outcome.pieces - 1) / writing;
}

void AppModel::endTurn(const QUuid& session, const QUuid& message, TurnFailure failure)
{
    if (!failure.text.isEmpty())
        setStatusMessage(failure.text);
    setStreaming(QUuid(), QUuid());
    if (!failure.text.isEmpty())
        m_services.log.log(QStringLiteral("chat failed ") + failure.text);
    m_keeper.replyEnded(message);
    ChatSession* const conversation = edit(session);
    if (!conversation || indexOf(*conversation, message) == conversation->messages.size()) {
        // Removed while it ran; what was kept of its reply goes with the next save.
        saveSessions();
        Q_EMIT replyEnded(session, message);
        return;
    }
    const auto found = findMessage(conversation->messages, message);
    if (!failure.text.isEmpty() && found != conversation->messages.begin()) {
        failure.session = session;
        failure.prompt = std::prev(found)->id;
        if (failure.offersSearchOff)
            m_modelsWithoutTools.insert(conversation->model);
        setFailure(std::move(failure));
    }
    // A reply of which nothing came is none.
    if (found->content.isEmpty() && found->thinking.isEmpty()) {
        conversation->messages.erase(found);
        Q_EMIT messagesChanged(session);
    } else {
        Q_EMIT messageChanged(session, message);
    }
    touch(session);
    Q_EMIT replyEnded(session, message);
}

void AppModel::stop()
{
    m_stopTurn.request_stop();
}

void AppModel::setFailure(std::optional<TurnFailure> failure)
{
    assign(m_failure, std::move(failure), &AppState::failureChanged);
}

void AppModel::setPreparing(const QUuid& session)
{
    m_preparing = session;
    m_isPreparing = !session.isNull();
    Q_EMIT isStreamingChanged();
}

void AppModel::setStreaming(const QUuid& session, const QUuid& message)
{
    m_streamingSession = session;
    m_streamingMessage = message;
    m_isStreaming = !session.isNull();
    m_preparing = QUuid();
    m_isPreparing = false;
    m_historyUse.reset();
    Q_EMIT isStreamingChanged();
}

} // namespace varnel
