#include "providers/chat/RequestBodies.h"

#include "base/JsonWriter.h"
#include "providers/chat/ToolRoundWriter.h"

namespace varnel {

namespace {

constexpr qint64 claudeTokenLimit = 4096;

bool hasText(const ProviderMessage& message)
{
    return !message.text.trimmed().isEmpty();
}

/// Blank texts are refused by services, so a message that is nothing else is not sent.
bool isSent(const ProviderMessage& message)
{
    return message.role != ChatRole::System && (hasText(message) || !message.media.empty());
}

bool isPdf(const PromptMedia& media)
{
    return media.mime == QLatin1String("application/pdf");
}

QString dataUrlPrefix(const PromptMedia& media)
{
    return QStringLiteral("data:") + media.mime + QStringLiteral(";base64,");
}

void writeMember(JsonWriter& writer, std::string_view key, QStringView value)
{
    writer.key(key);
    writer.string(value);
}

/// An object of "type" and one more text.
void writeTyped(JsonWriter& writer, QStringView type, std::string_view key, QStringView value)
{
    writer.beginObject();
    writeMember(writer, "type", type);
    writeMember(writer, key, value);
    writer.endObject();
}

/// The messages that are sent, each written by `write`.
template <typename Write>
void writeMessages(JsonWriter& writer, const ProviderTurn& turn, Write write)
{
    for (const ProviderMessage& message : turn.messages) {
        if (!isSent(message))
            continue;
        writer.beginObject();
        write(writer, message);
        writer.endObject();
    }
}

// Claude

void writeClaudeMessage(JsonWriter& writer, const ProviderMessage& message)
{
    writeMember(writer, "role", message.role == ChatRole::Assistant ? u"assistant" : u"user");
    writer.key("content");
    if (message.media.empty()) {
        writer.string(message.text);
        return;
    }
    writer.beginArray();
    for (const PromptMedia& media : message.media) {
        writer.beginObject();
        writeMember(writer, "type", isPdf(media) ? u"document" : u"image");
        writer.key("source");
        writer.beginObject();
        writeMember(writer, "type", u"base64");
        writeMember(writer, "media_type", media.mime);
        writer.key("data");
        writer.base64(media.data);
        writer.endObject();
        writer.endObject();
    }
    if (hasText(message))
        writeTyped(writer, u"text", "text", message.text);
    writer.endArray();
}

void writeClaudeBody(JsonWriter& writer, const ProviderTurn& turn)
{
    writeMember(writer, "model", turn.model);
    writer.key("max_tokens");
    writer.integer(claudeTokenLimit);
    writer.key("temperature");
    writer.number(turn.temperature);
    if (const QString system = systemTextOf(turn); !system.isEmpty())
        writeMember(writer, "system", system);
    writer.key("messages");
    writer.beginArray();
    writeMessages(writer, turn, &writeClaudeMessage);
    writer.endArray();
    if (turn.search == ProviderSearch::Own) {
        writer.key("tools");
        writer.beginArray();
        writer.beginObject();
        writeMember(writer, "type", u"web_search_20250305");
        writeMember(writer, "name", u"web_search");
        writer.key("max_uses");
        writer.integer(5);
        writer.endObject();
        writer.endArray();
    }
}

// Gemini

void writeGeminiText(JsonWriter& writer, QStringView text)
{
    writer.beginObject();
    writeMember(writer, "text", text);
    writer.endObject();
}

void writeGeminiMessage(JsonWriter& writer, const ProviderMessage& message)
{
    writeMember(writer, "role", message.role == ChatRole::Assistant ? u"model" : u"user");
    writer.key("parts");
    writer.beginArray();
    if (hasText(message))
        writeGeminiText(writer, message.text);
    for (const PromptMedia& media : message.media) {
        writer.beginObject();
        writer.key("inline_data");
        writer.beginObject();
        writeMember(writer, "mime_type", media.mime);
        writer.key("data");
        writer.base64(media.data);
        writer.endObject();
        writer.endObject();
    }
    writer.endArray();
}

void writeGeminiBody(JsonWriter& writer, const ProviderTurn& turn)
{
    if (const QString system = systemTextOf(turn); !system.isEmpty()) {
        writer.key("system_instruction");
        writer.beginObject();
        writer.key("parts");
        writer.beginArray();
        writeGeminiText(writer, system);
        writer.endArray();
        writer.endObject();
    }
    writer.key("contents");
    writer.beginArray();
    writeMessages(writer, turn, &writeGeminiMessage);
    writer.endArray();
    writer.key("generationConfig");
    writer.beginObject();
    writer.key("temperature");
    writer.number(turn.temperature);
    writer.endObject();
    if (turn.search == ProviderSearch::Own) {
        writer.key("tools");
        writer.beginArray();
        writer.beginObject();
        writer.key("google_search");
        writer.beginObject();
        writer.endObject();
        writer.endObject();
        writer.endArray();
    }
}

// Both endpoints of OpenAI

void writeOpenAiMessage(JsonWriter& writer, const ProviderMessage& message, QStringView textType,
                        void (*writeMedium)(JsonWriter&, const PromptMedia&))
{
    writeMember(writer, "role", message.role == ChatRole::Assistant ? u"assistant" : u"user");
    writer.key("content");
    if (message.media.empty()) {
        writer.string(message.text);
        return;
    }
    writer.beginArray();
    if (hasText(message))
        writeTyped(writer, textType, "text", message.text);
    for (const PromptMedia& media : message.media)
        writeMedium(writer, media);
    writer.endArray();
}

// OpenAI's responses

void writeResponsesMedium(JsonWriter& writer, const PromptMedia& media)
{
    writer.beginObject();
    if (isPdf(media)) {
        writeMember(writer, "type", u"input_file");
        writeMember(writer, "filename", u"document.pdf");
        writer.key("file_data");
        writer.base64(media.data, dataUrlPrefix(media));
    } else {
        writeMember(writer, "type", u"input_image");
        writeMember(writer, "detail", u"auto");
        writer.key("image_url");
        writer.base64(media.data, dataUrlPrefix(media));
    }
    writer.endObject();
}

void writeResponsesMessage(JsonWriter& writer, const ProviderMessage& message)
{
    writeOpenAiMessage(writer, message, u"input_text", &writeResponsesMedium);
}

void writeResponsesBody(JsonWriter& writer, const ProviderTurn& turn)
{
    writeMember(writer, "model", turn.model);
    writer.key("temperature");
    writer.number(turn.temperature);
    if (const QString system = systemTextOf(turn); !system.isEmpty())
        writeMember(writer, "instructions", system);
    writer.key("input");
    writer.beginArray();
    writeMessages(writer, turn, &writeResponsesMessage);
    writer.endArray();
    writer.key("tools");
    writer.beginArray();
    writer.beginObject();
    writeMember(writer, "type", u"web_search");
    writer.endObject();
    writer.endArray();
}

// Chat completions

void writeCompletionsMedium(JsonWriter& writer, const PromptMedia& media)
{
    writer.beginObject();
    if (isPdf(media)) {
        writeMember(writer, "type", u"file");
        writer.key("file");
        writer.beginObject();
        writeMember(writer, "filename", u"document.pdf");
        writer.key("file_data");
        writer.base64(media.data, dataUrlPrefix(media));
        writer.endObject();
    } else {
        writeMember(writer, "type", u"image_url");
        writer.key("image_url");
        writer.beginObject();
        writer.key("url");
        writer.base64(media.data, dataUrlPrefix(media));
        writer.endObject();
    }
    writer.endObject();
}

void writeCompletionsMessage(JsonWriter& writer, const ProviderMessage& message)
{
    writeOpenAiMessage(writer, message, u"text", &writeCompletionsMedium);
}

void writeSystemMessage(JsonWriter& writer, const QString& text)
{
    writer.beginObject();
    writeMember(writer, "role", u"system");
    writeMember(writer, "content", text);
    writer.endObject();
}

void writeCompletionsBody(JsonWriter& writer, const ProviderTurn& turn)
{
    const bool withTools = !turn.tools.isEmpty();
    writeMember(writer, "model", turn.model);
    writer.key("temperature");
    writer.number(turn.temperature);
    writer.key("messages");
    writer.beginArray();
    if (withTools && !turn.toolGuidance.isEmpty())
        writeSystemMessage(writer, turn.toolGuidance);
    if (const QString system = systemTextOf(turn); !system.isEmpty())
        writeSystemMessage(writer, system);
    writeMessages(writer, turn, &writeCompletionsMessage);
    for (std::size_t i = 0; i < turn.toolRounds.size(); ++i)
        writeToolRound(writer, turn.toolRounds[i], i);
    writer.endArray();
    writer.key("stream");
    writer.boolean(false);
    if (withTools) {
        writer.key("tools");
        writer.value(turn.tools);
    }
}

/// About how many bytes the body takes.
qsizetype expectedSize(const ProviderTurn& turn)
{
    qsizetype size = 4096 + 2 * turn.systemPrompt.size();
    for (const ProviderMessage& message : turn.messages) {
        size += 256 + 2 * message.text.size();
        for (const PromptMedia& media : message.media)
            size += 256 + (media.data.size() + 2) / 3 * 4;
    }
    return size;
}

} // namespace

bool usesResponsesEndpoint(const ProviderTurn& turn)
{
    return turn.provider == RemoteProvider::OpenAi && turn.search == ProviderSearch::Own;
}

QByteArray providerBody(const ProviderTurn& turn)
{
    const auto write = [&turn](JsonWriter& writer) {
        writer.beginObject();
        if (turn.provider == RemoteProvider::Gemini)
            writeGeminiBody(writer, turn);
        else if (turn.provider == RemoteProvider::Claude)
            writeClaudeBody(writer, turn);
        else if (usesResponsesEndpoint(turn))
            writeResponsesBody(writer, turn);
        else
            writeCompletionsBody(writer, turn);
        writer.endObject();
    };
    return compactJson(write, expectedSize(turn));
}

} // namespace varnel
