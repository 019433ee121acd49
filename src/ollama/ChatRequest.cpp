#include "ollama/ChatRequest.h"

#include "base/JsonWriter.h"

#include <algorithm>

namespace varnel {

namespace {

void writeMessage(JsonWriter& writer, QStringView role, QStringView content,
                  const std::vector<PromptMedia>& images)
{
    writer.beginObject();
    writer.key("role");
    writer.string(role);
    writer.key("content");
    writer.string(content);
    if (!images.empty()) {
        writer.key("images");
        writer.beginArray();
        for (const PromptMedia& image : images)
            writer.base64(image.data);
        writer.endArray();
    }
    writer.endObject();
}

bool isSent(const ChatMessage& message)
{
    return !message.content.isEmpty() && message.role != ChatRole::System;
}

void writeMessages(JsonWriter& writer, const ChatRequest& request, const ToolOffer* offer)
{
    std::vector<PromptMedia> images;
    std::copy_if(request.media.begin(), request.media.end(), std::back_inserter(images),
                 [](const PromptMedia& media) { return media.mime.startsWith(QLatin1String("image/")); });
    const auto illustrated =
        std::find_if(request.history.rbegin(), request.history.rend(), [](const ChatMessage& message) {
            return isSent(message) && message.role == ChatRole::User;
        });

    bool empty = true;
    writer.beginArray();
    if (offer && !offer->guidance.isEmpty())
        writeMessage(writer, u"system", offer->guidance, {});
    if (!request.systemText.trimmed().isEmpty()) {
        writeMessage(writer, u"system", request.systemText, {});
        empty = false;
    }
    for (auto message = request.history.begin(); message != request.history.end(); ++message) {
        if (!isSent(*message))
            continue;
        const bool carriesImages = illustrated != request.history.rend() && &*message == &*illustrated;
        writeMessage(writer, message->role == ChatRole::User ? u"user" : u"assistant", message->content,
                     carriesImages ? images : std::vector<PromptMedia>());
        empty = false;
    }
    // The server is never sent an empty list.
    if (empty)
        writeMessage(writer, u"user", u"", {});
    if (offer) {
        for (const QJsonValue message : offer->messages)
            writer.value(message);
    }
    writer.endArray();
}

void writeBody(JsonWriter& writer, const ChatRequest& request, const ToolOffer* offer)
{
    writer.beginObject();
    writer.key("model");
    writer.string(request.model);
    writer.key("messages");
    writeMessages(writer, request, offer);
    writer.key("stream");
    writer.boolean(!offer);
    writer.key("options");
    writer.beginObject();
    writer.key("temperature");
    writer.number(request.temperature);
    writer.key("num_ctx");
    writer.integer(request.contextLength);
    if (request.predictionLimit) {
        writer.key("num_predict");
        writer.integer(*request.predictionLimit);
    }
    writer.endObject();
    writer.key("keep_alive");
    writer.string(request.keepAlive);
    if (offer) {
        writer.key("tools");
        writer.value(offer->tools);
    }
    writer.endObject();
}

} // namespace

QByteArray streamedChatBody(const ChatRequest& request)
{
    return compactJson([&request](JsonWriter& writer) { writeBody(writer, request, nullptr); });
}

QByteArray wholeChatBody(const ChatRequest& request, const ToolOffer& offer)
{
    return compactJson([&request, &offer](JsonWriter& writer) { writeBody(writer, request, &offer); });
}

} // namespace varnel
