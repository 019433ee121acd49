#include "store/ArrayReader.h"

#include "base/JsonReader.h"

#include <algorithm>
#include <utility>

namespace varnel {

namespace {

constexpr std::size_t partSize = 256 * 1024;
constexpr std::string_view cutMark = "\n  },\n  {";
constexpr std::size_t commaInMark = 4;

/// Where the last mark of a text begins that ends behind its first `known` bytes. The braces are looked for,
/// of which a text has few and which the processor finds many bytes at a time.
std::size_t lastCut(std::string_view text, std::size_t known)
{
    constexpr std::size_t braceInMark = cutMark.size() - 1;
    std::size_t last = std::string_view::npos;
    for (std::size_t brace = text.find('{', std::max(known, braceInMark)); brace != std::string_view::npos;
         brace = text.find('{', brace + 1)) {
        if (text.substr(brace - braceInMark, cutMark.size()) == cutMark)
            last = brace - braceInMark;
    }
    return last;
}

} // namespace

ArrayReader::ArrayReader(const QString& file)
    : m_file(file)
    , m_descriptor(openRegularFile(file))
    , m_stamp(stampOf(m_descriptor.get()))
{}

void ArrayReader::readMore()
{
    const auto padding = static_cast<std::size_t>(JsonParser::padding);
    std::copy(m_buffer.begin() + static_cast<std::ptrdiff_t>(m_begin),
              m_buffer.begin() + static_cast<std::ptrdiff_t>(m_end), m_buffer.begin());
    m_end -= std::exchange(m_begin, std::size_t(0));
    // An object that is longer than a part makes the steps longer, so that it is not moved too often.
    const std::size_t step = std::max(partSize, m_end);
    if (m_buffer.size() < m_end + step + padding)
        m_buffer.resize(m_end + step + padding);
    const std::size_t count = readInto(m_descriptor.get(), m_buffer.data() + m_end, step, m_file);
    m_end += count;
    m_isAtEnd = count < step;
}

std::optional<std::string_view> ArrayReader::next()
{
    // The comma of the last cut stands for the end of one part and for the beginning of the next.
    if (m_wasCut)
        m_buffer[m_begin] = '[';
    std::size_t cut = std::string_view::npos;
    while (!m_isAtEnd && cut == std::string_view::npos) {
        const std::size_t known = m_end - m_begin;
        readMore();
        cut = lastCut({m_buffer.data(), m_end}, known);
    }
    m_wasCut = cut != std::string_view::npos;
    const std::size_t begin = m_begin;
    if (begin == m_end)
        return std::nullopt;
    if (!m_wasCut) {
        m_begin = m_end;
        return std::string_view(m_buffer.data() + begin, m_end - begin);
    }
    m_begin = cut + commaInMark;
    m_buffer[m_begin] = ']';
    return std::string_view(m_buffer.data() + begin, m_begin + 1 - begin);
}

} // namespace varnel
