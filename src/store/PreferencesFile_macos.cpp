// Written for macOS after QSettings' documentation; it has never been built or run there.
#include "store/PreferencesFile.h"

namespace varnel {

QString preferencesFile()
{
    return {};
}

QString preferenceKey(QLatin1String name)
{
    // QSettings stores "/" as "." in a defaults domain, and "." as a middle dot.
    return QStringLiteral("varnel/") + name;
}

std::unique_ptr<QSettings> openPreferences(const QString& file)
{
    if (!file.isEmpty())
        return std::make_unique<QSettings>(file, QSettings::IniFormat);
    // The defaults domain is made of both names: com.varnel.Varnel.
    auto settings = std::make_unique<QSettings>(QSettings::NativeFormat, QSettings::UserScope,
                                                QStringLiteral("Varnel"), QStringLiteral("Varnel"));
    // Otherwise a key that is absent would be looked for among the settings of all programs.
    settings->setFallbacksEnabled(false);
    return settings;
}

} // namespace varnel
