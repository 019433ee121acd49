#pragma once

#include <QColor>
#include <QPainterPath>
#include <QQuickPaintedItem>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace varnel {

/// A line drawing in one colour, sharp at every size: the pictures on buttons. They are drawn on a grid of 20
/// by 20 that fills the item.
class Icon : public QQuickPaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)

public:
    explicit Icon(QQuickItem* parent = nullptr);

    /// The name of a drawing; an unknown one draws nothing.
    const QString& name() const { return m_name; }
    const QColor& color() const { return m_color; }
    void setName(const QString& name);
    void setColor(const QColor& color);

    void paint(QPainter* painter) override;

Q_SIGNALS:
    void nameChanged();
    void colorChanged();

private:
    QString m_name;
    QColor m_color = Qt::black;
};

} // namespace varnel
