#pragma once

#include <QFlags>
#include <QObject>
#include <QString>

#include <chrono>
#include <functional>
#include <optional>
#include <vector>

namespace varnel {

enum class TranscriptRole { User, Reply };

/// What can be done with a message from the row below it; copying always can.
enum class TranscriptAction : quint8 {
    Copy = 0x01,
    Regenerate = 0x02,
    Edit = 0x04,
    WriteFiles = 0x08,
    HandOff = 0x10,
    Save = 0x20,
    More = 0x40,
};
Q_DECLARE_FLAGS(TranscriptActions, TranscriptAction)
Q_DECLARE_OPERATORS_FOR_FLAGS(TranscriptActions)

/// Something that went along with a prompt, in words: "PDF", "Report".
struct TranscriptChip
{
    QString kind;
    QString title;

    bool operator==(const TranscriptChip&) const = default;
};

/// Something that was looked up for a reply, in words: "Searched for …", "Read …".
struct TranscriptStep
{
    enum class Kind : quint8 { Searched, Read };

    Kind kind = Kind::Searched;
    QString text;

    bool operator==(const TranscriptStep&) const = default;
};

/// What a failed turn offers to try differently.
enum class TranscriptRemedy : quint8 { ResetTemperature = 0x01, SearchOff = 0x02 };
Q_DECLARE_FLAGS(TranscriptRemedies, TranscriptRemedy)
Q_DECLARE_OPERATORS_FOR_FLAGS(TranscriptRemedies)

/// One message as the transcript shows it.
struct TranscriptMessage
{
    using TimePoint = std::chrono::steady_clock::time_point;

    QString id; ///< unique in the conversation
    TranscriptRole role = TranscriptRole::Reply;
    QString content; ///< Markdown of a reply; shown as typed for the user's own
    QString thinking;
    bool streaming = false; ///< more is to come
    /// When waiting for the first piece began; nothing once there is one.
    std::optional<TimePoint> waitingSince;
    QString waitingLabel; ///< "Loading model", or empty
    /// When thinking began; together with thinkingTook empty it is still going on.
    std::optional<TimePoint> thinkingSince;
    std::optional<std::chrono::milliseconds> thinkingTook;
    QString footer;              ///< what answered, how long it took, how fast
    QString footerHint;          ///< what is said when the pointer rests on it
    QList<TranscriptChip> chips; ///< what was attached to a prompt
    QList<TranscriptStep> steps; ///< what was looked up for a reply, in order
    QString error;               ///< why the turn failed; belongs to the prompt
    QString errorDetail;         ///< what the service itself said; may be empty
    TranscriptRemedies remedies; ///< what may help against the error
    bool unfinished = false;     ///< the reply ended before it was whole
    bool canTryAgain = false;    ///< an unfinished reply can be asked for once more
    TranscriptActions actions = TranscriptAction::Copy;

    bool operator==(const TranscriptMessage&) const = default;
};

/// The messages of the shown conversation. It holds values only; laying them out is the view's.
class TranscriptModel : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    using Now = std::function<TranscriptMessage::TimePoint()>;

    /// @param now where elapsed seconds come from.
    explicit TranscriptModel(QObject* parent = nullptr, Now now = &std::chrono::steady_clock::now);

    int count() const { return static_cast<int>(m_messages.size()); }
    const TranscriptMessage& message(int index) const { return m_messages[static_cast<std::size_t>(index)]; }
    /// The place of a message, -1 if there is none with this id.
    int indexOf(const QString& id) const;
    TranscriptMessage::TimePoint now() const { return m_now(); }

    /// Shows another conversation, from its end.
    void setMessages(std::vector<TranscriptMessage> messages);
    void appendMessage(TranscriptMessage message);
    /// Replaces the message with the same id; cheap when its content only grew at its end. Does nothing when
    /// there is no such message.
    void updateMessage(TranscriptMessage message);
    /// Removes the messages from `first` on: a prompt was edited, or a reply is to be made again.
    void removeFrom(int first);

Q_SIGNALS:
    void countChanged();
    void wasReset();
    void appended(int index);
    void changed(int index);
    void removed(int first);
    /// A reply that was streaming has ended.
    void finished(int index);

private:
    std::vector<TranscriptMessage> m_messages;
    Now m_now;
};

/// "12 s", "1 min 5 s".
QString elapsedText(std::chrono::milliseconds elapsed);
/// What the collapsed row over a reply says: "Thinking… 12 s", then "Thought for 12 s". Empty without
/// thinking.
QString thinkingText(const TranscriptMessage& message, TranscriptMessage::TimePoint now);
/// What stands in place of a reply whose first piece has not come: elapsed seconds from 1 s on.
QString waitingText(const TranscriptMessage& message, TranscriptMessage::TimePoint now);

} // namespace varnel
