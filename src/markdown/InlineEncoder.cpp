#include "markdown/InlineEncoder.h"

#include "markdown/WebAddress.h"

#include <algorithm>
#include <array>

namespace varnel {

namespace {

constexpr std::array<bool, 128> characterTable(std::string_view special)
{
    std::array<bool, 128> table{};
    for (std::size_t control = 0; control < 0x20; ++control)
        table[control] = control != '\t' && control != '\n';
    for (const char character : special)
        table[static_cast<std::size_t>(character)] = true;
    return table;
}

// What can mean something wherever it stands. Of "http://", "www." and a line end's blanks isPlain() knows
// more.
constexpr auto markup = characterTable("*_~[]&\\`$<@");
constexpr auto toEncode = characterTable("*_~[]&\\`$<@hHwW\n");

bool isReserved(QChar character)
{
    return character == u'\xfdd0' || character == u'\xfdd1' || character == u'\xa874' ||
           character == u'\xa875';
}

bool isAsciiDigit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

bool isAsciiWord(QChar character)
{
    return character.unicode() < 0x80 && character.isLetterOrNumber();
}

} // namespace

bool InlineEncoder::isPlain(QStringView text)
{
    const QChar* const begin = text.cbegin();
    const QChar* const end = text.cend();
    for (const QChar* at = begin; at != end; ++at) {
        const char16_t character = at->unicode();
        if (character >= 0x80) {
            if (isReserved(*at) || at->isSurrogate())
                return false;
        } else if (markup[character]) {
            return false;
        } else if (character == u'\n') {
            if (at != begin && (at[-1] == u' ' || at[-1] == u'\t'))
                return false;
        } else if (character == u':' || character == u'.') {
            if ((end - at > 2 && at[1] == u'/' && at[2] == u'/') ||
                (at - begin > 2 && (at[-1] == u'w' || at[-1] == u'W')))
                return false;
        }
    }
    return true;
}

void InlineEncoder::encode(QStringView text, const LinkDefinitions& definitions)
{
    m_text = text;
    m_position = m_pieceEnd = 0;
    m_bytes.assign(1, softBreak);
    m_bytes.reserve(static_cast<std::size_t>(text.size()) + 16);
    m_references.clear();
    m_pieces.clear();
    m_referredLabels.clear();
    m_bracket = -1;
    m_backticksFound = m_hasMarkup = m_hasUnknownReference = false;
    m_noDollars = m_noParenthesis = m_noBracket = text.size() + 1;
    while (m_position < m_text.size())
        encodeCharacter(definitions);
}

void InlineEncoder::encodeCharacter(const LinkDefinitions& definitions)
{
    const QChar character = m_text[m_position];
    if (character.unicode() >= 0x80)
        appendCodePoint();
    else if (!toEncode[character.unicode()])
        appendByte(character);
    else
        encodeMarkup(definitions);
}

void InlineEncoder::encodeMarkup(const LinkDefinitions& definitions)
{
    const QChar character = m_text[m_position];
    switch (character.unicode()) {
    case u'\n':
        return encodeLineEnd();
    case u'\\':
        return encodeBackslash();
    case u'`':
        return encodeBackticks();
    case u'$':
        return encodeDollars();
    case u'<':
        return encodeAngleBracket();
    case u'h':
    case u'H':
    case u'w':
    case u'W':
        return encodeWebAddress();
    case u'@':
        return encodeMailAddress();
    case u']':
        return endBracket(definitions);
    case u'[':
        m_bracket = m_position + 1;
        m_bracketByte = m_bytes.size() + 1;
        break;
    case u'*':
    case u'_':
    case u'~':
    case u'&':
        break;
    default: // a control character, which is kept as it is
        return appendPiece({InlinePiece::Kind::Literal, m_text.sliced(m_position, 1), {}, {}});
    }
    m_hasMarkup = true;
    appendByte(character);
}

void InlineEncoder::appendByte(QChar character)
{
    m_bytes += static_cast<char>(character.unicode());
    ++m_position;
}

void InlineEncoder::appendCodePoint()
{
    const QChar character = m_text[m_position];
    if (isReserved(character))
        return appendPiece({InlinePiece::Kind::Literal, m_text.sliced(m_position, 1), {}, {}});
    char32_t code = character.unicode();
    ++m_position;
    if (character.isHighSurrogate() && m_position < m_text.size() && m_text[m_position].isLowSurrogate())
        code = QChar::surrogateToUcs4(character, m_text[m_position++]);
    else if (character.isSurrogate())
        code = QChar::ReplacementCharacter;
    const auto tail = [code](int shift) { return static_cast<char>(0x80 | ((code >> shift) & 0x3f)); };
    if (code < 0x800) {
        m_bytes += {static_cast<char>(0xc0 | (code >> 6)), tail(0)};
    } else if (code < 0x10000) {
        m_bytes += {static_cast<char>(0xe0 | (code >> 12)), tail(6), tail(0)};
    } else {
        m_bytes += {static_cast<char>(0xf0 | (code >> 18)), tail(12), tail(6), tail(0)};
    }
}

void InlineEncoder::appendPiece(InlinePiece piece)
{
    using enum InlinePiece::Kind;
    const bool delimited =
        piece.kind == Code || piece.kind == Maths || piece.kind == DisplayMaths || piece.kind == Link;
    m_bytes += delimited ? punctuationBegin : wordBegin;
    m_bytes += std::to_string(m_pieces.size());
    m_bytes += delimited ? punctuationEnd : wordEnd;
    m_position = m_pieceEnd = piece.source.end() - m_text.begin();
    m_pieces.push_back(std::move(piece));
}

void InlineEncoder::encodeLineEnd()
{
    const std::size_t spaces = m_bytes.size() - 1 - m_bytes.find_last_not_of(' ');
    m_bytes.resize(m_bytes.find_last_not_of(" \t") + 1);
    m_bytes += spaces >= 2 ? hardBreak : softBreak;
    ++m_position;
}

void InlineEncoder::encodeBackslash()
{
    const QChar next = m_position + 1 < m_text.size() ? m_text[m_position + 1] : QChar();
    if (next == u'(' && takeMaths(InlinePiece::Kind::Maths, u"\\)"))
        return;
    if (next == u'[' && takeMaths(InlinePiece::Kind::DisplayMaths, u"\\]"))
        return;
    if (next == u'\n') {
        m_bytes += hardBreak;
        m_position += 2;
        return;
    }
    const bool escapes = next > u' ' && next < u'\x7f' && !isAsciiWord(next);
    m_hasMarkup = m_hasMarkup || escapes;
    appendByte(u'\\');
    if (escapes)
        appendByte(next);
}

/// Takes the formula that begins at the current two-character delimiter, if it ends anywhere.
bool InlineEncoder::takeMaths(InlinePiece::Kind kind, QStringView closing)
{
    qsizetype& closedBefore = closing[0] == u'$'   ? m_noDollars
                              : closing[1] == u')' ? m_noParenthesis
                                                   : m_noBracket;
    if (m_position >= closedBefore)
        return false;
    const qsizetype begin = m_position + 2;
    qsizetype end = begin;
    while (end < m_text.size() && !m_text.sliced(end).startsWith(closing))
        end += m_text[end] == u'\\' ? 2 : 1;
    if (end >= m_text.size()) {
        closedBefore = m_position;
        return false;
    }
    const QStringView contents = m_text.sliced(begin, end - begin).trimmed();
    if (contents.isEmpty())
        return false;
    appendPiece({kind, m_text.sliced(m_position, end + 2 - m_position), contents, {}});
    return true;
}

void InlineEncoder::encodeDollars()
{
    qsizetype run = 1;
    while (m_position + run < m_text.size() && m_text[m_position + run] == u'$')
        ++run;
    if (run == 2 && takeMaths(InlinePiece::Kind::DisplayMaths, u"$$"))
        return;
    const qsizetype begin = m_position + 1;
    const auto mayOpen = [this, begin] {
        return begin < m_text.size() && !m_text[begin].isSpace() && !isAsciiDigit(m_text[begin]) &&
               (m_position == 0 || !isAsciiDigit(m_text[m_position - 1]));
    };
    const auto mayClose = [this](qsizetype end) {
        return end < m_text.size() && m_text[end] == u'$' && !m_text[end - 1].isSpace() &&
               (end + 1 == m_text.size() || (m_text[end + 1] != u'$' && !isAsciiDigit(m_text[end + 1])));
    };
    if (run == 1 && mayOpen()) {
        qsizetype end = begin;
        while (end < m_text.size() && m_text[end] != u'$' && m_text[end] != u'\n')
            end += m_text[end] == u'\\' ? 2 : 1;
        if (mayClose(end)) {
            return appendPiece({InlinePiece::Kind::Maths,
                                m_text.sliced(m_position, end + 1 - m_position),
                                m_text.sliced(begin, end - begin),
                                {}});
        }
    }
    m_bytes.append(static_cast<std::size_t>(run), '$');
    m_position += run;
}

void InlineEncoder::findBackticks()
{
    m_backticksFound = true;
    m_backticks.clear();
    for (qsizetype at = m_text.indexOf(u'`', m_position); at >= 0; at = m_text.indexOf(u'`', at)) {
        const qsizetype begin = at;
        while (at < m_text.size() && m_text[at] == u'`')
            ++at;
        m_backticks[at - begin].push_back(begin);
    }
}

void InlineEncoder::encodeBackticks()
{
    if (!m_backticksFound)
        findBackticks();
    qsizetype run = 1;
    while (m_position + run < m_text.size() && m_text[m_position + run] == u'`')
        ++run;
    const auto runs = m_backticks.find(run);
    if (runs != m_backticks.end()) {
        const auto end = std::ranges::lower_bound(runs->second, m_position + run);
        if (end != runs->second.end()) {
            QStringView contents = m_text.sliced(m_position + run, *end - m_position - run);
            const auto isBlank = [](QChar character) { return character == u' ' || character == u'\n'; };
            if (isBlank(contents.front()) && isBlank(contents.back()) &&
                !std::ranges::all_of(contents, isBlank))
                contents = contents.sliced(1).chopped(1);
            return appendPiece(
                {InlinePiece::Kind::Code, m_text.sliced(m_position, *end + run - m_position), contents, {}});
        }
    }
    m_hasMarkup = true; // a lone run may still have its first backtick escaped by the parser's rules
    for (; run > 0; --run) {
        m_bytes += '\\';
        appendByte(u'`');
    }
}

void InlineEncoder::encodeAngleBracket()
{
    const qsizetype length = angleLinkLength(m_text.sliced(m_position));
    if (length > 0) {
        const QStringView source = m_text.sliced(m_position, length);
        const QStringView target = source.sliced(1).chopped(1);
        return appendPiece({InlinePiece::Kind::Link, source, target, {}});
    }
    appendByte(u'<');
}

void InlineEncoder::encodeWebAddress()
{
    if (m_position == 0 || !isAsciiWord(m_text[m_position - 1])) {
        const qsizetype length = webAddressLength(m_text.sliced(m_position));
        if (length > 0) {
            const QStringView source = m_text.sliced(m_position, length);
            return appendPiece({InlinePiece::Kind::WebLink, source, source, {}});
        }
    }
    appendByte(m_text[m_position]);
}

void InlineEncoder::encodeMailAddress()
{
    const QStringView address = mailAddressAround(m_text, m_position, m_pieceEnd);
    if (address.isEmpty())
        return appendByte(u'@');
    // The name's characters stand for themselves, so that many bytes are taken back.
    m_bytes.resize(m_bytes.size() - static_cast<std::size_t>(m_text.begin() + m_position - address.begin()));
    appendPiece({InlinePiece::Kind::MailLink, address, address, {}});
}

void InlineEncoder::endBracket(const LinkDefinitions& definitions)
{
    const std::size_t labelByte = m_bracketByte;
    const qsizetype begin = std::exchange(m_bracket, -1);
    const QStringView label = begin < 0 ? QStringView() : m_text.sliced(begin, m_position - begin);
    appendByte(u']');
    m_hasMarkup = true;
    if (label.isEmpty() || label.size() > LinkDefinitions::maximumLabel || label.trimmed().isEmpty())
        return;
    const auto definition = definitions.find(label);
    if (!definition) {
        m_hasUnknownReference = true;
        return;
    }
    std::string encoded = m_bytes.substr(labelByte, m_bytes.size() - 1 - labelByte);
    const auto [entry, isNew] = m_referredLabels.insert(std::move(encoded));
    if (!isNew)
        return;
    m_references += "\n[" + *entry + "]: <";
    m_references += wordBegin;
    m_references += std::to_string(m_pieces.size());
    m_references += wordEnd;
    m_references += ">\n";
    m_pieces.push_back({InlinePiece::Kind::Definition, {}, {}, *definition});
}

} // namespace varnel
