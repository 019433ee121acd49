#include "markdown/InlinePlaceholder.h"

#include "markdown/CharacterReferences.h"

#include <charconv>

namespace varnel {

namespace {

QString decoded(std::string_view bytes)
{
    return QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

/// Adds plain bytes of a destination or title; placeholders in them give way to their source.
void appendSource(std::string_view bytes, const std::vector<InlinePiece>& pieces, QString& output)
{
    while (!bytes.empty()) {
        if (beginsPlaceholder(bytes)) {
            const InlinePlaceholder found = readPlaceholder(bytes);
            output += pieces[found.piece].source;
            bytes.remove_prefix(found.length);
            continue;
        }
        std::size_t end = 1;
        while (end < bytes.size() && !beginsPlaceholder(bytes.substr(end)))
            ++end;
        output += decoded(bytes.substr(0, end));
        bytes.remove_prefix(end);
    }
}

QString attributeText(const MD_ATTRIBUTE& attribute, const std::vector<InlinePiece>& pieces)
{
    QString output;
    if (attribute.size == 0)
        return output;
    for (std::size_t part = 0; attribute.substr_offsets[part] < attribute.size; ++part) {
        const MD_OFFSET begin = attribute.substr_offsets[part];
        const std::string_view bytes(attribute.text + begin, attribute.substr_offsets[part + 1] - begin);
        if (attribute.substr_types[part] == MD_TEXT_ENTITY)
            output += characterText(bytes);
        else
            appendSource(bytes, pieces, output);
    }
    output.replace(QLatin1Char(InlineEncoder::softBreak), u'\n');
    return output.replace(QLatin1Char(InlineEncoder::hardBreak), u'\n');
}

} // namespace

bool beginsPlaceholder(std::string_view bytes)
{
    return bytes.starts_with(InlineEncoder::wordBegin) || bytes.starts_with(InlineEncoder::punctuationBegin);
}

InlinePlaceholder readPlaceholder(std::string_view bytes)
{
    // All four marks are of the same length.
    constexpr std::size_t mark = InlineEncoder::wordBegin.size();
    std::size_t piece = 0;
    const char* const begin = bytes.data() + mark;
    const char* const end = std::from_chars(begin, bytes.data() + bytes.size(), piece).ptr;
    return {piece, mark + static_cast<std::size_t>(end - begin) + mark};
}

QString characterText(std::string_view bytes)
{
    const QString source = decoded(bytes);
    const CharacterReference reference = characterReference(source);
    return reference.length == source.size() ? reference.text : source;
}

MarkdownLink linkFrom(const MD_ATTRIBUTE& destination, const MD_ATTRIBUTE& title,
                      const std::vector<InlinePiece>& pieces)
{
    const std::string_view bytes(destination.text, destination.size);
    if (beginsPlaceholder(bytes)) {
        const InlinePiece& piece = pieces[readPlaceholder(bytes).piece];
        if (piece.kind == InlinePiece::Kind::Definition)
            return piece.definition;
    }
    return {attributeText(destination, pieces), attributeText(title, pieces)};
}

} // namespace varnel
