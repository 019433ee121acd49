#pragma once

#include "ui/Intake.h"

#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

namespace varnel {

/// An area onto which files, pictures, links and texts can be dropped.
class DropTarget : public QQuickItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(varnel::Intake* intake MEMBER m_intake NOTIFY intakeChanged)
    Q_PROPERTY(bool attaching MEMBER m_attaching NOTIFY attachingChanged)
    Q_PROPERTY(QString folder MEMBER m_folder NOTIFY folderChanged)
    Q_PROPERTY(bool hovered READ hovered NOTIFY hoveredChanged)

public:
    explicit DropTarget(QQuickItem* parent = nullptr);

    /// Whether something that can be taken is held over the area.
    bool hovered() const { return m_hovered; }

Q_SIGNALS:
    void intakeChanged();
    void attachingChanged();
    void folderChanged();
    void hoveredChanged();
    /// Something was dropped and taken.
    void taken();

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void setHovered(bool hovered);

    Intake* m_intake = nullptr;
    bool m_attaching = true;
    QString m_folder;
    bool m_hovered = false;
};

} // namespace varnel
