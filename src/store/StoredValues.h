#pragma once

#include "base/Clock.h"
#include "base/JsonReader.h"
#include "base/JsonWriter.h"

#include <QUuid>

namespace varnel {

/// An identifier as it is stored: 36 characters, upper case.
QString uuidText(const QUuid& id);
/// Reads the 36-character form in either case; anything else is a DecodeError.
QUuid decodeUuid(JsonValue value);
void writeUuid(JsonWriter& writer, const QUuid& id);

/// Reads the internet date-time form of ISO 8601; anything else is a DecodeError, and so is a moment outside
/// the years 0000 to 9999, because it could not be written again.
Instant decodeInstant(JsonValue value);
/// Throws Error for a moment that decodeInstant() would refuse.
void writeInstant(JsonWriter& writer, Instant instant);

/// Writes an array whose elements `write` writes.
template <typename Items, typename Write>
void writeList(JsonWriter& writer, const Items& items, Write write)
{
    writer.beginArray();
    for (const auto& item : items)
        write(writer, item);
    writer.endArray();
}

/// For a text that is none of the texts allowed at its place.
DecodeError unknownValue(const QString& text);

} // namespace varnel
