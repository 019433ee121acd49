#include "base/Environment.h"

#include <cstdlib>

namespace varnel {

std::optional<QByteArray> processEnvironment(const char* name)
{
    const char* const value = std::getenv(name);
    return value ? std::optional<QByteArray>(value) : std::nullopt;
}

} // namespace varnel
