#include "ui/Appearance.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QKeySequence>
#include <QWheelEvent>
#include <QWindow>

#include <algorithm>
#include <array>
#include <cmath>

namespace varnel {

namespace {

constexpr std::array zoomSteps{0.5, 0.67, 0.75, 0.8, 0.9, 1.0, 1.1, 1.25, 1.5, 1.75, 2.0, 2.5, 3.0};

} // namespace

Appearance::Appearance(DesktopHints& hints, const WindowState& state, QObject* parent)
    : QObject(parent)
    , m_hints(hints)
    , m_scheme(static_cast<Scheme>(state.scheme))
    , m_zoom(std::clamp(std::isfinite(state.zoom) ? state.zoom : 1, zoomSteps.front(), zoomSteps.back()))
{
    updateDark();
    connect(&hints, &DesktopHints::darkChanged, this, &Appearance::updateDark);
    connect(&hints, &DesktopHints::reducedMotionChanged, this, &Appearance::reducedMotionChanged);
}

bool Appearance::rightToLeft() const
{
    return QGuiApplication::layoutDirection() == Qt::RightToLeft;
}

QString Appearance::uiFamily() const
{
    return QGuiApplication::font().family();
}

QString Appearance::codeFamily() const
{
    return QFontDatabase::systemFont(QFontDatabase::FixedFont).family();
}

QString Appearance::displayFamily() const
{
    const QString family = QStringLiteral("EB Garamond");
    return QFontDatabase::hasFamily(family) ? family : uiFamily();
}

void Appearance::setScheme(Scheme scheme)
{
    if (scheme == m_scheme)
        return;
    m_scheme = scheme;
    Q_EMIT schemeChanged();
    updateDark();
}

void Appearance::updateDark()
{
    const bool dark = m_scheme == System ? m_hints.dark() : m_scheme == Dark;
    if (dark == m_dark)
        return;
    m_dark = dark;
    Q_EMIT darkChanged();
}

void Appearance::zoomIn()
{
    stepZoom(1);
}

void Appearance::zoomOut()
{
    stepZoom(-1);
}

void Appearance::resetZoom()
{
    setZoom(1);
}

QString Appearance::nativeKeys(const QString& keys)
{
    return QKeySequence::fromString(keys).toString(QKeySequence::NativeText);
}

void Appearance::watchWheel(QWindow& window)
{
    window.installEventFilter(this);
}

/// Before any item sees it: lists and sheets would take it for themselves.
bool Appearance::eventFilter(QObject*, QEvent* event)
{
    if (event->type() != QEvent::Wheel)
        return false;
    auto* const wheel = static_cast<QWheelEvent*>(event);
    if (wheel->modifiers() != Qt::ControlModifier)
        return false;
    // Touch pads send a notch in many parts.
    m_turned += wheel->angleDelta().y();
    if (std::abs(m_turned) >= QWheelEvent::DefaultDeltasPerStep)
        stepZoom(std::exchange(m_turned, 0) > 0 ? 1 : -1);
    return true;
}

void Appearance::stepZoom(int by)
{
    constexpr double same = 0.01;
    const auto next = by > 0 ? std::find_if(zoomSteps.begin(), zoomSteps.end(),
                                            [this](double step) { return step > m_zoom + same; })
                             : zoomSteps.end();
    const auto previous = std::find_if(zoomSteps.rbegin(), zoomSteps.rend(),
                                       [this](double step) { return step < m_zoom - same; });
    if (by > 0)
        setZoom(next == zoomSteps.end() ? zoomSteps.back() : *next);
    else
        setZoom(previous == zoomSteps.rend() ? zoomSteps.front() : *previous);
}

void Appearance::setZoom(double zoom)
{
    if (zoom == m_zoom)
        return;
    m_zoom = zoom;
    Q_EMIT zoomChanged();
}

void Appearance::store(WindowState& state) const
{
    state.scheme = static_cast<ColourScheme>(m_scheme);
    state.zoom = m_zoom;
    state.desktopWasDark = m_hints.dark();
}

} // namespace varnel
