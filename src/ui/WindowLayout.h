#pragma once

#include "ui/EngineObjects.h"
#include "ui/WindowState.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

class QWindow;

namespace varnel {

/// Where the window stands, how its parts share it, and how far its first run had come.
class WindowLayout : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(int sidebarWidth READ sidebarWidth WRITE setSidebarWidth NOTIFY changed)
    Q_PROPERTY(int firstRunStep READ firstRunStep WRITE setFirstRunStep NOTIFY changed)
    Q_PROPERTY(bool sidebarShown READ sidebarShown WRITE setSidebarShown NOTIFY changed)

public:
    explicit WindowLayout(const WindowState& state, QObject* parent = nullptr);
    static WindowLayout* create(QQmlEngine* engine, QJSEngine*) { return provided<WindowLayout>(engine); }

    /// Shows a window where it was left, and takes note of where it goes from then on. Where it was left may
    /// be a screen that is gone: then the window system chooses.
    void show(QWindow& window);

    /// At zoom 1, from 200 to 360.
    int sidebarWidth() const { return m_state.sidebarWidth; }
    bool sidebarShown() const { return m_state.sidebarShown; }
    /// From 0; as it was written, which may be beyond the last one.
    int firstRunStep() const { return m_state.firstRunStep; }
    void setFirstRunStep(int step);
    void setSidebarWidth(int width);
    void setSidebarShown(bool shown);

    /// Puts what is to be remembered into the state.
    void store(WindowState& state) const;

Q_SIGNALS:
    void changed();

private:
    void note(const QWindow& window);

    WindowState m_state;
};

} // namespace varnel
