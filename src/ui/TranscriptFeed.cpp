#include "ui/TranscriptFeed.h"

#include "app/DiagnosticsLog.h"
#include "engine/PromptText.h"
#include "store/ProjectFiles.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QLocale>

#include <algorithm>

namespace varnel {

namespace {

/// A server may answer a failure with a whole page.
constexpr qsizetype longestError = 4000;
/// Titles and addresses are shown on one line.
constexpr qsizetype longestLabel = 300;

QString idOf(const QUuid& id)
{
    return id.toString(QUuid::WithoutBraces);
}

const ChatMessage* findMessage(const ChatSession& session, const QUuid& id)
{
    // What changes is nearly always at the end.
    const auto found = std::find_if(session.messages.rbegin(), session.messages.rend(),
                                    [&id](const ChatMessage& message) { return message.id == id; });
    return found == session.messages.rend() ? nullptr : &*found;
}

QString kindName(LibraryKind kind)
{
    switch (kind) {
    case LibraryKind::Pdf:
        return TranscriptFeed::tr("PDF");
    case LibraryKind::Image:
        return TranscriptFeed::tr("Image");
    case LibraryKind::Link:
        return TranscriptFeed::tr("Link");
    default:
        return TranscriptFeed::tr("File");
    }
}

TranscriptStep stepOf(const SearchStep& step)
{
    const QString subject = step.subject.left(longestLabel).simplified();
    if (step.kind == SearchStep::Kind::Search)
        return {TranscriptStep::Kind::Searched, TranscriptFeed::tr("Searched for “%1”").arg(subject)};
    return {TranscriptStep::Kind::Read, TranscriptFeed::tr("Read %1").arg(subject)};
}

TranscriptRemedies remediesOf(const TurnFailure& failure)
{
    TranscriptRemedies remedies;
    remedies.setFlag(TranscriptRemedy::ResetTemperature, failure.offersTemperatureReset);
    remedies.setFlag(TranscriptRemedy::SearchOff, failure.offersSearchOff);
    return remedies;
}

/// Whether a reply holds files for a project. Most say nothing of the kind, and need not be read for it.
bool hasProjectFiles(const QString& reply)
{
    // A file is named behind a colon, on the line that opens a block.
    for (const QLatin1String fence : {QLatin1String("```"), QLatin1String("~~~")}) {
        for (qsizetype at = reply.indexOf(fence); at >= 0; at = reply.indexOf(fence, at)) {
            const qsizetype found = reply.indexOf(QLatin1Char('\n'), at);
            const qsizetype end = found < 0 ? reply.size() : found;
            if (QStringView(reply).sliced(at, end - at).contains(QLatin1Char(':')))
                return !projectFiles(reply).empty();
            at = end;
        }
    }
    return false;
}

bool isLoaded(const std::vector<OllamaRunning>& running, const QString& model)
{
    // The server adds the tag that a name without one stands for.
    const QString tagged = model.contains(QLatin1Char(':')) ? model : model + QStringLiteral(":latest");
    return std::any_of(running.begin(), running.end(), [&](const OllamaRunning& loaded) {
        return loaded.name == model || loaded.name == tagged;
    });
}

} // namespace

TranscriptFeed::TranscriptFeed(AppModel& app, const Clock& clock, QObject* parent)
    : QObject(parent)
    , m_app(app)
    , m_clock(clock)
    , m_transcript(nullptr, [&clock] { return clock.steadyNow(); })
{
    connect(&app, &AppModel::selectionChanged, this, &TranscriptFeed::rebuild);
    connect(&app, &AppModel::messagesChanged, this, &TranscriptFeed::takeMessages);
    connect(&app, &AppModel::messageChanged, this, &TranscriptFeed::takeMessage);
    connect(&app, &AppModel::isStreamingChanged, this, &TranscriptFeed::takeStreaming);
    connect(&app, &AppModel::failureChanged, this, &TranscriptFeed::takeFailure);
    connect(&app, &AppModel::runningModelsChanged, this, &TranscriptFeed::takeRunningModels);
    takeStreaming();
    takeFailure();
    rebuild();
}

TranscriptMessage TranscriptFeed::describe(const ChatSession& session, const ChatMessage& message) const
{
    TranscriptMessage shown;
    shown.id = idOf(message.id);
    shown.role = message.role == ChatRole::User ? TranscriptRole::User : TranscriptRole::Reply;
    if (shown.role == TranscriptRole::User)
        describePrompt(message, shown);
    else
        describeReply(session, message, shown);
    if (const auto& failure = m_app.failure(); failure && failure->prompt == message.id) {
        shown.error = failure->text.left(longestError);
        shown.errorDetail = failure->detail == failure->text ? QString() : failure->detail.left(longestError);
        shown.remedies = remediesOf(*failure);
    }
    return shown;
}

void TranscriptFeed::describePrompt(const ChatMessage& message, TranscriptMessage& shown) const
{
    const PromptParts parts = promptParts(message.content);
    shown.content = parts.prompt;
    for (const PromptAttachment& attachment : parts.attachments)
        shown.chips.append({kindName(attachment.kind), attachment.title.left(longestLabel).simplified()});
    shown.actions =
        TranscriptAction::Copy | TranscriptActions(TranscriptAction::Edit) | TranscriptAction::More;
}

void TranscriptFeed::describeReply(const ChatSession& session, const ChatMessage& message,
                                   TranscriptMessage& shown) const
{
    shown.content = message.content;
    shown.thinking = message.thinking;
    shown.streaming = message.id == m_app.streamingMessage();
    if (shown.streaming && message.content.isEmpty() && message.thinking.isEmpty()) {
        shown.waitingSince = m_turnBegan;
        // What a provider loads it does not tell.
        if (session.answerBackend == AnswerBackend::Ollama && m_runningIsFresh &&
            !isLoaded(m_app.runningModels(), session.model))
            shown.waitingLabel = tr("Loading model");
    }
    if (const auto thinking = m_thinking.find(message.id); thinking != m_thinking.end()) {
        shown.thinkingSince = thinking->second.since;
        shown.thinkingTook = thinking->second.took;
    }
    const ReplyFacts facts = m_app.factsOf(message.id);
    for (const SearchStep& step : facts.steps)
        shown.steps.append(stepOf(step));
    if (shown.streaming)
        return;
    shown.footer = footerOf(message);
    if (facts.untilFirstPiece)
        shown.footerHint =
            tr("First word after %1 s").arg(QLocale().toString(*facts.untilFirstPiece, 'f', 1));
    const bool isLast = message.id == m_last;
    shown.unfinished = !message.duration;
    // A failed turn has its own card, which offers the same.
    shown.canTryAgain = isLast && m_failedPrompt.isNull();
    shown.actions = TranscriptAction::Copy | TranscriptActions(TranscriptAction::HandOff) |
                    TranscriptAction::Save | TranscriptAction::More;
    shown.actions.setFlag(TranscriptAction::Regenerate, isLast);
    shown.actions.setFlag(TranscriptAction::WriteFiles, hasProjectFiles(message.content));
}

QString TranscriptFeed::footerOf(const ChatMessage& message) const
{
    const QLocale locale;
    QStringList parts;
    if (!message.backend.isEmpty())
        parts.append(message.backend);
    if (message.duration)
        parts.append(tr("%1 s").arg(locale.toString(*message.duration, 'f', 1)));
    if (const auto rate = m_app.factsOf(message.id).tokensPerSecond)
        parts.append(tr("%1 tokens/s").arg(locale.toString(*rate, 'f', *rate < 10 ? 1 : 0)));
    return parts.join(QStringLiteral(" · "));
}

void TranscriptFeed::rebuild()
{
    std::vector<TranscriptMessage> messages;
    m_last = {};
    if (const ChatSession* const session = m_app.selectedSession()) {
        m_last = session->messages.empty() ? QUuid() : session->messages.back().id;
        messages.reserve(session->messages.size());
        for (const ChatMessage& message : session->messages)
            messages.push_back(describe(*session, message));
    }
    m_transcript.setMessages(std::move(messages));
}

void TranscriptFeed::takeMessages(const QUuid& session)
{
    const ChatSession* const selected = m_app.selectedSession();
    if (!selected || session != selected->id)
        return;
    const std::vector<ChatMessage>& messages = selected->messages;
    const int known = std::min(m_transcript.count(), static_cast<int>(messages.size()));
    int same = 0;
    while (same < known && m_transcript.message(same).id == idOf(messages[static_cast<std::size_t>(same)].id))
        ++same;
    const QUuid previous = std::exchange(m_last, messages.empty() ? QUuid() : messages.back().id);
    m_transcript.removeFrom(same);
    for (auto message = messages.begin() + same; message != messages.end(); ++message)
        m_transcript.appendMessage(describe(*selected, *message));
    // Only the last reply can be asked for once more: one that became or was it offers something else now.
    if (previous != m_last) {
        show(previous);
        show(m_last);
    }
}

void TranscriptFeed::takeMessage(const QUuid& session, const QUuid& message)
{
    const ChatSession* const changed = m_app.session(session);
    const ChatMessage* const found = changed ? findMessage(*changed, message) : nullptr;
    if (!found)
        return;
    noteThinking(*found, message == m_app.streamingMessage());
    show(message);
}

void TranscriptFeed::noteThinking(const ChatMessage& message, bool streaming)
{
    auto thinking = m_thinking.find(message.id);
    if (thinking == m_thinking.end()) {
        // Of a reply that is whole nobody knows any more how long the thinking took.
        if (message.thinking.isEmpty() || !streaming)
            return;
        thinking = m_thinking.emplace(message.id, Thinking{m_clock.steadyNow(), std::nullopt}).first;
    }
    if (!thinking->second.took && (!message.content.isEmpty() || !streaming))
        thinking->second.took = std::chrono::duration_cast<std::chrono::milliseconds>(m_clock.steadyNow() -
                                                                                      thinking->second.since);
}

void TranscriptFeed::takeStreaming()
{
    const QUuid previous = std::exchange(m_streaming, m_app.streamingMessage());
    if (!m_streaming.isNull()) {
        m_turnBegan = m_clock.steadyNow();
        m_runningIsFresh = false;
    }
    if (const auto thinking = m_thinking.find(previous); thinking != m_thinking.end()) {
        if (!thinking->second.took)
            thinking->second.took = std::chrono::duration_cast<std::chrono::milliseconds>(
                m_clock.steadyNow() - thinking->second.since);
    }
    show(previous);
}

void TranscriptFeed::takeFailure()
{
    const QUuid previous = std::exchange(m_failedPrompt, m_app.failure() ? m_app.failure()->prompt : QUuid());
    show(previous);
    show(m_failedPrompt);
    show(m_last);
}

void TranscriptFeed::takeRunningModels()
{
    m_runningIsFresh = m_app.isStreaming();
    show(m_streaming);
}

void TranscriptFeed::show(const QUuid& message)
{
    const ChatSession* const selected = m_app.selectedSession();
    const ChatMessage* const found =
        selected && !message.isNull() ? findMessage(*selected, message) : nullptr;
    if (found)
        m_transcript.updateMessage(describe(*selected, *found));
}

void TranscriptFeed::act(const QString& id, const QString& action)
{
    if (action == QLatin1String("regenerate"))
        m_consent([this] { m_app.regenerate(); });
    else if (action == QLatin1String("handOff"))
        m_app.handOffReply(QUuid(id));
    else if (action == QLatin1String("writeFiles"))
        Q_EMIT writeRequested(id, {});
    else if (action == QLatin1String("save"))
        Q_EMIT saveRequested(id);
    else if (action == QLatin1String("more"))
        Q_EMIT moreRequested(id);
    else if (action == QLatin1String("edit") && QUuid(id) == m_failedPrompt)
        m_app.editFailed(); // nothing came after it, so nothing is asked
    else if (action == QLatin1String("edit"))
        Q_EMIT editRequested(id);
}

void TranscriptFeed::writeFile(const QString& id, const QString& path)
{
    Q_EMIT writeRequested(id, path);
}

void TranscriptFeed::tryAgain(const QString& id)
{
    if (QUuid(id) == m_failedPrompt)
        m_consent([this] { m_app.tryAgain(); });
    else
        m_consent([this] { m_app.regenerate(); });
}

void TranscriptFeed::turnSearchOffAndTryAgain()
{
    m_consent([this] { m_app.turnSearchOffAndTryAgain(); });
}

void TranscriptFeed::resetTemperatureAndTryAgain()
{
    m_consent([this] { m_app.resetTemperatureAndTryAgain(); });
}

void TranscriptFeed::fork(const QString& id)
{
    m_app.fork(QUuid(id));
}

void TranscriptFeed::openLogs()
{
    const DiagnosticsLog log(DiagnosticsLog::defaultFolder(), m_clock);
    QDesktopServices::openUrl(QUrl::fromLocalFile(log.file()));
}

void TranscriptFeed::copyMessage(const QString& id)
{
    const int index = m_transcript.indexOf(id);
    if (index >= 0)
        QGuiApplication::clipboard()->setText(m_transcript.message(index).content);
}

bool TranscriptFeed::copyLastReply()
{
    for (int index = m_transcript.count() - 1; index >= 0; --index) {
        const TranscriptMessage& message = m_transcript.message(index);
        if (message.role == TranscriptRole::Reply && !message.content.isEmpty()) {
            QGuiApplication::clipboard()->setText(message.content);
            return true;
        }
    }
    return false;
}

} // namespace varnel
