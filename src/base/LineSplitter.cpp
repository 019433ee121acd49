#include "base/LineSplitter.h"

#include "base/JsonReader.h"

#include <cstring>

namespace varnel {

LineSplitter::LineSplitter(std::size_t limit)
    : m_limit(limit)
{}

void LineSplitter::append(QByteArrayView bytes)
{
    if (m_overflowed)
        return;
    if (m_start == m_buffer.size()) {
        m_buffer.clear();
        m_start = m_scanned = 0;
    } else if (m_start >= m_buffer.size() / 2) {
        m_buffer.erase(0, m_start);
        m_scanned -= m_start;
        m_start = 0;
    }
    const std::size_t needed = m_buffer.size() + static_cast<std::size_t>(bytes.size()) + JsonParser::padding;
    if (m_buffer.capacity() < needed)
        m_buffer.reserve(std::max(needed, 2 * m_buffer.capacity()));
    m_buffer.append(bytes.data(), static_cast<std::size_t>(bytes.size()));
}

LineSplitter::Line LineSplitter::take(std::size_t length, std::size_t skip)
{
    const Line line{std::string_view(m_buffer).substr(m_start, length), false, skip > 0};
    m_start += length + skip;
    m_scanned = m_start;
    return line;
}

std::optional<LineSplitter::Line> LineSplitter::next()
{
    if (m_overflowed)
        return std::nullopt;
    if (m_skipLineFeed && m_start < m_buffer.size()) {
        m_skipLineFeed = false;
        if (m_buffer[m_start] == '\n')
            m_scanned = ++m_start;
    }

    const std::string_view unread = std::string_view(m_buffer).substr(m_scanned);
    const void* const lineFeed = std::memchr(unread.data(), '\n', unread.size());
    const std::size_t end = lineFeed ? static_cast<const char*>(lineFeed) - unread.data() : unread.size();
    const void* const carriageReturn = std::memchr(unread.data(), '\r', end);
    const std::size_t length =
        m_scanned - m_start +
        (carriageReturn ? static_cast<const char*>(carriageReturn) - unread.data() : end);
    if (length > m_limit) {
        m_overflowed = true;
        m_buffer = std::string();
        m_start = m_scanned = 0;
        return Line{{}, true, false};
    }
    if (carriageReturn) {
        m_skipLineFeed = true;
        return take(length, 1);
    }
    if (lineFeed)
        return take(length, 1);
    m_scanned = m_buffer.size();
    if (m_finished && m_start < m_buffer.size())
        return take(length, 0);
    return std::nullopt;
}

} // namespace varnel
