// What the window says or asks around a turn.
#include "engine/AppModelPrivate.h"

#include "store/NewConversation.h"

#include <QLocale>

namespace varnel {

namespace {

/// What the label of every reply of a provider begins with.
QString labelOf(RemoteProvider provider)
{
    return displayName(provider) + QStringLiteral(" · ");
}

bool holdsReplyOf(const ChatSession& session, const QString& label)
{
    return std::any_of(session.messages.begin(), session.messages.end(),
                       [&label](const ChatMessage& message) { return message.backend.startsWith(label); });
}

} // namespace

bool AppModel::needsCloudConfirmation() const
{
    const ChatSession* const selected = selectedSession();
    if (!selected || selected->answerBackend != AnswerBackend::Remote || !m_passthroughEnabled)
        return false;
    const RemoteProvider provider = selected->remoteProvider;
    if (m_confirmedClouds.contains(provider))
        return false;
    const QString label = labelOf(provider);
    const bool isKnown = std::any_of(m_sessions.begin(), m_sessions.end(), [&](const ChatSession& session) {
        return holdsReplyOf(session, label);
    });
    if (isKnown)
        m_confirmedClouds.insert(provider);
    return !isKnown;
}

void AppModel::confirmCloud()
{
    const ChatSession* const selected = selectedSession();
    if (!selected || selected->answerBackend != AnswerBackend::Remote)
        return;
    m_confirmedClouds.insert(selected->remoteProvider);
    Q_EMIT selectedSessionChanged();
}

ChatSession AppModel::newSettings() const
{
    return varnel::newConversation(m_services.preferences, m_services.clock.now());
}

QString AppModel::contextWarning() const
{
    const ContextUse use = contextUse();
    const ChatSession* const selected = selectedSession();
    // How much a provider's model takes is not for this program to say.
    if (!selected || selected->answerBackend == AnswerBackend::Remote || use.share() <= 1)
        return {};
    const QLocale locale;
    return tr("This conversation has ≈ %1 tokens and its context %2: the model will not see the beginning.")
        .arg(locale.toString(use.tokens), locale.toString(use.limit));
}

QString AppModel::toolsHint() const
{
    const ChatSession* const selected = selectedSession();
    if (!selected || selected->answerBackend == AnswerBackend::Remote ||
        selected->search == SearchSource::Off || !m_modelsWithoutTools.contains(selected->model))
        return {};
    return tr("%1 has no tools and cannot search the web. Choose another model or turn search off.")
        .arg(selected->model);
}

void AppModel::resetTemperatureAndTryAgain()
{
    if (m_failure && m_failure->offersTemperatureReset)
        changeFailedAndTryAgain([](ChatSession& session) { session.temperature = 1; });
}

void AppModel::turnSearchOffAndTryAgain()
{
    if (m_failure && m_failure->offersSearchOff)
        changeFailedAndTryAgain([](ChatSession& session) { session.search = SearchSource::Off; });
}

void AppModel::changeFailedAndTryAgain(const std::function<void(ChatSession&)>& change)
{
    ChatSession* const failed = edit(m_failure->session);
    if (!failed || refuseWhileStreaming())
        return;
    change(*failed);
    announceSession(m_failure->session);
    saveSessions();
    tryAgain();
}

} // namespace varnel
