#pragma once

#include <QSettings>
#include <QString>

#include <memory>

namespace varnel {

/// The file of the user's own preferences; empty where the system keeps them out of a program's hands.
QString preferencesFile();

/// How QSettings spells the key of the preference that is stored as "varnel." and the name.
QString preferenceKey(QLatin1String name);

/// Opens the preferences in an INI file, or with an empty path those the system keeps. Creates nothing on
/// disk.
std::unique_ptr<QSettings> openPreferences(const QString& file);

} // namespace varnel
