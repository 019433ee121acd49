#include "markdown/LinkDefinitions.h"

#include "markdown/BlockSyntax.h"

namespace varnel {

namespace {

QString normalized(QStringView label)
{
    return label.toString().toCaseFolded().simplified();
}

struct Definition
{
    QStringView label;
    QStringView destination;
    QStringView title;
    qsizetype length = 0; ///< with the end of its last line
};

/// Reads one definition from the beginning of a paragraph.
class DefinitionReader
{
public:
    explicit DefinitionReader(QStringView text)
        : m_text(text)
    {}

    std::optional<Definition> read()
    {
        Definition definition;
        if (!readLabel(definition) || !skipSpaceAndOneLineEnd() || !readDestination(definition))
            return std::nullopt;
        const qsizetype afterDestination = m_position;
        if (readTitle(definition) && endLine(definition))
            return definition;
        definition.title = {};
        m_position = afterDestination;
        if (endLine(definition))
            return definition;
        return std::nullopt;
    }

private:
    bool atEnd() const { return m_position >= m_text.size(); }
    QChar current() const { return m_text[m_position]; }

    void skipBlanks()
    {
        while (!atEnd() && (current() == u' ' || current() == u'\t'))
            ++m_position;
    }

    bool skipSpaceAndOneLineEnd()
    {
        skipBlanks();
        if (!atEnd() && current() == u'\n') {
            ++m_position;
            skipBlanks();
        }
        return !atEnd();
    }

    bool readLabel(Definition& definition)
    {
        if (!m_text.startsWith(u'['))
            return false;
        for (m_position = 1; !atEnd() && m_position <= LinkDefinitions::maximumLabel + 1; ++m_position) {
            if (current() == u'[')
                return false;
            if (current() == u']')
                break;
            if (current() == u'\\')
                ++m_position;
        }
        if (m_position + 1 >= m_text.size() || current() != u']' || m_text[m_position + 1] != u':')
            return false;
        definition.label = m_text.sliced(1, m_position - 1);
        m_position += 2;
        return !definition.label.trimmed().isEmpty();
    }

    bool readDestination(Definition& definition)
    {
        const qsizetype begin = m_position;
        if (current() == u'<') {
            for (++m_position; !atEnd() && current() != u'>'; ++m_position) {
                if (current() == u'\n' || current() == u'<')
                    return false;
                if (current() == u'\\')
                    ++m_position;
            }
            if (atEnd())
                return false;
            definition.destination = m_text.sliced(begin + 1, m_position - begin - 1);
            ++m_position;
            return true;
        }
        int parentheses = 0;
        for (; !atEnd() && current() > u' ' && current() != u'\x7f' && parentheses >= 0; ++m_position) {
            if (current() == u'\\' && m_position + 1 < m_text.size() && m_text[m_position + 1] > u' ')
                ++m_position;
            else if (current() == u'(')
                ++parentheses;
            else if (current() == u')')
                --parentheses;
        }
        definition.destination = m_text.sliced(begin, m_position - begin);
        return m_position > begin && parentheses == 0;
    }

    bool readTitle(Definition& definition)
    {
        const qsizetype before = m_position;
        if (!skipSpaceAndOneLineEnd() || m_position == before)
            return false;
        const QChar opening = current();
        if (opening != u'"' && opening != u'\'' && opening != u'(')
            return false;
        const QChar closing = opening == u'(' ? QChar(u')') : opening;
        const qsizetype begin = ++m_position;
        for (; !atEnd() && current() != closing; ++m_position) {
            if (current() == u'\\')
                ++m_position;
            else if (opening == u'(' && current() == u'(')
                return false;
        }
        if (atEnd())
            return false;
        definition.title = m_text.sliced(begin, m_position - begin);
        ++m_position;
        return true;
    }

    bool endLine(Definition& definition)
    {
        skipBlanks();
        if (!atEnd() && current() != u'\n')
            return false;
        definition.length = qMin(m_position + 1, m_text.size());
        return true;
    }

    QStringView m_text;
    qsizetype m_position = 0;
};

} // namespace

std::optional<MarkdownLink> LinkDefinitions::find(QStringView label) const
{
    if (m_links.isEmpty() || label.size() > maximumLabel)
        return std::nullopt;
    const auto found = m_links.constFind(normalized(label));
    return found == m_links.constEnd() ? std::nullopt : std::optional(*found);
}

QStringView LinkDefinitions::take(QStringView paragraph)
{
    while (paragraph.startsWith(u'[')) {
        const auto definition = DefinitionReader(paragraph).read();
        if (!definition)
            break;
        const QString label = normalized(definition->label);
        if (!m_links.contains(label))
            m_links.insert(label, {unescaped(definition->destination), unescaped(definition->title)});
        paragraph = paragraph.sliced(definition->length);
    }
    return paragraph;
}

} // namespace varnel
