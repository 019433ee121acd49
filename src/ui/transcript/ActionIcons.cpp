#include "ui/transcript/ActionIcons.h"

#include <QPainter>
#include <QPainterPath>

namespace varnel {
namespace {

QPainterPath lines(std::initializer_list<QPointF> points)
{
    QPainterPath path(*points.begin());
    for (const QPointF* point = points.begin() + 1; point != points.end(); ++point)
        path.lineTo(*point);
    return path;
}

QPainterPath copyIcon()
{
    QPainterPath path;
    path.addRoundedRect(QRectF(5.5, 5.5, 8, 8), 1.5, 1.5);
    path.addPath(lines({{10.5, 3.5}, {10.5, 2.5}, {2.5, 2.5}, {2.5, 10.5}, {3.5, 10.5}}));
    return path;
}

QPainterPath regenerateIcon()
{
    QPainterPath path;
    path.arcMoveTo(QRectF(2.5, 2.5, 11, 11), 20);
    path.arcTo(QRectF(2.5, 2.5, 11, 11), 20, 300);
    path.addPath(lines({{13.6, 2.2}, {13.2, 6.2}, {9.4, 5.4}}));
    return path;
}

QPainterPath editIcon()
{
    QPainterPath path = lines({{2.5, 13.5}, {3.2, 10.3}, {10.8, 2.7}, {13.3, 5.2}, {5.7, 12.8}, {2.5, 13.5}});
    path.addPath(lines({{9.2, 4.3}, {11.7, 6.8}}));
    return path;
}

QPainterPath writeFilesIcon()
{
    QPainterPath path = lines({{12.5, 8}, {12.5, 5.5}, {9, 2}, {3.5, 2}, {3.5, 14}, {8, 14}});
    path.addPath(lines({{9, 2}, {9, 5.5}, {12.5, 5.5}}));
    path.addPath(lines({{12, 9.5}, {12, 14.5}}));
    path.addPath(lines({{9.8, 12.3}, {12, 14.5}, {14.2, 12.3}}));
    return path;
}

QPainterPath handOffIcon()
{
    QPainterPath path = lines({{2.5, 8}, {13.5, 8}});
    path.addPath(lines({{9.5, 4}, {13.5, 8}, {9.5, 12}}));
    return path;
}

QPainterPath saveIcon()
{
    return lines({{4, 2.5}, {12, 2.5}, {12, 13.5}, {8, 10.3}, {4, 13.5}, {4, 2.5}});
}

QPainterPath moreIcon()
{
    QPainterPath path;
    for (const qreal x : {3.5, 8.0, 12.5})
        path.addEllipse(QPointF(x, 8), 0.6, 0.6);
    return path;
}

QPainterPath iconOf(TranscriptAction action)
{
    switch (action) {
    case TranscriptAction::Copy:
        return copyIcon();
    case TranscriptAction::Regenerate:
        return regenerateIcon();
    case TranscriptAction::Edit:
        return editIcon();
    case TranscriptAction::WriteFiles:
        return writeFilesIcon();
    case TranscriptAction::HandOff:
        return handOffIcon();
    case TranscriptAction::Save:
        return saveIcon();
    case TranscriptAction::More:
        break;
    }
    return moreIcon();
}

} // namespace

QString actionName(TranscriptAction action)
{
    switch (action) {
    case TranscriptAction::Copy:
        return TranscriptModel::tr("Copy");
    case TranscriptAction::Regenerate:
        return TranscriptModel::tr("Regenerate");
    case TranscriptAction::Edit:
        return TranscriptModel::tr("Edit");
    case TranscriptAction::WriteFiles:
        return TranscriptModel::tr("Write files");
    case TranscriptAction::HandOff:
        return TranscriptModel::tr("Hand off");
    case TranscriptAction::Save:
        return TranscriptModel::tr("Save");
    case TranscriptAction::More:
        break;
    }
    return TranscriptModel::tr("More");
}

void paintActionIcon(QPainter& painter, TranscriptAction action, const QRectF& box, qreal zoom,
                     const QColor& colour, bool done)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(box.center());
    painter.scale(zoom, zoom);
    painter.translate(-8, -8);
    painter.setPen(QPen(colour, 1.25, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(done ? lines({{3, 8.5}, {6.5, 12}, {13, 4.5}}) : iconOf(action));
    painter.restore();
}

} // namespace varnel
