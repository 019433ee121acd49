#include "ui/transcript/TranscriptRow.h"
#include "ui/transcript/RowLayout.h"

namespace varnel {
namespace {

/// What a character is shown as; itself for nearly all.
char16_t shown(char16_t c, bool strict)
{
    if (c < 0x20)
        return c == u'\t' || c == u'\n' ? c : static_cast<char16_t>(0x2400 + c);
    if (c == 0x7F)
        return 0x2421;
    if (c >= 0x80 && c < 0xA0)
        return 0xFFFD;
    if (c == 0x202D || c == 0x202E) // overrides: they turn letters of any script around
        return 0xFFFD;
    if (c == 0x2029)
        return 0x2028;
    if (!strict)
        return c;
    const bool hidden = (c >= 0x202A && c <= 0x202C) || (c >= 0x2066 && c <= 0x2069) || c == 0x200E ||
                        c == 0x200F || c == 0x061C || c == 0x200B || c == 0xFEFF || c == 0x2060;
    return hidden ? char16_t(0xFFFD) : c;
}

/// Colouring a line needs all lines before it; past this many characters nobody waits for that.
constexpr qsizetype highlightedLength = 512 * 1024;

QStringView codeText(const TranscriptRow& row)
{
    if (row.count == 0)
        return {};
    const CodeLine& first = row.code->lines[static_cast<std::size_t>(row.first)];
    const CodeLine& last = row.code->lines[static_cast<std::size_t>(row.first + row.count - 1)];
    return QStringView(row.code->text).mid(first.start, last.start + last.length - first.start);
}

QString tableText(const TranscriptRow& row)
{
    QString text;
    for (int line = row.first; line < row.first + row.count; ++line) {
        const QList<MarkdownText>& cells = line == 0 ? row.table->header : row.table->rows[line - 1];
        if (line > row.first)
            text += QLatin1Char('\n');
        for (qsizetype column = 0; column < cells.size(); ++column) {
            if (column > 0)
                text += QLatin1Char('\t');
            text += cells[column].text;
        }
    }
    return text;
}

} // namespace

std::vector<CodeToken> CodeSource::tokens(int line)
{
    const auto index = static_cast<std::size_t>(line);
    if (!highlighter.isActive() || lines[index].start > highlightedLength)
        return {};
    if (states.empty())
        states.push_back(0);
    while (states.size() <= index) {
        const CodeLine& before = lines[states.size() - 1];
        quint8 state = states.back();
        highlighter.tokens(QStringView(text).mid(before.start, before.length), state);
        states.push_back(state);
    }
    quint8 state = states[index];
    return highlighter.tokens(QStringView(text).mid(lines[index].start, lines[index].length), state);
}

qsizetype CodeSource::continueFrom(const CodeSource& earlier)
{
    if (label != earlier.label || earlier.lines.empty() || !text.startsWith(earlier.text))
        return 0;
    lines = earlier.lines;
    states = earlier.states;
    columns = earlier.columns;
    // The last line may go on; were it cut into pieces, their boundaries would stay where they are.
    const qsizetype start = lines.back().start;
    lines.pop_back();
    return start;
}

TranscriptRow::TranscriptRow() = default;
TranscriptRow::TranscriptRow(TranscriptRow&&) noexcept = default;
TranscriptRow& TranscriptRow::operator=(TranscriptRow&&) noexcept = default;
TranscriptRow::~TranscriptRow() = default;

bool TranscriptRow::looksLike(const TranscriptRow& other) const
{
    if (kind != other.kind || spaceAbove != other.spaceAbove || headingLevel != other.headingLevel ||
        first != other.first || count != other.count || group != other.group || begins != other.begins ||
        ends != other.ends || !(frame == other.frame))
        return false;
    if (kind == RowKind::Actions || kind == RowKind::Error || kind == RowKind::Waiting ||
        kind == RowKind::Chips || kind == RowKind::Unfinished)
        return false; // they show more of the message than is kept here
    if (kind == RowKind::CodeHeader || kind == RowKind::CodeFooter)
        return code->label == other.code->label && code->columns == other.code->columns;
    if (kind == RowKind::CodeLines)
        return code->columns == other.code->columns && code->label == other.code->label &&
               codeText(*this) == codeText(other);
    if (kind == RowKind::Table)
        return tableText(*this) == tableText(other) && table->columns == other.table->columns;
    return text == other.text;
}

QString TranscriptRow::plainText() const
{
    if (kind == RowKind::CodeLines)
        return codeText(*this).toString();
    if (kind == RowKind::Table)
        return tableText(*this);
    return text.text;
}

QString harmless(QString text, bool strict)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text.at(i).unicode();
        const char16_t safe = shown(c, strict);
        if (safe != c)
            text[i] = QChar(safe);
    }
    return text;
}

} // namespace varnel
