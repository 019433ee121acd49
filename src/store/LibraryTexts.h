#pragma once

#include "store/LibraryItem.h"

#include <QString>

namespace varnel {

/// How much of a stored text file goes into a prompt, in bytes.
constexpr qint64 largestAttachedText = qint64(256) * 1024;

/// What an item says in a prompt: its kind, title, note and link, then where an image or a PDF is, or what a
/// text file holds. Reads the stored copy of a text file, so it may block as long as the disk does; what
/// cannot be read is said in the text.
QString attachmentText(const QString& root, const LibraryItem& item);

/// What an item says where it is exported or inserted as text; ends with a line feed. Reads no file.
QString markdownText(const LibraryItem& item);

} // namespace varnel
