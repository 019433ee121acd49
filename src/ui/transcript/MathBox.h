#pragma once

#include <QFont>
#include <QPolygonF>
#include <QRectF>
#include <QString>

#include <memory>
#include <vector>

class QPainter;

namespace varnel {

/// A part of a formula that has been laid out, around the left end of its baseline: y grows downwards.
struct MathBox
{
    struct Letters
    {
        QString text;
        QFont font;
        QPointF at;        ///< the left end of their baseline
        qreal stretch = 1; ///< how much higher they are drawn, for delimiters
    };
    struct Stroke
    {
        QPolygonF points;
        qreal thickness = 1;
    };

    qreal width = 0;
    qreal ascent = 0;  ///< above the baseline
    qreal descent = 0; ///< below it
    std::vector<Letters> letters;
    std::vector<Stroke> strokes;
    std::vector<QRectF> rules;

    qreal height() const { return ascent + descent; }
    /// Puts another box into this one, which grows around it.
    void add(const MathBox& box, QPointF at);
    /// Draws it in the colour of the painter's pen.
    void paint(QPainter& painter, QPointF baseline) const;
};

/// A formula that stands in a text in the place of its source.
struct InlineFormula
{
    int start = 0; ///< of the source in the text
    int length = 0;
    std::shared_ptr<const MathBox> box;
};

} // namespace varnel
