#include "ui/DesktopHints.h"

#include <QEvent>
#include <QGuiApplication>
#include <QPalette>

namespace varnel {

namespace {

bool paletteIsDark()
{
    const QPalette palette = QGuiApplication::palette();
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

} // namespace

DesktopHints::DesktopHints(bool wasDark, QObject* parent)
    : QObject(parent)
    , m_dark(wasDark || paletteIsDark())
{
    qGuiApp->installEventFilter(this);
    listenToDesktop();
}

void DesktopHints::takeDark(std::optional<bool> dark)
{
    m_desktopSpoke = dark.has_value();
    setDark(dark ? *dark : paletteIsDark());
}

void DesktopHints::takeReducedMotion(bool reduced)
{
    if (reduced == m_reducedMotion)
        return;
    m_reducedMotion = reduced;
    Q_EMIT reducedMotionChanged();
}

bool DesktopHints::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::ApplicationPaletteChange && watched == qGuiApp && !m_desktopSpoke)
        setDark(paletteIsDark());
    return QObject::eventFilter(watched, event);
}

void DesktopHints::setDark(bool dark)
{
    if (dark == m_dark)
        return;
    m_dark = dark;
    Q_EMIT darkChanged();
}

} // namespace varnel
