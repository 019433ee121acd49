#pragma once

#include "store/LibraryItem.h"

#include <QString>

namespace varnel {

/// The name of the drawing that stands for a kind.
QString drawingOf(LibraryKind kind);
/// A kind as it is called on the screen.
QString kindName(LibraryKind kind);

} // namespace varnel
