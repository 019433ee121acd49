#include "ui/transcript/TranscriptSelection.h"

#include <QTextBoundaryFinder>

#include <algorithm>

namespace varnel {

void TranscriptSelection::clear()
{
    m_anchor = m_cursor = {};
}

TranscriptSelection::Span TranscriptSelection::unitAt(TranscriptDocument& document,
                                                      TextPosition position) const
{
    Span span{position, position};
    if (m_unit == Unit::Character)
        return span;
    const QString text = document.row(position.row).plainText();
    const auto length = static_cast<int>(text.size());
    position.offset = std::clamp(position.offset, 0, length);
    if (m_unit == Unit::Paragraph) {
        const bool isCode = document.row(position.row).kind == RowKind::CodeLines;
        const qsizetype before =
            isCode && position.offset > 0 ? text.lastIndexOf(QLatin1Char('\n'), position.offset - 1) : -1;
        const qsizetype after = isCode ? text.indexOf(QLatin1Char('\n'), position.offset) : -1;
        span.begin.offset = static_cast<int>(before + 1);
        span.end.offset = after < 0 ? length : static_cast<int>(after);
        return span;
    }
    QTextBoundaryFinder finder(QTextBoundaryFinder::Word, text);
    finder.setPosition(position.offset);
    const bool inside = finder.boundaryReasons() & QTextBoundaryFinder::StartOfItem;
    span.begin.offset =
        inside ? position.offset : static_cast<int>(std::max<qsizetype>(0, finder.toPreviousBoundary()));
    finder.setPosition(position.offset);
    const qsizetype end = finder.toNextBoundary();
    span.end.offset = end < 0 ? length : static_cast<int>(end);
    return span;
}

void TranscriptSelection::start(TranscriptDocument& document, TextPosition position, Unit unit)
{
    m_unit = unit;
    m_first = unitAt(document, position);
    m_anchor = m_first.begin;
    m_cursor = m_first.end;
}

void TranscriptSelection::extend(TranscriptDocument& document, TextPosition position)
{
    const Span unit = unitAt(document, position);
    const bool backwards = position < m_first.begin;
    m_anchor = backwards ? m_first.end : m_first.begin;
    m_cursor = backwards ? unit.begin : std::max(unit.end, m_first.end);
}

void TranscriptSelection::selectMessage(TranscriptDocument& document, int message)
{
    const int last = document.rowCount(message) - 1;
    m_unit = Unit::Character;
    m_anchor = {{message, 0}, 0};
    m_cursor = {{message, last}, static_cast<int>(document.row({message, last}).plainText().size())};
    m_first = {m_anchor, m_anchor};
}

void TranscriptSelection::clampTo(TranscriptDocument& document)
{
    const auto exists = [&document](TextPosition position) {
        return position.row.message < document.messageCount() &&
               position.row.row < document.rowCount(position.row.message);
    };
    if (isEmpty())
        return;
    if (!exists(begin())) {
        clear();
        return;
    }
    if (!exists(end())) {
        const TextPosition from = begin();
        const int message = std::min(end().row.message, document.messageCount() - 1);
        const int last = document.rowCount(message) - 1;
        m_anchor = from;
        m_cursor = {{message, last}, 0};
        m_first = {from, from};
    }
}

TranscriptSelection::Stretch TranscriptSelection::within(RowRef row, int length) const
{
    if (isEmpty() || row < begin().row || row > end().row)
        return {};
    Stretch stretch{0, length};
    if (row == begin().row)
        stretch.start = std::min(begin().offset, length);
    if (row == end().row)
        stretch.end = std::min(end().offset, length);
    return stretch;
}

} // namespace varnel
