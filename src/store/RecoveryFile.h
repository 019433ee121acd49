#pragma once

#include "store/ChatMessage.h"
#include "store/DataFile.h"
#include "store/SessionList.h"

#include <QString>
#include <QUuid>

#include <optional>
#include <vector>

namespace varnel {

/// A reply as far as it had come, and where it belongs.
struct KeptReply
{
    /// The conversation.
    QUuid session;
    /// The message that it answers.
    QUuid prompt;
    ChatMessage message;

    bool operator==(const KeptReply&) const = default;
};

KeptReply decodeKeptReply(JsonValue value);
void writeKeptReply(JsonWriter& writer, const KeptReply& reply);

/// Whether there is anything of the reply, and its conversation is none of these.
bool hasNoPlace(const SessionList& sessions, const KeptReply& reply);

/// The conversations with each reply as far as it is known: what was kept takes the place of a stored message
/// that holds less, and a message that is missing is put behind its prompt. A stored reply that was complete
/// stays, and what has no place is passed over. The order of the list stays.
SessionList withKeptReplies(SessionList sessions, const std::vector<KeptReply>& replies);

/// A small file beside the conversations that holds replies whose conversations are not saved yet. It belongs
/// to no thread, but only one may use it at a time.
class RecoveryFile
{
public:
    explicit RecoveryFile(const QString& dataFolder)
        : m_file(fileIn(dataFolder))
    {}

    static QString fileIn(const QString& dataFolder) { return dataFolder + QStringLiteral("/recovery.json"); }

    /// What an earlier run left. Throws Error when the file cannot be read.
    std::vector<KeptReply> load();
    /// Writes the reply, in place of what was kept of the same message. Throws Error. Yields what had to be
    /// kept beside the file.
    std::optional<SetAside> keep(const KeptReply& reply);
    /// Renames the file, so that what it holds stays when it cannot be put into its conversations; yields the
    /// new path. Throws Error.
    QString setAside();
    /// Takes messages out, because the conversations that hold them are saved. Throws Error. Yields what had
    /// to be kept beside the file.
    std::optional<SetAside> forget(const std::vector<QUuid>& messages);

private:
    std::optional<SetAside> write(std::vector<KeptReply> replies);

    DataFile m_file;
    std::vector<KeptReply> m_replies;
};

} // namespace varnel
