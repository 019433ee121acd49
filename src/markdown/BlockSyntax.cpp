#include "markdown/BlockSyntax.h"

#include "markdown/CharacterReferences.h"

namespace varnel {

namespace {

constexpr QStringView dollars = u"$$";
constexpr QStringView closingBracket = u"\\]";

bool isBlank(QChar character)
{
    return character == u' ' || character == u'\t';
}

bool isDigit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

bool isAsciiPunctuation(QChar character)
{
    return (character >= u'!' && character <= u'/') || (character >= u':' && character <= u'@') ||
           (character >= u'[' && character <= u'`') || (character >= u'{' && character <= u'~');
}

/// How often the first character stands at the beginning.
qsizetype runLength(QStringView line)
{
    qsizetype length = 0;
    while (length < line.size() && line[length] == line[0])
        ++length;
    return length;
}

std::optional<MarkdownAlignment> delimiterCell(QStringView cell)
{
    const bool left = cell.startsWith(u':');
    const bool right = cell.endsWith(u':');
    const QStringView dashes = cell.sliced(left ? 1 : 0).chopped(right && cell.size() > 1 ? 1 : 0);
    if (dashes.isEmpty() || dashes[0] != u'-' || runLength(dashes) != dashes.size())
        return std::nullopt;
    if (left)
        return right ? MarkdownAlignment::Centre : MarkdownAlignment::Left;
    return right ? MarkdownAlignment::Right : MarkdownAlignment::Default;
}

} // namespace

std::optional<HeadingLine> headingLine(QStringView line)
{
    if (!line.startsWith(u'#'))
        return std::nullopt;
    const qsizetype level = runLength(line);
    if (level > 6 || (level < line.size() && !isBlank(line[level])))
        return std::nullopt;
    QStringView text = line.sliced(level).trimmed();
    qsizetype end = text.size();
    while (end > 0 && text[end - 1] == u'#')
        --end;
    if (end == 0 || isBlank(text[end - 1]))
        text = text.first(end).trimmed();
    return HeadingLine{static_cast<int>(level), text};
}

std::optional<FenceLine> openingFence(QStringView line)
{
    if (!line.startsWith(u'`') && !line.startsWith(u'~'))
        return std::nullopt;
    const qsizetype length = runLength(line);
    const QStringView info = line.sliced(length).trimmed();
    if (length < 3 || (line[0] == u'`' && info.contains(u'`')))
        return std::nullopt;
    return FenceLine{line[0], length, info};
}

bool isClosingFence(QStringView line, const FenceLine& opening)
{
    if (!line.startsWith(opening.mark))
        return false;
    const qsizetype length = runLength(line);
    return length >= opening.length && line.sliced(length).trimmed().isEmpty();
}

bool isRuleLine(QStringView line)
{
    if (!line.startsWith(u'-') && !line.startsWith(u'*') && !line.startsWith(u'_'))
        return false;
    int marks = 0;
    for (const QChar character : line) {
        if (character == line[0])
            ++marks;
        else if (!isBlank(character))
            return false;
    }
    return marks >= 3;
}

int underlineLevel(QStringView line)
{
    if (!line.startsWith(u'=') && !line.startsWith(u'-'))
        return 0;
    if (!line.sliced(runLength(line)).trimmed().isEmpty())
        return 0;
    return line[0] == u'=' ? 1 : 2;
}

std::optional<ListMarker> listMarker(QStringView line)
{
    ListMarker marker;
    if (line.startsWith(u'-') || line.startsWith(u'*') || line.startsWith(u'+')) {
        marker.delimiter = line[0];
    } else {
        int digits = 0;
        int number = 0;
        while (digits < line.size() && digits < 9 && isDigit(line[digits]))
            number = number * 10 + line[digits++].digitValue();
        if (digits == 0 || digits == line.size() || (line[digits] != u'.' && line[digits] != u')'))
            return std::nullopt;
        marker = {true, line[digits], number, digits + 1};
    }
    if (marker.length < line.size() && !isBlank(line[marker.length]))
        return std::nullopt;
    return marker;
}

std::optional<QList<MarkdownAlignment>> delimiterRow(QStringView line)
{
    bool bar = false;
    for (const QChar character : line) {
        bar = bar || character == u'|';
        if (character != u'|' && character != u'-' && character != u':' && !isBlank(character))
            return std::nullopt;
    }
    if (!bar)
        return std::nullopt;
    QList<MarkdownAlignment> columns;
    for (const QString& cell : tableCells(line)) {
        const auto alignment = delimiterCell(cell);
        if (!alignment)
            return std::nullopt;
        columns.append(*alignment);
    }
    return columns;
}

QStringList tableCells(QStringView line)
{
    line = line.trimmed();
    if (line.startsWith(u'|'))
        line = line.sliced(1);
    QStringList cells;
    cells.reserve(line.count(u'|') + 1);
    QString begun; // what comes before the last escaped bar of the cell
    qsizetype begin = 0;
    const auto endCell = [&](qsizetype end) {
        const QStringView rest = line.sliced(begin, end - begin);
        cells.append(begun.isEmpty() ? rest.trimmed().toString() : begun.append(rest).trimmed());
        begun.clear();
        begin = end + 1;
    };
    for (qsizetype position = 0; position < line.size(); ++position) {
        if (line[position] == u'\\' && position + 1 < line.size()) {
            ++position;
            if (line[position] == u'|') {
                begun += line.sliced(begin, position - 1 - begin);
                begin = position;
            }
        } else if (line[position] == u'|') {
            endCell(position);
        }
    }
    if (begin < line.size() || !begun.isEmpty())
        endCell(line.size());
    return cells;
}

std::optional<QStringView> displayMaths(QStringView text)
{
    text = text.trimmed();
    const bool bracket = text.startsWith(QStringView(u"\\["));
    if (text.size() < 5 || !(bracket || text.startsWith(dollars)))
        return std::nullopt;
    const QStringView end = bracket ? closingBracket : dollars;
    const QStringView source = text.sliced(2);
    if (source.indexOf(end) != source.size() - 2 || source.chopped(2).trimmed().isEmpty())
        return std::nullopt;
    return source.chopped(2).trimmed();
}

QStringView multilineMathsEnd(QStringView line)
{
    line = line.trimmed();
    const QStringView rest = line.sliced(qMin<qsizetype>(2, line.size()));
    // Two dollars are also a shell's process number, and a bracket may merely be escaped: they open a formula
    // only alone or before a TeX command, the bracket also before a space.
    const bool opens = rest.isEmpty() || rest[0] == u'\\';
    if (line.startsWith(QStringView(u"\\[")) && (opens || rest[0] == u' ') && !rest.contains(closingBracket))
        return closingBracket;
    if (line.startsWith(dollars) && opens && !rest.contains(dollars))
        return dollars;
    return {};
}

QString unescaped(QStringView text)
{
    QString output;
    output.reserve(text.size());
    for (qsizetype position = 0; position < text.size(); ++position) {
        if (text[position] == u'\\' && position + 1 < text.size() && isAsciiPunctuation(text[position + 1])) {
            output += text[++position];
            continue;
        }
        if (text[position] == u'&') {
            const CharacterReference reference = characterReference(text.sliced(position));
            if (reference.length > 0) {
                output += reference.text;
                position += reference.length - 1;
                continue;
            }
        }
        output += text[position];
    }
    return output;
}

} // namespace varnel
