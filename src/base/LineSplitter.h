#pragma once

#include <QByteArrayView>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace varnel {

/// Cuts a stream of bytes into lines as they arrive. A line ends at LF, CR or CRLF, wherever the pieces are
/// cut; nothing else ends one. The last line may lack its end.
class LineSplitter
{
public:
    /// The longest line taken, in bytes without its end; a longer one is reported once and nothing comes
    /// after it.
    static constexpr std::size_t maximumLength = 16 * 1024 * 1024;

    struct Line
    {
        /// Valid until the splitter is used again. At least JsonParser::padding bytes behind it are readable.
        std::string_view text;
        bool tooLong = false;
        /// Whether the end of the line arrived; the last line of a stream may lack it.
        bool ended = true;
    };

    explicit LineSplitter(std::size_t limit = maximumLength);

    void append(QByteArrayView bytes);
    /// No more bytes will come: what is left over is the last line.
    void finish() { m_finished = true; }
    /// The next whole line, if there is one.
    std::optional<Line> next();

private:
    Line take(std::size_t length, std::size_t skip);

    std::size_t m_limit;
    std::string m_buffer;
    std::size_t m_start = 0;   // where the next line begins
    std::size_t m_scanned = 0; // up to where no line end was found
    bool m_finished = false;
    bool m_overflowed = false;
    bool m_skipLineFeed = false; // the last line ended at a CR; an LF right behind it belongs to that end
};

} // namespace varnel
