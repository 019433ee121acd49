#include "ui/GraphicsDevice.h"

#include <QDir>

#include <algorithm>

namespace varnel {

bool hasGraphicsDevice()
{
    const QFileInfoList devices =
        QDir(QStringLiteral("/dev/dri"))
            .entryInfoList({QStringLiteral("renderD*")}, QDir::Files | QDir::System);
    return std::any_of(devices.begin(), devices.end(),
                       [](const QFileInfo& device) { return device.isReadable() && device.isWritable(); });
}

} // namespace varnel
