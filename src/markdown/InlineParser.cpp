#include "markdown/InlineParser.h"

#include "markdown/InlinePlaceholder.h"

#include <algorithm>

namespace varnel {

namespace {

/// Of a link without text, in UTF-16 units: a definition may lend its destination to many of them.
constexpr qsizetype longestShownTarget = 256;

enum Depth : std::size_t { Strong, Emphasis, Strikethrough, Link, Image };

constexpr std::array<MarkdownStyle, 5> styleOfDepth = {MarkdownStyle::Strong, MarkdownStyle::Emphasis,
                                                       MarkdownStyle::Strikethrough, MarkdownStyle::Link,
                                                       MarkdownStyle::Image};

std::optional<Depth> depthOf(MD_SPANTYPE type)
{
    switch (type) {
    case MD_SPAN_STRONG:
        return Strong;
    case MD_SPAN_EM:
        return Emphasis;
    case MD_SPAN_DEL:
        return Strikethrough;
    case MD_SPAN_A:
        return Link;
    case MD_SPAN_IMG:
        return Image;
    default:
        return std::nullopt;
    }
}

std::size_t asciiLength(std::string_view bytes)
{
    const auto isAscii = [](char byte) { return static_cast<unsigned char>(byte) < 0x80; };
    return static_cast<std::size_t>(std::ranges::find_if_not(bytes, isAscii) - bytes.begin());
}

char16_t shownCharacter(char byte)
{
    return byte == InlineEncoder::softBreak   ? u'\n'
           : byte == InlineEncoder::hardBreak ? u'\x2028'
                                              : static_cast<char16_t>(byte);
}

bool isContinuation(char byte)
{
    return (byte & 0xc0) == 0x80;
}

} // namespace

MD_PARSER InlineParser::callbacks()
{
    MD_PARSER parser{};
    parser.flags = MD_FLAG_STRIKETHROUGH | MD_FLAG_NOHTML;
    parser.enter_block = [](MD_BLOCKTYPE type, void*, void* self) {
        if (type == MD_BLOCK_P)
            static_cast<InlineParser*>(self)->beginSegment();
        return 0;
    };
    parser.leave_block = [](MD_BLOCKTYPE type, void*, void* self) {
        if (type == MD_BLOCK_P)
            static_cast<InlineParser*>(self)->endSegment();
        return 0;
    };
    parser.enter_span = [](MD_SPANTYPE type, void* detail, void* self) {
        static_cast<InlineParser*>(self)->enterSpan(type, detail);
        return 0;
    };
    parser.leave_span = [](MD_SPANTYPE type, void*, void* self) {
        static_cast<InlineParser*>(self)->leaveSpan(type);
        return 0;
    };
    parser.text = [](MD_TEXTTYPE type, const MD_CHAR* text, MD_SIZE size, void* self) {
        static_cast<InlineParser*>(self)->receiveText(type, {text, size});
        return 0;
    };
    return parser;
}

MarkdownText InlineParser::parse(QStringView text, const LinkDefinitions& definitions)
{
    return InlineEncoder::isPlain(text) ? MarkdownText{text.toString(), {}, {}}
                                        : parseMarkup(text, definitions);
}

MarkdownText InlineParser::parse(const QString& text, const LinkDefinitions& definitions)
{
    return InlineEncoder::isPlain(text) ? MarkdownText{text, {}, {}} : parseMarkup(text, definitions);
}

MarkdownText InlineParser::parseMarkup(QStringView text, const LinkDefinitions& definitions)
{
    m_encoder.encode(text, definitions);
    m_hasUnknownReference = m_hasUnknownReference || m_encoder.hasUnknownReference();
    m_text.clear();
    m_ranges.clear();
    m_links.clear();
    m_openLinks.clear();
    m_depths = {};
    if (!m_encoder.hasMarkup()) {
        append(std::string_view(m_encoder.bytes()).substr(1));
    } else {
        split();
        const MD_PARSER parser = callbacks();
        const auto size = static_cast<MD_SIZE>(m_document.size());
        if (md_parse(m_document.data(), size, &parser, this) != 0)
            return {text.toString(), {}, {}};
    }
    return {
        QStringView(m_text).toString(), {m_ranges.begin(), m_ranges.end()}, {m_links.begin(), m_links.end()}};
}

/// Lays the text out for the parser: a paragraph for each segment, then the definitions it refers to.
void InlineParser::split()
{
    const std::string& bytes = m_encoder.bytes();
    m_segments.clear();
    m_segment = 0;
    m_document.clear();
    std::size_t begin = 1;
    while (begin < bytes.size()) {
        Segment segment{bytes.size()};
        if (bytes.size() - begin > maximumSegment) {
            segment.end = cutBefore(begin + maximumSegment);
            const char atCut = segment.end < bytes.size() ? bytes[segment.end] : '\0';
            if (atCut == ' ' || atCut == InlineEncoder::softBreak || atCut == InlineEncoder::hardBreak)
                segment.break_ = atCut;
        }
        m_document += InlineEncoder::softBreak;
        m_document.append(bytes, begin, segment.end - begin);
        m_document += "\n\n";
        begin = segment.end + (segment.break_ != 0 ? 1 : 0);
        m_segments.push_back(segment);
    }
    m_document += m_encoder.references();
    m_document += '\n';
}

/// Where to end a segment: at white space not far before the limit, else right after it between two
/// characters that do not belong together.
std::size_t InlineParser::cutBefore(std::size_t limit) const
{
    const std::string& bytes = m_encoder.bytes();
    const std::size_t earliest = limit - maximumSegment / 4;
    const std::string_view before = std::string_view(bytes).substr(earliest, limit - earliest);
    const std::size_t last = before.find_last_of(std::string_view(" \v\f"));
    if (last != std::string_view::npos)
        return earliest + last;
    for (std::size_t at = limit; at < bytes.size(); ++at) {
        const std::string_view rest = std::string_view(bytes).substr(at);
        const bool insidePlaceholder = (bytes[at] >= '0' && bytes[at] <= '9') ||
                                       rest.starts_with(InlineEncoder::wordEnd) ||
                                       rest.starts_with(InlineEncoder::punctuationEnd);
        if (!insidePlaceholder && !isContinuation(bytes[at]) && bytes[at - 1] != '\\')
            return at;
    }
    return bytes.size();
}

void InlineParser::beginSegment()
{
    m_atSegmentBegin = true;
}

void InlineParser::endSegment()
{
    m_depths = {};
    m_openLinks.clear();
    if (m_segment < m_segments.size() && m_segments[m_segment].break_ != 0)
        append({&m_segments[m_segment].break_, 1});
    ++m_segment;
}

void InlineParser::receiveText(MD_TEXTTYPE type, std::string_view bytes)
{
    if (m_segment >= m_segments.size())
        return; // a definition that was not taken as one
    if (m_atSegmentBegin) {
        m_atSegmentBegin = false;
        bytes.remove_prefix(1);
    }
    if (type == MD_TEXT_ENTITY) {
        const std::size_t begin = m_text.size();
        m_text += characterText(bytes).toStdU16String();
        addRange(begin, {}, -1);
    } else {
        append(bytes);
    }
}

void InlineParser::append(std::string_view bytes)
{
    std::size_t begin = m_text.size();
    while (!bytes.empty()) {
        if (const std::size_t ascii = asciiLength(bytes); ascii > 0) {
            const std::size_t size = m_text.size();
            m_text.resize(size + ascii);
            std::transform(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(ascii),
                           m_text.begin() + static_cast<std::ptrdiff_t>(size), shownCharacter);
            bytes.remove_prefix(ascii);
        } else if (beginsPlaceholder(bytes)) {
            addRange(begin, {}, -1);
            bytes.remove_prefix(appendPiece(bytes));
            begin = m_text.size();
        } else {
            appendCodePoint(bytes);
        }
    }
    addRange(begin, {}, -1);
}

/// Takes one character of well-formed UTF-8 off the bytes.
void InlineParser::appendCodePoint(std::string_view& bytes)
{
    const auto bits = [bytes](std::size_t index) { return static_cast<char32_t>(bytes[index] & 0x3f); };
    const auto lead = static_cast<unsigned char>(bytes.front());
    std::size_t length = 2;
    char32_t code = ((lead & 0x1fu) << 6) | bits(1);
    if (lead >= 0xf0) {
        length = 4;
        code = ((lead & 0x07u) << 18) | (bits(1) << 12) | (bits(2) << 6) | bits(3);
    } else if (lead >= 0xe0) {
        length = 3;
        code = ((lead & 0x0fu) << 12) | (bits(1) << 6) | bits(2);
    }
    if (QChar::requiresSurrogates(code)) {
        m_text += QChar::highSurrogate(code);
        m_text += QChar::lowSurrogate(code);
    } else {
        m_text += static_cast<char16_t>(code);
    }
    bytes.remove_prefix(length);
}

/// Appends what a placeholder stands for and returns how many bytes the placeholder takes.
std::size_t InlineParser::appendPiece(std::string_view bytes)
{
    using enum InlinePiece::Kind;
    const InlinePlaceholder found = readPlaceholder(bytes);
    const InlinePiece& piece = m_encoder.pieces()[found.piece];
    const std::size_t begin = m_text.size();
    switch (piece.kind) {
    case Code:
    case Maths:
    case DisplayMaths:
        for (const QChar character : piece.contents)
            m_text += character == u'\n' ? u' ' : character.unicode();
        addRange(begin,
                 piece.kind == Code    ? MarkdownStyle::Code
                 : piece.kind == Maths ? MarkdownStyle::Maths
                                       : MarkdownStyle::DisplayMaths,
                 -1);
        break;
    case WebLink:
        addLinked(piece.contents,
                  piece.contents.startsWith(u"www.", Qt::CaseInsensitive) ? u"http://" : QStringView());
        break;
    case Link: {
        const bool hasScheme =
            piece.contents.first(qMin<qsizetype>(piece.contents.size(), 33)).contains(u':');
        addLinked(piece.contents, hasScheme ? QStringView() : u"mailto:");
        break;
    }
    case MailLink:
        addLinked(piece.contents, u"mailto:");
        break;
    case Literal:
    case Definition:
        m_text.append(piece.source.utf16(), static_cast<std::size_t>(piece.source.size()));
        addRange(begin, {}, -1);
        break;
    }
    return found.length;
}

/// Appends text that is, behind the scheme that was left out, a link of its own, unless it lies within
/// another.
void InlineParser::addLinked(QStringView text, QStringView scheme)
{
    const std::size_t begin = m_text.size();
    m_text.append(text.utf16(), static_cast<std::size_t>(text.size()));
    if (!m_openLinks.empty())
        return addRange(begin, {}, -1);
    QString destination = scheme.toString();
    destination += text;
    m_links.push_back({destination, {}});
    addRange(begin, MarkdownStyle::Link, std::ssize(m_links) - 1);
}

MarkdownStyles InlineParser::styles() const
{
    MarkdownStyles styles;
    for (std::size_t depth = 0; depth < m_depths.size(); ++depth) {
        if (m_depths[depth] > 0)
            styles |= styleOfDepth[depth];
    }
    return styles;
}

/// Gives the text from `begin` on the styles of the spans it lies in and those of its own.
void InlineParser::addRange(std::size_t begin, MarkdownStyles own, qsizetype link)
{
    const auto length = static_cast<qsizetype>(m_text.size() - begin);
    const MarkdownStyles all = styles() | own;
    if (length == 0 || !all)
        return;
    if (!m_openLinks.empty())
        link =
            m_openLinks.front().index; // of links and images within each other, the outermost leads somewhere
    const auto start = static_cast<qsizetype>(begin);
    if (!m_ranges.empty()) {
        MarkdownRange& last = m_ranges.back();
        if (last.start + last.length == start && last.styles == all && last.link == link) {
            last.length += length;
            return;
        }
    }
    m_ranges.push_back({start, length, all, link});
}

void InlineParser::enterSpan(MD_SPANTYPE type, const void* detail)
{
    const auto depth = depthOf(type);
    if (!depth)
        return;
    ++m_depths[*depth];
    if (*depth == Link || *depth == Image) {
        // Both details hold the same two attributes.
        const auto* const link = static_cast<const MD_SPAN_A_DETAIL*>(detail);
        if (m_openLinks.empty())
            m_links.push_back(linkFrom(link->href, link->title, m_encoder));
        m_openLinks.push_back({std::ssize(m_links) - 1, m_text.size()});
    }
}

void InlineParser::leaveSpan(MD_SPANTYPE type)
{
    const auto depth = depthOf(type);
    if (!depth || m_depths[*depth] == 0)
        return;
    if (*depth == Link || *depth == Image) {
        const OpenLink link = m_openLinks.back();
        // A link must be there to be seen: one without text shows where it leads.
        const qsizetype size = m_links[static_cast<std::size_t>(link.index)].destination.size();
        if (m_text.size() == link.begin) {
            m_text += m_links[static_cast<std::size_t>(link.index)]
                          .destination.first(qMin(longestShownTarget, size))
                          .toStdU16String();
            addRange(link.begin, {}, -1);
        }
        m_openLinks.pop_back();
    }
    --m_depths[*depth];
}

} // namespace varnel
