// The selected text for the clipboard.
#include "markdown/MarkdownExport.h"
#include "ui/transcript/TranscriptSelection.h"

#include <algorithm>

namespace varnel {
namespace {

/// The styles of a part of a text.
MarkdownText part(const MarkdownText& text, qsizetype start, qsizetype end)
{
    MarkdownText cut;
    cut.text = text.text.sliced(start, end - start);
    cut.links = text.links;
    for (MarkdownRange range : text.ranges) {
        const qsizetype from = std::max(range.start, start);
        const qsizetype to = std::min(range.start + range.length, end);
        if (from >= to)
            continue;
        range.start = from - start;
        range.length = to - from;
        cut.ranges.append(range);
    }
    return cut;
}

/// Puts the selected rows together, one after the other.
class Collector
{
public:
    void add(const TranscriptRow& row, qsizetype start, qsizetype end)
    {
        const QString text = row.plainText().sliced(start, end - start);
        separate(row);
        switch (row.kind) {
        case RowKind::CodeLines:
            m_copied.plain += text;
            m_copied.html += text.toHtmlEscaped();
            break;
        case RowKind::Table:
            m_copied.plain += text;
            addTable(text);
            break;
        default:
            addText(row, part(row.text, start, end), start == 0);
            break;
        }
        m_last = &row;
        m_lastGroup = row.group;
        m_goesOn = !row.ends;
    }

    CopiedText finish()
    {
        close();
        return std::move(m_copied);
    }

private:
    /// What stands between this row and the one before it.
    void separate(const TranscriptRow& row)
    {
        const bool sameGroup = m_last && row.group >= 0 && row.group == m_lastGroup;
        if (m_last && !(m_goesOn && row.group < 0)) {
            const bool item = row.frame.listDepth > 0 && m_last->frame.listDepth > 0;
            if (sameGroup)
                m_copied.plain +=
                    m_goesOn && row.kind == RowKind::CodeLines ? QString() : QStringLiteral("\n");
            else
                m_copied.plain += item ? QStringLiteral("\n") : QStringLiteral("\n\n");
        }
        if (sameGroup) {
            if (row.kind == RowKind::CodeLines && !m_goesOn)
                m_copied.html += QLatin1Char('\n');
            return;
        }
        close();
        if (row.kind == RowKind::CodeLines)
            open(QStringLiteral("<pre><code>"), QStringLiteral("</code></pre>"));
        else if (row.kind == RowKind::Table)
            open(QStringLiteral("<table>"), QStringLiteral("</table>"));
    }

    void open(const QString& begin, const QString& end)
    {
        m_copied.html += begin;
        m_closing = end;
    }

    void close() { m_copied.html += std::exchange(m_closing, QString()); }

    void addTable(const QString& text)
    {
        for (const QString& line : text.split(QLatin1Char('\n'))) {
            m_copied.html += QStringLiteral("<tr>");
            for (const QString& cell : line.split(QLatin1Char('\t')))
                m_copied.html += QStringLiteral("<td>") + cell.toHtmlEscaped() + QStringLiteral("</td>");
            m_copied.html += QStringLiteral("</tr>");
        }
    }

    void addText(const TranscriptRow& row, const MarkdownText& text, bool fromStart)
    {
        QString marker;
        if (fromStart && row.frame.checked)
            marker = *row.frame.checked ? QStringLiteral("☑ ") : QStringLiteral("☐ ");
        else if (fromStart && !row.frame.marker.isEmpty())
            marker = row.frame.marker + QLatin1Char(' ');
        QString plain = text.text;
        plain.replace(QChar::LineSeparator, QLatin1Char('\n'));
        m_copied.plain +=
            QString(std::max(0, row.frame.listDepth - 1) * 2, QLatin1Char(' ')) + marker + plain;
        const QString name =
            row.headingLevel > 0 ? QStringLiteral("h%1").arg(row.headingLevel) : QStringLiteral("p");
        m_copied.html += QStringLiteral("<%1>%2%3</%1>").arg(name, marker.toHtmlEscaped(), htmlText(text));
    }

    CopiedText m_copied;
    const TranscriptRow* m_last = nullptr;
    int m_lastGroup = -1;
    bool m_goesOn = false;
    QString m_closing;
};

} // namespace

CopiedText selectedText(TranscriptDocument& document, const TranscriptSelection& selection)
{
    if (selection.isEmpty())
        return {};
    Collector collector;
    for (std::optional<RowRef> ref = selection.begin().row; ref && *ref <= selection.end().row;
         ref = document.next(*ref)) {
        const TranscriptRow& row = document.row(*ref);
        const auto length = static_cast<int>(row.plainText().size());
        const auto stretch = selection.within(*ref, length);
        if (stretch.start < stretch.end)
            collector.add(row, stretch.start, stretch.end);
    }
    return collector.finish();
}

} // namespace varnel
