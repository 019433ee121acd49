#pragma once

#include "base/JsonReader.h"
#include "base/JsonWriter.h"
#include "store/ArrayReader.h"
#include "store/FileAccess.h"

#include <QString>

#include <algorithm>
#include <functional>
#include <iterator>
#include <optional>
#include <stop_token>
#include <vector>

namespace varnel {

/// What was done with the old contents of a file before new ones took their place.
struct SetAside
{
    enum class Reason {
        Unreadable, ///< they could not be read
        Changed,    ///< somebody else had written them since they were last read or written here
    };

    Reason reason = Reason::Unreadable;
    QString file;
    /// Where the old contents are now.
    QString path;

    bool operator==(const SetAside&) const = default;

    /// One line for the user.
    QString text() const;
};

/// One of the JSON files of the data folder. It knows what state of the file this program has seen, so that
/// nothing it has not seen is lost when it writes.
///
/// It belongs to no thread, but only one may use it at a time.
class DataFile
{
public:
    explicit DataFile(QString path)
        : m_path(std::move(path))
    {}

    const QString& path() const { return m_path; }

    /// Reads the file and decodes it; nothing if there is none. Throws Error that names the file, and for
    /// what is wrong in it the place.
    template <typename Decode>
    std::optional<std::invoke_result_t<Decode, JsonValue>> load(Decode decode)
    {
        const std::optional<FileContents> contents = read();
        if (!contents)
            return std::nullopt;
        try {
            JsonParser parser;
            auto value = std::invoke(decode, parser.parsePadded(contents->text()));
            m_isReadable = true;
            return value;
        } catch (const DecodeError& error) {
            throw error.introducedBy(QStringLiteral("%1 cannot be read.").arg(m_path));
        }
    }

    /// The same for a file that holds an array of objects, each read by `decode`; a big one takes no more
    /// memory than what it decodes to.
    template <typename Decode>
    auto loadList(Decode decode) -> std::optional<std::vector<std::invoke_result_t<Decode, JsonValue>>>
    {
        if (auto items = loadParts(decode))
            return items;
        // What is wrong, and where, shows in the whole only.
        return load(listOf(decode));
    }

    /// Replaces the file by what `write` writes, a piece at a time; the folder is made if it is missing. When
    /// it returns, the new contents are on the disk. Throws Error; the old contents are then in place.
    ///
    /// Old contents that could not be read, or that somebody else wrote, are kept beside the file; if that
    /// fails, nothing is saved. Yields what was kept; what a save that then failed had kept, the next one
    /// that does not fail yields. A stop that comes before the new contents are complete ends it with
    /// Cancelled.
    std::optional<SetAside> save(const std::function<void(JsonWriter&)>& write,
                                 const std::stop_token& stop = {});

    /// Removes the file if it is there. Throws Error.
    void remove();

private:
    /// Nothing when the file cannot be read in parts, for whatever reason.
    template <typename Decode>
    auto loadParts(Decode decode) -> std::optional<std::vector<std::invoke_result_t<Decode, JsonValue>>>
    {
        std::vector<std::invoke_result_t<Decode, JsonValue>> items;
        try {
            ArrayReader reader(m_path);
            JsonParser parser;
            bool isEmpty = true;
            while (const std::optional<std::string_view> part = reader.next()) {
                isEmpty = false;
                auto more = parser.parsePadded(*part).list(decode);
                std::move(more.begin(), more.end(), std::back_inserter(items));
            }
            if (isEmpty)
                return std::nullopt;
            m_known = reader.stamp();
        } catch (const Error&) {
            return std::nullopt;
        }
        m_wasRead = true;
        m_isReadable = true;
        return items;
    }

    std::optional<FileContents> read();
    std::optional<SetAside> keepOldContents();

    QString m_path;
    /// The state that was last read or written here; nothing if there was no file.
    std::optional<FileStamp> m_known;
    /// What was kept and nobody was told of yet.
    std::vector<SetAside> m_unreported;
    bool m_isReadable = true;
    bool m_wasRead = false;
};

} // namespace varnel
