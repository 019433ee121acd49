#include "store/ChatMessage.h"

#include "store/StoredValues.h"

namespace varnel {

ChatMessage decodeChatMessage(JsonValue value)
{
    const JsonObject object = value.object();
    return {
        .id = object.required("id", decodeUuid),
        .role = object.required("role", decodeRawValue<ChatRole>),
        .content = object.required("content", &JsonValue::string),
        .thinking = object.optional("thinking", &JsonValue::string).value_or(QString()),
        .createdAt = object.required("createdAt", decodeInstant),
        .backend = object.required("backend", &JsonValue::string),
        .duration = object.optional("duration", &JsonValue::number),
    };
}

void writeChatMessage(JsonWriter& writer, const ChatMessage& message)
{
    writer.beginObject();
    writer.key("backend");
    writer.string(message.backend);
    writer.key("content");
    writer.string(message.content);
    writer.key("createdAt");
    writeInstant(writer, message.createdAt);
    if (message.duration) {
        writer.key("duration");
        writer.number(*message.duration);
    }
    writer.key("id");
    writeUuid(writer, message.id);
    writer.key("role");
    writeRawValue(writer, message.role);
    writer.key("thinking");
    writer.string(message.thinking);
    writer.endObject();
}

} // namespace varnel
