#include "ui/transcript/TranscriptModel.h"

#include <algorithm>

namespace varnel {

using namespace std::chrono_literals;

TranscriptModel::TranscriptModel(QObject* parent, Now now)
    : QObject(parent)
    , m_now(std::move(now))
{}

int TranscriptModel::indexOf(const QString& id) const
{
    // What changes is nearly always at the end.
    const auto found = std::find_if(m_messages.rbegin(), m_messages.rend(),
                                    [&id](const TranscriptMessage& message) { return message.id == id; });
    return found == m_messages.rend() ? -1 : static_cast<int>(m_messages.rend() - found) - 1;
}

void TranscriptModel::setMessages(std::vector<TranscriptMessage> messages)
{
    m_messages = std::move(messages);
    Q_EMIT wasReset();
    Q_EMIT countChanged();
}

void TranscriptModel::appendMessage(TranscriptMessage message)
{
    m_messages.push_back(std::move(message));
    Q_EMIT appended(count() - 1);
    Q_EMIT countChanged();
}

void TranscriptModel::updateMessage(TranscriptMessage message)
{
    const int index = indexOf(message.id);
    if (index < 0)
        return;
    TranscriptMessage& held = m_messages[static_cast<std::size_t>(index)];
    const bool ended = held.streaming && !message.streaming;
    held = std::move(message);
    Q_EMIT changed(index);
    if (ended)
        Q_EMIT finished(index);
}

void TranscriptModel::removeFrom(int first)
{
    if (first < 0 || first >= count())
        return;
    m_messages.erase(m_messages.begin() + first, m_messages.end());
    Q_EMIT removed(first);
    Q_EMIT countChanged();
}

QString elapsedText(std::chrono::milliseconds elapsed)
{
    const qint64 seconds = std::max<qint64>(0, elapsed / 1s);
    if (seconds < 60)
        return TranscriptModel::tr("%1 s").arg(seconds);
    return TranscriptModel::tr("%1 min %2 s").arg(seconds / 60).arg(seconds % 60);
}

QString thinkingText(const TranscriptMessage& message, TranscriptMessage::TimePoint now)
{
    using std::chrono::milliseconds;
    if (message.thinkingTook)
        return TranscriptModel::tr("Thought for %1").arg(elapsedText(*message.thinkingTook));
    if (message.thinking.isEmpty())
        return {};
    if (!message.streaming || !message.thinkingSince)
        return message.streaming ? TranscriptModel::tr("Thinking…") : TranscriptModel::tr("Thoughts");
    return TranscriptModel::tr("Thinking… %1")
        .arg(elapsedText(std::chrono::duration_cast<milliseconds>(now - *message.thinkingSince)));
}

QString waitingText(const TranscriptMessage& message, TranscriptMessage::TimePoint now)
{
    if (!message.waitingSince)
        return {};
    const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(now - *message.waitingSince);
    QString seconds = elapsed >= 1s ? elapsedText(elapsed) : QString();
    if (message.waitingLabel.isEmpty())
        return seconds;
    return seconds.isEmpty() ? message.waitingLabel + QChar(0x2026)
                             : message.waitingLabel + QStringLiteral("… ") + seconds;
}

} // namespace varnel
