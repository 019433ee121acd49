#pragma once

#include "store/FileAccess.h"

#include <QString>

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace varnel {

/// Reads a file that holds a JSON array of objects in parts that are arrays themselves, so that a big file
/// never stands in memory as a whole.
///
/// It cuts at commas that stand between two objects by the look of the lines around them, which is how this
/// program and most others write a list. Every part has to parse as an array; if all of them do, the whole is
/// the array of all their elements. If one does not, the cuts prove nothing and the file has to be read as a
/// whole.
class ArrayReader
{
public:
    explicit ArrayReader(const QString& file);

    /// The state of the file when it was opened.
    const FileStamp& stamp() const { return m_stamp; }
    /// The next part, with room behind it that a JSON parser may read; valid until the next call. Nothing at
    /// the end. Throws Error.
    std::optional<std::string_view> next();

private:
    void readMore();

    QString m_file;
    FileDescriptor m_descriptor;
    FileStamp m_stamp;
    std::vector<char> m_buffer;
    /// The bytes of the buffer that hold something and were not handed out.
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
    bool m_isAtEnd = false;
    bool m_wasCut = false;
};

} // namespace varnel
