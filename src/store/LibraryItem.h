#pragma once

#include "base/Clock.h"
#include "base/JsonReader.h"
#include "base/JsonWriter.h"
#include "store/RawValues.h"

#include <QString>
#include <QUuid>

#include <array>
#include <optional>
#include <vector>

namespace varnel {

/// What an item of the library is.
enum class LibraryKind { File, Pdf, Image, Link };

template <>
struct RawValues<LibraryKind>
{
    static constexpr std::array texts{QLatin1String("file"), QLatin1String("pdf"), QLatin1String("image"),
                                      QLatin1String("link")};
};

/// One file, PDF, image or web address that the user keeps to attach to prompts.
struct LibraryItem
{
    QUuid id;
    LibraryKind kind = LibraryKind::File;
    QString title;
    /// The user's note.
    QString note;
    /// The library folder it is filed under.
    QString folder;
    /// The stored copy, relative to the data folder, as the index says it: not checked yet.
    std::optional<QString> relativePath;
    /// The address of a link.
    std::optional<QString> urlString;
    Instant createdAt;
    /// When the user deleted it; the stored copy remains.
    std::optional<Instant> deletedAt;

    bool operator==(const LibraryItem&) const = default;

    /// Only live items are shown and attached.
    bool isLive() const { return !deletedAt; }
};

/// Throws DecodeError when a key is missing or holds the wrong type; only "relativePath", "urlString" and
/// "deletedAt" may be missing.
LibraryItem decodeLibraryItem(JsonValue value);
void writeLibraryItem(JsonWriter& writer, const LibraryItem& item);

/// Reads an array of items; one that cannot be read fails the whole.
std::vector<LibraryItem> decodeLibraryItems(JsonValue value);
void writeLibraryItems(JsonWriter& writer, const std::vector<LibraryItem>& items);

/// What a file is, by its extension in either case; never a link.
LibraryKind kindOfFile(const QString& fileName);
/// The MIME type under which an image is sent, by its extension in either case; "image/png" for one that is
/// not known.
QString imageMimeType(const QString& fileName);

} // namespace varnel
