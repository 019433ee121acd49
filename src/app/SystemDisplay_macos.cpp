// Never built here: written after Apple's documentation, still to be tried on macOS.
#include "app/SystemDisplay.h"

#include <QFile>
#include <QFileInfo>

#include <array>
#include <mach-o/dyld.h>

namespace varnel {

bool hasDisplay()
{
    return true;
}

QString windowModulePath()
{
    std::array<char, 4096> path{};
    auto size = static_cast<uint32_t>(path.size());
    if (_NSGetExecutablePath(path.data(), &size) != 0)
        return QString();
    const QFileInfo program(QFileInfo(QFile::decodeName(path.data())).canonicalFilePath());
    return program.path() + QStringLiteral("/../PlugIns/libvarnel_window");
}

} // namespace varnel
