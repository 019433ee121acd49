#include "store/CloudContainer.h"

namespace varnel {

std::optional<QString> cloudContainer()
{
    return std::nullopt;
}

} // namespace varnel
