#pragma once

#include "markdown/InlineEncoder.h"

#include <md4c.h>

#include <array>
#include <string>
#include <vector>

namespace varnel {

/// Parses the text of leaf blocks: emphasis, links, code spans, formulas. Keeps its buffers from one block to
/// the next, so use one parser for a whole text.
class InlineParser
{
public:
    /// Longest text that is parsed as one, in bytes of UTF-8. Longer blocks are parsed in segments, cut
    /// between words where there are any: markup that spans a cut is shown as it is written. This bounds what
    /// the parser's quadratic cases cost.
    static constexpr std::size_t maximumSegment = 8 * 1024;

    /// Parses one block's text, whose lines have lost the white space before them.
    MarkdownText parse(QStringView text, const LinkDefinitions& definitions);

    /// Whether a text so far referred to a definition that was not known.
    bool hasUnknownReference() const { return m_hasUnknownReference; }

private:
    struct Segment
    {
        std::size_t end = 0;
        char break_ = 0; // what stood at the cut, 0 for nothing
    };

    void split();
    std::size_t cutBefore(std::size_t limit) const;
    void append(std::string_view bytes);
    std::size_t appendPiece(std::string_view bytes);
    void appendCodePoint(std::string_view& bytes);
    void addRange(std::size_t begin, MarkdownStyles styles, qsizetype link);
    void addLinked(QStringView text, QStringView scheme);

    void enterSpan(MD_SPANTYPE type, const void* detail);
    void leaveSpan(MD_SPANTYPE type);
    void receiveText(MD_TEXTTYPE type, std::string_view bytes);
    void beginSegment();
    void endSegment();
    MarkdownStyles styles() const;
    static MD_PARSER callbacks();

    InlineEncoder m_encoder;
    std::string m_document;
    std::vector<Segment> m_segments;
    std::size_t m_segment = 0;
    bool m_atSegmentBegin = false;

    struct OpenLink
    {
        qsizetype index = -1;
        std::size_t begin = 0;
    };
    std::u16string m_text;
    MarkdownText m_result;
    std::vector<OpenLink> m_openLinks;
    std::array<int, 5> m_depths{}; // of strong, emphasis, strikethrough, link, image
    bool m_hasUnknownReference = false;
};

} // namespace varnel
