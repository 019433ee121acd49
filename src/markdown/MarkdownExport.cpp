#include "markdown/MarkdownExport.h"

#include "markdown/LinkTarget.h"

namespace varnel {

namespace {

template <typename... Visitors>
struct Overloaded : Visitors...
{
    using Visitors::operator()...;
};

QString withHardBreaksAs(QString text, const QString& lineBreak)
{
    return text.replace(QChar::LineSeparator, lineBreak);
}

QString displayed(const MarkdownMaths& maths)
{
    return QStringLiteral("$$") + maths.source + QStringLiteral("$$");
}

/// Calls `write` for every stretch of the text with its range, null for text without a style.
template <typename Write>
void forEachStretch(const MarkdownText& text, Write write)
{
    qsizetype end = 0;
    for (const MarkdownRange& range : text.ranges) {
        if (range.start > end)
            write(text.text.sliced(end, range.start - end), nullptr);
        write(text.text.sliced(range.start, range.length), &range);
        end = range.start + range.length;
    }
    if (end < text.text.size())
        write(text.text.sliced(end), nullptr);
}

QString mathsDelimiter(MarkdownStyles styles)
{
    return styles & MarkdownStyle::Maths          ? QStringLiteral("$")
           : styles & MarkdownStyle::DisplayMaths ? QStringLiteral("$$")
                                                  : QString();
}

QString itemMark(const MarkdownList& list, qsizetype index)
{
    QString mark = list.ordered ? QStringLiteral("%1. ").arg(list.start + index) : QStringLiteral("• ");
    if (const auto checked = list.items[index].checked)
        mark += *checked ? QStringLiteral("[x] ") : QStringLiteral("[ ] ");
    return mark;
}

/// Writes blocks as plain text, every line behind the indentation of the list items it lies in.
class PlainWriter
{
public:
    QString takeText() { return std::move(m_output); }

    void write(const QList<MarkdownBlock>& blocks, const QString& separator)
    {
        for (qsizetype index = 0; index < blocks.size(); ++index) {
            if (index > 0)
                append(separator);
            write(blocks[index]);
        }
    }

    void write(const MarkdownBlock& block)
    {
        std::visit([this](const auto& content) { write(content); }, block.content);
    }

private:
    void write(const MarkdownParagraph& paragraph) { append(plainText(paragraph.text)); }
    void write(const MarkdownHeading& heading) { append(plainText(heading.text)); }
    void write(const MarkdownCode& code) { append(code.text); }
    void write(const MarkdownQuote& quote) { write(quote.blocks, QStringLiteral("\n\n")); }
    void write(const MarkdownRule&) { append(QStringLiteral("---")); }
    void write(const MarkdownMaths& maths) { append(displayed(maths)); }

    void write(const MarkdownList& list)
    {
        const QString separator = list.tight ? QStringLiteral("\n") : QStringLiteral("\n\n");
        for (qsizetype index = 0; index < list.items.size(); ++index) {
            if (index > 0)
                append(separator);
            const QString mark = itemMark(list, index);
            append(mark);
            m_indentation.resize(m_indentation.size() + mark.size(), u' ');
            write(list.items[index].blocks, separator);
            m_indentation.chop(mark.size());
        }
    }

    void write(const MarkdownTable& table)
    {
        writeRow(table.header);
        for (const QList<MarkdownText>& row : table.rows) {
            append(QStringLiteral("\n"));
            writeRow(row);
        }
    }

    void writeRow(const QList<MarkdownText>& cells)
    {
        for (qsizetype column = 0; column < cells.size(); ++column) {
            if (column > 0)
                append(QStringLiteral("\t"));
            append(plainText(cells[column]));
        }
    }

    /// The indentation comes before the first text of a line, so that empty lines stay empty.
    void append(const QString& text)
    {
        bool isFirst = true;
        for (const QStringView line : QStringView(text).split(u'\n')) {
            if (!std::exchange(isFirst, false))
                m_output += u'\n';
            if (!line.isEmpty() && m_output.endsWith(u'\n'))
                m_output += m_indentation;
            m_output += line;
        }
    }

