// The turns and the checks of the model: where its flows are started, and where they report to.
#include "engine/AppModel.h"

#include "engine/ConnectionTexts.h"
#include "engine/ConversationTitle.h"
#include "engine/Probe.h"
#include "ollama/OllamaError.h"

#include <algorithm>

namespace varnel {

namespace {

const QString retryMessage = QStringLiteral("The reply stalled. Trying again…");

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

auto findMessage(ChatSession& session, const QUuid& id)
{
    return std::find_if(session.messages.begin(), session.messages.end(),
                        [&id](const ChatMessage& message) { return message.id == id; });
}

TurnRequest requestFor(const ChatSession& session, const ConnectionSettings& connection)
{
    return {
        .baseURL = connection.baseURL(),
        .chat = {.model = session.model,
                 .systemText = session.systemPrompt,
                 .history = session.messages,
                 .media = {},
                 .temperature = session.temperature,
                 .contextLength = session.contextLength,
                 .keepAlive = session.keepAlive,
                 .predictionLimit = {}},
        .backend = session.model,
    };
}

} // namespace

void AppModel::send()
{
    if (m_isStreaming) {
        setStatusMessage(QStringLiteral("A reply is still running. Stop it or wait until it ends."));
        return;
    }
    ChatSession* const session = find(m_selection);
    const QString prompt = draft().trimmed();
    if (!session || prompt.isEmpty())
        return;
    session->messages.push_back(makeMessage(ChatRole::User, prompt, m_services.clock.now()));
    if (session->title == QLatin1String("New conversation"))
        session->title = titleFromPrompt(prompt);
    m_drafts.erase(m_selection);
    Q_EMIT draftChanged();
    startTurn(*session);
}

void AppModel::startTurn(ChatSession& session)
{
    const QUuid id = session.id;
    TurnRequest request = requestFor(session, m_connection);
    ChatMessage reply = makeMessage(ChatRole::Assistant, QString(), m_services.clock.now());
    reply.backend = request.backend;
    const QUuid message = reply.id;
    session.messages.push_back(std::move(reply));
    setFailure(std::nullopt);
    setStatusMessage(QString());
    m_retried = false;
    setStreaming(id, message);
    touch(session);
    Q_EMIT messagesChanged(id);

    m_stopTurn = std::stop_source();
    m_running = followRunning(m_stopTurn.get_token());
    m_turn = followTurn(std::move(request), id, message, m_stopTurn.get_token());
}

Task<void> AppModel::followTurn(TurnRequest request, QUuid session, QUuid message, std::stop_token stop)
{
    QString failureText;
    try {
        const TurnObserver observer{
            .onProgress = [this, session,
                           message](const QString& thinking,
                                    const QString& reply) { showReply(session, message, thinking, reply); },
            .onRetry =
                [this](const QString&) {
                    m_retried = true;
                    setStatusMessage(retryMessage);
                },
        };
        const TurnOutcome outcome = co_await runTurn(std::move(request), m_services.clock, observer, stop);
        completeReply(session, message, outcome);
        if (m_retried)
            setStatusMessage(QString());
    } catch (const Cancelled&) {
        setStatusMessage(QStringLiteral("Stopped."));
    } catch (const TransportError&) {
        failureText = unansweredMessage(m_connection, false);
    } catch (const OllamaError& error) {
        failureText = error.kind() == OllamaError::Kind::Unreachable ? unansweredMessage(m_connection, false)
                                                                     : error.message();
    } catch (const Error& error) {
        failureText = error.message();
    }
    endTurn(session, message, failureText);
}

void AppModel::showReply(const QUuid& session, const QUuid& message, const QString& thinking,
                         const QString& reply)
{
    ChatSession* const conversation = find(session);
    if (!conversation)
        return;
    const auto found = findMessage(*conversation, message);
    if (found == conversation->messages.end())
        return;
    found->thinking = thinking;
    found->content = reply;
    Q_EMIT messageChanged(session, message);
}

void AppModel::completeReply(const QUuid& session, const QUuid& message, const TurnOutcome& outcome)
{
    ChatSession* const conversation = find(session);
    if (!conversation)
        return;
    const auto found = findMessage(*conversation, message);
    if (found == conversation->messages.end())
        return;
    found->duration = outcome.duration.count();
    const double writing = (outcome.duration - outcome.untilFirstPiece).count();
    ReplyFacts facts;
    if (outcome.pieces >= 10 && writing > 0.1)
        facts.tokensPerSecond = (outcome.pieces - 1) / writing;
    m_facts[message] = facts;
}

void AppModel::endTurn(const QUuid& session, const QUuid& message, const QString& failureText)
{
    setStreaming(QUuid(), QUuid());
    if (!failureText.isEmpty())
        setStatusMessage(failureText);
    ChatSession* const conversation = find(session);
    if (!conversation)
        return;
    const auto found = findMessage(*conversation, message);
    if (found == conversation->messages.end())
        return;
    if (!failureText.isEmpty() && found != conversation->messages.begin())
        setFailure(TurnFailure{session, std::prev(found)->id, failureText});
    // A reply of which nothing came is none.
    if (found->content.isEmpty() && found->thinking.isEmpty()) {
        conversation->messages.erase(found);
        Q_EMIT messagesChanged(session);
    } else {
        Q_EMIT messageChanged(session, message);
    }
    touch(*conversation);
}

void AppModel::stop()
{
    m_stopTurn.request_stop();
}

void AppModel::tryAgain()
{
    if (!m_failure || m_isStreaming)
        return;
    ChatSession* const conversation = find(m_failure->session);
    if (!conversation)
        return;
    const auto prompt = findMessage(*conversation, m_failure->prompt);
    if (prompt == conversation->messages.end())
        return;
    conversation->messages.erase(std::next(prompt), conversation->messages.end());
    startTurn(*conversation);
}

void AppModel::editFailed()
{
    if (!m_failure || m_isStreaming)
        return;
    const QUuid session = m_failure->session;
    ChatSession* const conversation = find(session);
    if (!conversation)
        return;
    const auto prompt = findMessage(*conversation, m_failure->prompt);
    if (prompt == conversation->messages.end())
        return;
    // What was typed since is not lost: it stays behind what comes back.
    const QString typed = m_drafts[session];
    m_drafts[session] = typed.isEmpty() ? prompt->content : prompt->content + QStringLiteral("\n\n") + typed;
    conversation->messages.erase(prompt, conversation->messages.end());
    setFailure(std::nullopt);
    Q_EMIT messagesChanged(session);
    announceSession(session);
    if (session == m_selection)
        Q_EMIT draftChanged();
}

void AppModel::checkConnection()
{
    m_stopProbe.request_stop();
    m_stopProbe = std::stop_source();
    setLinkState(LinkState::Connecting);
    m_probe = followProbe(m_stopProbe.get_token());
}

Task<void> AppModel::followProbe(std::stop_token stop)
{
    QString failureText;
    try {
        const ProbeResult result =
            co_await probe(OllamaClient(m_connection.baseURL(), m_http, std::chrono::seconds(5)), stop);
        const QString host = m_connection.hostLabel();
        const QString report = reportOf(result);
        m_installedModels = result.models;
        setConnectionTexts(report, QStringLiteral("Connected to %1. %2").arg(host, report));
        setStatusMessage(
            QStringLiteral("Connected to %1 · %2 models").arg(host, QString::number(result.models.size())));
        setLinkState(LinkState::Connected);
        Q_EMIT installedModelsChanged();
        refreshRunningModels();
        co_return;
    } catch (const Cancelled&) {
        co_return; // a newer check says what is to be said
    } catch (const Error&) {
        failureText = unansweredMessage(m_connection, false);
    }
    setLinkState(LinkState::Offline);
    setConnectionTexts(failureText, failureText);
    setStatusMessage(failureText);
}

void AppModel::refreshRunningModels()
{
    if (!m_isStreaming)
        m_running = followRunning({});
}

Task<void> AppModel::followRunning(std::stop_token stop)
{
    try {
        const OllamaClient client(m_connection.baseURL(), m_http, std::chrono::seconds(5));
        m_runningModels = co_await client.listRunning(stop);
        Q_EMIT runningModelsChanged();
    } catch (const Cancelled&) {
        co_return;
    } catch (const Error&) {
        co_return; // it only tells whether a model is being loaded; the turn itself says what is wrong
    }
}

} // namespace varnel
