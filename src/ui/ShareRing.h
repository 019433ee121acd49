#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <QtQml/qqmlregistration.h>

namespace varnel {

/// A ring that is filled as far as a share says, beginning at its top.
class ShareRing : public QQuickPaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(double share READ share WRITE setShare NOTIFY changed)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY changed)
    Q_PROPERTY(QColor track READ track WRITE setTrack NOTIFY changed)

public:
    explicit ShareRing(QQuickItem* parent = nullptr);

    double share() const { return m_share; }
    /// From 0; what is above 1 shows as 1.
    void setShare(double share);
    const QColor& color() const { return m_color; }
    void setColor(const QColor& color);
    /// The colour of the part that is not filled.
    const QColor& track() const { return m_track; }
    void setTrack(const QColor& track);

    void paint(QPainter* painter) override;

Q_SIGNALS:
    void changed();

private:
    double m_share = 0;
    QColor m_color = Qt::black;
    QColor m_track = Qt::gray;
};

} // namespace varnel
