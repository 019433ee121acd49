#pragma once

#include <QString>

namespace varnel {

/// Whether there is anything to open a window on.
bool hasDisplay();

/// Where the window module stands, without its suffix: in the library folder beside the program's own.
QString windowModulePath();

} // namespace varnel
