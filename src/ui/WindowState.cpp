#include "ui/WindowState.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

#include <algorithm>
#include <array>

namespace varnel {

namespace {

const QString geometryKey = QStringLiteral("geometry");
const QString maximizedKey = QStringLiteral("maximized");
const QString sidebarWidthKey = QStringLiteral("sidebarWidth");
const QString sidebarShownKey = QStringLiteral("sidebarShown");
const QString schemeKey = QStringLiteral("colours");
const QString darkKey = QStringLiteral("desktopWasDark");
const QString zoomKey = QStringLiteral("zoom");
const QString firstRunKey = QStringLiteral("firstRunStep");
const QString sendKey = QStringLiteral("sendsWithControl");

constexpr std::array schemeNames{QLatin1String("system"), QLatin1String("light"), QLatin1String("dark")};

/// A file written by hand may hold anything; numbers beyond what a screen can show are none.
QRect readGeometry(const QVariant& value)
{
    constexpr int farthest = 32'000;
    const QRect geometry = value.toRect();
    const bool sensible = geometry.isValid() && geometry.width() <= farthest &&
                          geometry.height() <= farthest && std::abs(geometry.x()) <= farthest &&
                          std::abs(geometry.y()) <= farthest;
    return sensible ? geometry : QRect();
}

} // namespace

QString windowStateFile()
{
    // Where a window stood is neither a setting nor data of the user's, and is not to be synced with them.
    const QString folder = qEnvironmentVariable("XDG_STATE_HOME");
    if (QDir::isAbsolutePath(folder))
        return folder + QStringLiteral("/varnel/window.ini");
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/varnel/window.ini");
}

WindowState loadWindowState(const QString& file)
{
    const QSettings settings(file, QSettings::IniFormat);
    WindowState state;
    state.geometry = readGeometry(settings.value(geometryKey));
    state.maximized = settings.value(maximizedKey, state.maximized).toBool();
    state.sidebarWidth = settings.value(sidebarWidthKey, state.sidebarWidth).toInt();
    state.sidebarShown = settings.value(sidebarShownKey, state.sidebarShown).toBool();
    const QString scheme = settings.value(schemeKey).toString();
    const auto* const name = std::find(schemeNames.begin(), schemeNames.end(), scheme);
    if (name != schemeNames.end())
        state.scheme = static_cast<ColourScheme>(name - schemeNames.begin());
    state.desktopWasDark = settings.value(darkKey, state.desktopWasDark).toBool();
    bool isNumber = false;
    const double zoom = settings.value(zoomKey).toDouble(&isNumber);
    if (isNumber)
        state.zoom = zoom;
    state.firstRunStep = settings.value(firstRunKey, state.firstRunStep).toInt();
    state.sendsWithControl = settings.value(sendKey, state.sendsWithControl).toBool();
    return state;
}

void saveWindowState(const QString& file, const WindowState& state)
{
    QDir().mkpath(QFileInfo(file).path());
    QSettings settings(file, QSettings::IniFormat);
    settings.setValue(geometryKey, state.geometry);
    settings.setValue(maximizedKey, state.maximized);
    settings.setValue(sidebarWidthKey, state.sidebarWidth);
    settings.setValue(sidebarShownKey, state.sidebarShown);
    settings.setValue(schemeKey, QString(schemeNames.at(static_cast<std::size_t>(state.scheme))));
    settings.setValue(darkKey, state.desktopWasDark);
    settings.setValue(zoomKey, state.zoom);
    settings.setValue(firstRunKey, state.firstRunStep);
    settings.setValue(sendKey, state.sendsWithControl);
}

} // namespace varnel
