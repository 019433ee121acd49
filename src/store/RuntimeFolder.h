#pragma once

#include <QString>

namespace varnel {

/// The program's folder for what belongs to this computer and this login only, such as locks. It is made if
/// it is missing. Throws Error when it cannot be made or belongs to somebody else.
QString runtimeFolder();

/// A path in the runtime folder for something about a data folder, the same for each way to write its path.
QString runtimePath(const QString& dataFolder, const QString& suffix);

} // namespace varnel
