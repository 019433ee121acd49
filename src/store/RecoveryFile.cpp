#include "store/RecoveryFile.h"

#include "store/StoredValues.h"

#include <algorithm>

namespace varnel {

namespace {

qsizetype lengthOf(const ChatMessage& message)
{
    return message.content.size() + message.thinking.size();
}

void putInto(ChatSession& session, const KeptReply& reply)
{
    std::vector<ChatMessage>& messages = session.messages;
    const auto withId = [&messages](const QUuid& id) {
        return std::find_if(messages.begin(), messages.end(),
                            [&id](const ChatMessage& message) { return message.id == id; });
    };
    const auto stored = withId(reply.message.id);
    if (stored == messages.end()) {
        const auto prompt = withId(reply.prompt);
        messages.insert(prompt == messages.end() ? prompt : prompt + 1, reply.message);
    } else if (!stored->duration && lengthOf(*stored) < lengthOf(reply.message)) {
        *stored = reply.message;
    } else {
        return;
    }
    session.updatedAt = std::max(session.updatedAt, reply.message.createdAt);
}

auto isOf(const QUuid& message)
{
    return [message](const KeptReply& reply) { return reply.message.id == message; };
}

} // namespace

KeptReply decodeKeptReply(JsonValue value)
{
    const JsonObject object = value.object();
    return {
        .session = object.required("session", decodeUuid),
        .prompt = object.required("prompt", decodeUuid),
        .message = object.required("message", decodeChatMessage),
    };
}

void writeKeptReply(JsonWriter& writer, const KeptReply& reply)
{
    writer.beginObject();
    writer.key("message");
    writeChatMessage(writer, reply.message);
    writer.key("prompt");
    writeUuid(writer, reply.prompt);
    writer.key("session");
    writeUuid(writer, reply.session);
    writer.endObject();
}

bool hasNoPlace(const SessionList& sessions, const KeptReply& reply)
{
    return lengthOf(reply.message) > 0 && sessions.indexOf(reply.session) == sessions.size();
}

SessionList withKeptReplies(SessionList sessions, const std::vector<KeptReply>& replies)
{
    for (const KeptReply& reply : replies) {
        const std::size_t index = sessions.indexOf(reply.session);
        if (index < sessions.size() && lengthOf(reply.message) > 0)
            putInto(sessions.edit(index), reply);
    }
    return sessions;
}

std::vector<KeptReply> RecoveryFile::load()
{
    m_replies = m_file.load([](JsonValue value) { return value.list(decodeKeptReply); })
                    .value_or(std::vector<KeptReply>());
    return m_replies;
}

std::optional<SetAside> RecoveryFile::keep(const KeptReply& reply)
{
    std::vector<KeptReply> replies = m_replies;
    const auto old = std::find_if(replies.begin(), replies.end(), isOf(reply.message.id));
    if (old == replies.end())
        replies.push_back(reply);
    else
        *old = reply;
    return write(std::move(replies));
}

QString RecoveryFile::setAside()
{
    QString path = setAsideUnreadable(m_file.path());
    m_replies.clear();
    return path;
}

std::optional<SetAside> RecoveryFile::forget(const std::vector<QUuid>& messages)
{
    std::vector<KeptReply> remaining = m_replies;
    for (const QUuid& message : messages)
        remaining.erase(std::remove_if(remaining.begin(), remaining.end(), isOf(message)), remaining.end());
    if (remaining.size() == m_replies.size())
        return std::nullopt;
    return write(std::move(remaining));
}

std::optional<SetAside> RecoveryFile::write(std::vector<KeptReply> replies)
{
    std::optional<SetAside> kept;
    if (replies.empty()) {
        m_file.remove();
    } else {
        kept = m_file.save([&replies](JsonWriter& writer) { writeList(writer, replies, writeKeptReply); });
    }
    m_replies = std::move(replies);
    return kept;
}

} // namespace varnel