    QString m_output;
    QString m_indentation;
};

QString element(const QString& name, const QString& contents)
{
    return u'<' + name + u'>' + contents + QStringLiteral("</") + name.section(u' ', 0, 0) + u'>';
}

QString htmlStretch(const QString& text, const MarkdownRange& range)
{
    const QString delimiter = mathsDelimiter(range.styles);
    QString html = withHardBreaksAs((delimiter + text + delimiter).toHtmlEscaped(), QStringLiteral("<br>"));
    if (range.styles & MarkdownStyle::Code)
        html = element(QStringLiteral("code"), html);
    if (range.styles & MarkdownStyle::Strikethrough)
        html = element(QStringLiteral("del"), html);
    if (range.styles & MarkdownStyle::Emphasis)
        html = element(QStringLiteral("em"), html);
    if (range.styles & MarkdownStyle::Strong)
        html = element(QStringLiteral("strong"), html);
    return html;
}

QString htmlItem(const MarkdownItem& item, bool tight)
{
    QString html = item.checked ? (*item.checked ? QStringLiteral("☑ ") : QStringLiteral("☐ ")) : QString();
    for (const MarkdownBlock& block : item.blocks) {
        const auto* const paragraph = std::get_if<MarkdownParagraph>(&block.content);
        html += tight && paragraph ? htmlText(paragraph->text) : htmlText(block);
    }
    return element(QStringLiteral("li"), html);
}

QString htmlList(const MarkdownList& list)
{
    QString items;
    for (const MarkdownItem& item : list.items)
        items += htmlItem(item, list.tight);
    if (!list.ordered)
        return element(QStringLiteral("ul"), items);
    return element(QStringLiteral("ol start=\"%1\"").arg(list.start), items);
}

QString htmlRow(const MarkdownTable& table, const QList<MarkdownText>& cells, const QString& name)
{
    QString row;
    for (qsizetype column = 0; column < cells.size(); ++column) {
        switch (table.columns[column]) {
        case MarkdownAlignment::Default:
            row += element(name, htmlText(cells[column]));
            break;
        case MarkdownAlignment::Left:
            row += element(name + QStringLiteral(" align=\"left\""), htmlText(cells[column]));
            break;
        case MarkdownAlignment::Centre:
            row += element(name + QStringLiteral(" align=\"center\""), htmlText(cells[column]));
            break;
        case MarkdownAlignment::Right:
            row += element(name + QStringLiteral(" align=\"right\""), htmlText(cells[column]));
            break;
        }
    }
    return element(QStringLiteral("tr"), row);
}

QString htmlTable(const MarkdownTable& table)
{
    QString rows = htmlRow(table, table.header, QStringLiteral("th"));
    for (const QList<MarkdownText>& row : table.rows)
        rows += htmlRow(table, row, QStringLiteral("td"));
    return element(QStringLiteral("table"), rows);
}

} // namespace

QString plainText(const MarkdownText& text)
{
    QString output;
    output.reserve(text.text.size());
    forEachStretch(text, [&output](const QString& stretch, const MarkdownRange* range) {
        const QString delimiter = range ? mathsDelimiter(range->styles) : QString();
        output += delimiter + stretch + delimiter;
    });
    return withHardBreaksAs(std::move(output), QStringLiteral("\n"));
}

QString plainText(const MarkdownBlock& block)
{
    PlainWriter writer;
    writer.write(block);
    return writer.takeText();
}

QString plainText(const QList<MarkdownBlock>& blocks)
{
    PlainWriter writer;
    writer.write(blocks, QStringLiteral("\n\n"));
    return writer.takeText();
}

QString htmlText(const MarkdownText& text)
{
    QString html;
    qsizetype openLink = -1;
    const auto changeLink = [&html, &text, &openLink](qsizetype link) {
        if (link >= 0 && link != openLink && !isOpenableLink(text.links[link].destination))
            link = -1;
        if (link == openLink)
            return;
        if (openLink >= 0)
            html += QStringLiteral("</a>");
        if (link >= 0)
            html += QStringLiteral("<a href=\"%1\">").arg(text.links[link].destination.toHtmlEscaped());
        openLink = link;
    };
    forEachStretch(text, [&html, &changeLink](const QString& stretch, const MarkdownRange* range) {
        changeLink(range ? range->link : -1);
        html += htmlStretch(stretch, range ? *range : MarkdownRange());
    });
    changeLink(-1);
    return html;
}

QString htmlText(const MarkdownBlock& block)
{
    const Overloaded visitor{
        [](const MarkdownParagraph& paragraph) {
            return element(QStringLiteral("p"), htmlText(paragraph.text));
        },
        [](const MarkdownHeading& heading) {
            return element(QStringLiteral("h%1").arg(heading.level), htmlText(heading.text));
        },
        [](const MarkdownCode& code) {
            return element(QStringLiteral("pre"),
                           element(QStringLiteral("code"), (code.text + u'\n').toHtmlEscaped()));
        },
        [](const MarkdownQuote& quote) {
            return element(QStringLiteral("blockquote"), htmlText(quote.blocks));
        },
        [](const MarkdownList& list) { return htmlList(list); },
        [](const MarkdownTable& table) { return htmlTable(table); },
        [](const MarkdownRule&) { return QStringLiteral("<hr>"); },
        [](const MarkdownMaths& maths) {
            return element(QStringLiteral("p"), displayed(maths).toHtmlEscaped());
        },
    };
    return std::visit(visitor, block.content);
}

QString htmlText(const QList<MarkdownBlock>& blocks)
{
    QString html;
    for (const MarkdownBlock& block : blocks)
        html += htmlText(block) + u'\n';
    return html;
}

} // namespace varnel
