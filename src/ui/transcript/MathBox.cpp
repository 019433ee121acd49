#include "ui/transcript/MathBox.h"

#include <QPainter>

#include <algorithm>

namespace varnel {

void MathBox::add(const MathBox& box, QPointF at)
{
    width = std::max(width, at.x() + box.width);
    ascent = std::max(ascent, box.ascent - at.y());
    descent = std::max(descent, box.descent + at.y());
    for (Letters part : box.letters) {
        part.at += at;
        letters.push_back(std::move(part));
    }
    for (Stroke part : box.strokes) {
        part.points.translate(at);
        strokes.push_back(std::move(part));
    }
    for (const QRectF& rule : box.rules)
        rules.push_back(rule.translated(at));
}

void MathBox::paint(QPainter& painter, QPointF baseline) const
{
    const QColor ink = painter.pen().color();
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(baseline);
    for (const QRectF& rule : rules)
        painter.fillRect(rule, ink);
    for (const Letters& part : letters) {
        painter.setFont(part.font);
        if (part.stretch == 1) {
            painter.drawText(part.at, part.text);
            continue;
        }
        painter.save();
        painter.translate(part.at);
        painter.scale(1, part.stretch);
        painter.drawText(QPointF(), part.text);
        painter.restore();
    }
    painter.setBrush(Qt::NoBrush);
    for (const Stroke& stroke : strokes) {
        painter.setPen(QPen(ink, stroke.thickness, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin));
        painter.drawPolyline(stroke.points);
    }
    painter.restore();
}

} // namespace varnel
