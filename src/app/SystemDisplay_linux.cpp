#include "app/SystemDisplay.h"

#include <QFile>
#include <QFileInfo>

namespace varnel {

bool hasDisplay()
{
    // A platform that somebody named needs no server: "offscreen", for one.
    return !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
           !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
}

QString windowModulePath()
{
    const QFileInfo program(QFile::symLinkTarget(QStringLiteral("/proc/self/exe")));
    return program.path() + QStringLiteral("/../lib/varnel/libvarnel_window");
}

} // namespace varnel
