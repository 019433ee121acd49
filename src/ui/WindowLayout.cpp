#include "ui/WindowLayout.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWindow>

#include <algorithm>

namespace varnel {

namespace {

constexpr int narrowestSidebar = 200;
constexpr int widestSidebar = 360;

/// Whether enough of the window would be on a screen to take hold of it.
bool isReachable(const QRect& geometry)
{
    constexpr QSize enough(160, 80);
    const QList<QScreen*> screens = QGuiApplication::screens();
    return std::any_of(screens.begin(), screens.end(), [&](const QScreen* screen) {
        const QRect visible = screen->availableGeometry().intersected(geometry);
        return visible.width() >= enough.width() && visible.height() >= enough.height();
    });
}

} // namespace

WindowLayout::WindowLayout(const WindowState& state, QObject* parent)
    : QObject(parent)
    , m_state(state)
{
    m_state.sidebarWidth = std::clamp(m_state.sidebarWidth, narrowestSidebar, widestSidebar);
}

void WindowLayout::show(QWindow& window)
{
    if (isReachable(m_state.geometry))
        window.setGeometry(m_state.geometry);
    const auto noteIt = [this, &window] { note(window); };
    connect(&window, &QWindow::xChanged, this, noteIt);
    connect(&window, &QWindow::yChanged, this, noteIt);
    connect(&window, &QWindow::widthChanged, this, noteIt);
    connect(&window, &QWindow::heightChanged, this, noteIt);
    connect(&window, &QWindow::windowStateChanged, this, noteIt);
    if (m_state.maximized)
        window.showMaximized();
    else
        window.show();
}

void WindowLayout::note(const QWindow& window)
{
    const Qt::WindowState shape = window.windowState();
    if (shape == Qt::WindowMinimized)
        return;
    m_state.maximized = shape == Qt::WindowMaximized;
    if (shape == Qt::WindowNoState)
        m_state.geometry = window.geometry();
    Q_EMIT changed();
}

void WindowLayout::setSidebarWidth(int width)
{
    width = std::clamp(width, narrowestSidebar, widestSidebar);
    if (width == m_state.sidebarWidth)
        return;
    m_state.sidebarWidth = width;
    Q_EMIT changed();
}

void WindowLayout::setSidebarShown(bool shown)
{
    if (shown == m_state.sidebarShown)
        return;
    m_state.sidebarShown = shown;
    Q_EMIT changed();
}

void WindowLayout::setFirstRunStep(int step)
{
    if (step == m_state.firstRunStep)
        return;
    m_state.firstRunStep = step;
    Q_EMIT changed();
}

void WindowLayout::store(WindowState& state) const
{
    state.geometry = m_state.geometry;
    state.maximized = m_state.maximized;
    state.sidebarWidth = m_state.sidebarWidth;
    state.sidebarShown = m_state.sidebarShown;
    state.firstRunStep = m_state.firstRunStep;
}

} // namespace varnel
