// Written after Apple's documentation; never built.
#include "ui/GraphicsDevice.h"

namespace varnel {

bool hasGraphicsDevice()
{
    return true; // every Mac that the program runs on draws with Metal
}

} // namespace varnel
