#pragma once

#include <QStringView>

namespace varnel {

/// A place within one line, counted both in characters and in columns. Tabs reach to the next column that
/// four divides, and a block marker may take only a part of one.
class LineCursor
{
public:
    explicit LineCursor(QStringView line)
        : m_line(line)
    {
        findText();
    }

    /// Columns of white space before the next text.
    int indentation() const { return m_textColumn - m_column; }
    bool isBlank() const { return m_textPosition == m_line.size(); }
    /// What follows the white space.
    QStringView text() const { return m_line.sliced(m_textPosition); }

    void skipIndentation()
    {
        m_position = m_textPosition;
        m_column = m_textColumn;
    }

    /// Steps over `count` characters of text(), which hold no tab.
    void skipText(qsizetype count)
    {
        skipIndentation();
        m_position += count;
        m_column += static_cast<int>(count);
        findText();
    }

    /// Steps over up to `count` columns of white space.
    void skipColumns(int count)
    {
        while (count > 0 && m_position < m_textPosition) {
            const int width = m_line[m_position] == u'\t' ? 4 - m_column % 4 : 1;
            const int taken = qMin(count, width);
            m_column += taken;
            count -= taken;
            if (taken == width)
                ++m_position;
            else
                break;
        }
    }

    /// Adds the rest of the line, what is left of a tab as spaces.
    void appendRest(QString& output) const
    {
        qsizetype position = m_position;
        if (position < m_line.size() && m_line[position] == u'\t' && m_column % 4 != 0) {
            output.resize(output.size() + 4 - m_column % 4, u' ');
            ++position;
        }
        output += m_line.sliced(position);
    }

private:
    void findText()
    {
        m_textPosition = m_position;
        m_textColumn = m_column;
        for (; m_textPosition < m_line.size(); ++m_textPosition) {
            const QChar character = m_line[m_textPosition];
            if (character == u' ')
                ++m_textColumn;
            else if (character == u'\t')
                m_textColumn += 4 - m_textColumn % 4;
            else
                break;
        }
    }

    QStringView m_line;
    qsizetype m_position = 0;
    int m_column = 0;
    qsizetype m_textPosition = 0;
    int m_textColumn = 0;
};

} // namespace varnel
