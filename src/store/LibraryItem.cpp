#include "store/LibraryItem.h"

#include "store/StoredValues.h"

#include <algorithm>

namespace varnel {

namespace {

struct ImageExtension
{
    QLatin1String extension;
    QLatin1String mime;
};

constexpr std::array imageExtensions{
    ImageExtension{QLatin1String("png"), QLatin1String("image/png")},
    ImageExtension{QLatin1String("jpg"), QLatin1String("image/jpeg")},
    ImageExtension{QLatin1String("jpeg"), QLatin1String("image/jpeg")},
    ImageExtension{QLatin1String("gif"), QLatin1String("image/gif")},
    ImageExtension{QLatin1String("webp"), QLatin1String("image/webp")},
    ImageExtension{QLatin1String("heic"), QLatin1String("image/heic")},
    ImageExtension{QLatin1String("tif"), QLatin1String("image/tiff")},
    ImageExtension{QLatin1String("tiff"), QLatin1String("image/tiff")},
};

/// What follows the last dot of the name, in lower case; a dot in front begins a hidden name, no extension.
QString extensionOf(const QString& fileName)
{
    const QString name = fileName.mid(fileName.lastIndexOf(QLatin1Char('/')) + 1);
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot > 0 ? name.mid(dot + 1).toLower() : QString();
}

const ImageExtension* findImageExtension(const QString& fileName)
{
    const QString extension = extensionOf(fileName);
    const auto* const found =
        std::find_if(imageExtensions.begin(), imageExtensions.end(),
                     [&extension](const ImageExtension& row) { return row.extension == extension; });
    return found == imageExtensions.end() ? nullptr : found;
}

} // namespace

LibraryItem decodeLibraryItem(JsonValue value)
{
    const JsonObject object = value.object();
    return {
        .id = object.required("id", decodeUuid),
        .kind = object.required("kind", decodeRawValue<LibraryKind>),
        .title = object.required("title", &JsonValue::string),
        .note = object.required("note", &JsonValue::string),
        .folder = object.required("folder", &JsonValue::string),
        .relativePath = object.optional("relativePath", &JsonValue::string),
        .urlString = object.optional("urlString", &JsonValue::string),
        .createdAt = object.required("createdAt", decodeInstant),
        .deletedAt = object.optional("deletedAt", decodeInstant),
    };
}

void writeLibraryItem(JsonWriter& writer, const LibraryItem& item)
{
    writer.beginObject();
    writer.key("createdAt");
    writeInstant(writer, item.createdAt);
    if (item.deletedAt) {
        writer.key("deletedAt");
        writeInstant(writer, *item.deletedAt);
    }
    writer.key("folder");
    writer.string(item.folder);
    writer.key("id");
    writeUuid(writer, item.id);
    writer.key("kind");
    writeRawValue(writer, item.kind);
    writer.key("note");
    writer.string(item.note);
    if (item.relativePath) {
        writer.key("relativePath");
        writer.string(*item.relativePath);
    }
    writer.key("title");
    writer.string(item.title);
    if (item.urlString) {
        writer.key("urlString");
        writer.string(*item.urlString);
    }
    writer.endObject();
}

std::vector<LibraryItem> decodeLibraryItems(JsonValue value)
{
    return value.list(decodeLibraryItem);
}

void writeLibraryItems(JsonWriter& writer, const std::vector<LibraryItem>& items)
{
    writeList(writer, items, writeLibraryItem);
}

LibraryKind kindOfFile(const QString& fileName)
{
    if (extensionOf(fileName) == QLatin1String("pdf"))
        return LibraryKind::Pdf;
    return findImageExtension(fileName) ? LibraryKind::Image : LibraryKind::File;
}

QString imageMimeType(const QString& fileName)
{
    const ImageExtension* const row = findImageExtension(fileName);
    return QString(row ? row->mime : imageExtensions.front().mime);
}

} // namespace varnel
