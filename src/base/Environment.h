#pragma once

#include <QByteArray>

#include <functional>
#include <optional>

namespace varnel {

/// The value of an environment variable; nothing if it is not set.
using Environment = std::function<std::optional<QByteArray>(const char* name)>;

/// This process's own environment.
std::optional<QByteArray> processEnvironment(const char* name);

} // namespace varnel
