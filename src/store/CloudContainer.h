#pragma once

#include <QString>

#include <optional>

namespace varnel {

/// The folder of this program that the system keeps in step across the user's computers; nothing where there
/// is no such thing.
std::optional<QString> cloudContainer();

} // namespace varnel
