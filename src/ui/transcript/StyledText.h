#pragma once

#include "ui/transcript/MathBox.h"

#include <QFont>
#include <QTextLayout>

#include <memory>
#include <vector>

class QPainter;

namespace varnel {

/// Text broken into lines of even height, for drawing, hit testing and selecting. It draws what it is given
/// and knows no markup: nothing in it can name anything to be loaded.
class StyledText
{
public:
    struct Options
    {
        QFont font;
        qreal pitch = 24; ///< height of a line; a line with taller letters gets more
        qreal width = 0;  ///< where lines break; without wrapping only what alignment refers to
        qreal ratio = 1;  ///< device pixels per pixel: lines begin on whole ones
        bool wraps = true;
        bool isCode = false; ///< left to right whatever it holds, with tab stops
        Qt::Alignment alignment = Qt::AlignLeading;
    };
    using Formats = QList<QTextLayout::FormatRange>;

    /// @param text lines are separated by QChar::LineSeparator.
    /// @param formulas stand where their sources are in the text, in order.
    StyledText(const QString& text, const Formats& formats, const Options& options,
               std::vector<InlineFormula> formulas = {});

    qreal height() const { return m_height; }
    /// The width of the longest line.
    qreal naturalWidth() const { return m_naturalWidth; }
    int lineCount() const { return static_cast<int>(m_tops.size()); }
    /// Where the space of a line begins; that of the one after the last is the height.
    qreal lineTop(int line) const
    {
        return line < lineCount() ? m_tops[static_cast<std::size_t>(line)] : m_height;
    }
    int length() const { return static_cast<int>(m_text.size()); }
    const QString& text() const { return m_text; }

    /// Draws the lines that touch `clip`, which is relative to `origin` as all positions here are.
    void draw(QPainter& painter, QPointF origin, const QRectF& clip, int selectionStart, int selectionEnd,
              const QColor& selection) const;
    /// Draws one line alone, the space of which begins at `corner`.
    void drawLine(QPainter& painter, int line, QPointF corner) const;
    /// The boundary between characters nearest to a point.
    int positionAt(QPointF point) const;
    /// Where characters stand, one rectangle a line.
    QList<QRectF> rectsOf(int start, int length) const;
    /// Whether the text as a whole runs from right to left.
    bool isRightToLeft() const { return m_rightToLeft; }
    /// The baseline of the first line.
    qreal firstBaseline() const;

private:
    int lineAt(qreal y) const;
    void fillSelection(QPainter& painter, QPointF origin, int number, int start, int end,
                       const QColor& colour) const;

    void layOut(const Options& options);
    void paintFormulas(QPainter& painter, QPointF origin, const QTextLine& line) const;

    std::vector<InlineFormula> m_formulas;
    QString m_text;
    std::unique_ptr<QTextLayout> m_layout;
    std::vector<qreal> m_tops; ///< of the space of each line
    qreal m_height = 0;
    qreal m_naturalWidth = 0;
    bool m_rightToLeft = false;
    bool m_mixed = false; ///< holds letters that run from right to left
};

} // namespace varnel
