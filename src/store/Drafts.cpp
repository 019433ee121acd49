#include "store/Drafts.h"

#include "store/StoredValues.h"

namespace varnel {

namespace {

struct StoredDraft
{
    QUuid session;
    Draft draft;
};

StoredDraft decodeStoredDraft(JsonValue value)
{
    const JsonObject object = value.object();
    return {.session = object.required("session", decodeUuid),
            .draft = {.text = object.required("text", &JsonValue::string),
                      .attachments = object.required("attachments", listOf(decodeUuid))}};
}

} // namespace

Drafts decodeDrafts(JsonValue value)
{
    Drafts drafts;
    for (StoredDraft& stored : value.list(decodeStoredDraft))
        drafts.insert_or_assign(stored.session, std::move(stored.draft));
    return drafts;
}

void writeDrafts(JsonWriter& writer, const Drafts& drafts)
{
    writer.beginArray();
    for (const auto& [session, draft] : drafts) {
        if (draft.isEmpty())
            continue;
        writer.beginObject();
        writer.key("attachments");
        writer.beginArray();
        for (const QUuid& item : draft.attachments)
            writeUuid(writer, item);
        writer.endArray();
        writer.key("session");
        writeUuid(writer, session);
        writer.key("text");
        writer.string(draft.text);
        writer.endObject();
    }
    writer.endArray();
}

} // namespace varnel
