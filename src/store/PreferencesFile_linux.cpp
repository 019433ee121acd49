#include "store/PreferencesFile.h"

#include <QStandardPaths>

namespace varnel {

QString preferencesFile()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/varnel/preferences.ini");
}

QString preferenceKey(QLatin1String name)
{
    return QStringLiteral("varnel.") + name;
}

std::unique_ptr<QSettings> openPreferences(const QString& file)
{
    return std::make_unique<QSettings>(file, QSettings::IniFormat);
}

} // namespace varnel
