#pragma once

#include <QColor>
#include <QFont>
#include <QQuickPaintedItem>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace varnel {

/// One line of plain text of which a part is marked, cut at both ends so that the mark is seen.
class MarkedLine : public QQuickPaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString text MEMBER m_text NOTIFY changed)
    Q_PROPERTY(int markStart MEMBER m_markStart NOTIFY changed)
    Q_PROPERTY(int markLength MEMBER m_markLength NOTIFY changed)
    Q_PROPERTY(bool mirrored MEMBER m_mirrored NOTIFY changed)
    Q_PROPERTY(QFont font MEMBER m_font NOTIFY changed)
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY changed)
    Q_PROPERTY(QColor markColor MEMBER m_markColor NOTIFY changed)
    Q_PROPERTY(QColor markFill MEMBER m_markFill NOTIFY changed)

public:
    explicit MarkedLine(QQuickItem* parent = nullptr);

    void paint(QPainter* painter) override;

    /// What of the text fits into a width, and where the mark stands in it.
    struct Fitted
    {
        QString text;
        int markStart = 0;
        int markLength = 0;
    };
    static Fitted fitted(const QString& text, int markStart, int markLength, const QFont& font, qreal width);

Q_SIGNALS:
    void changed();

private:
    QString m_text;
    int m_markStart = 0;
    int m_markLength = 0;
    bool m_mirrored = false; ///< the line keeps to the right edge
    QFont m_font;
    QColor m_color = Qt::black;
    QColor m_markColor = Qt::black;
    QColor m_markFill = Qt::transparent;
};

} // namespace varnel
