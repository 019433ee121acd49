// Written after Apple's and Qt's documentation; never built.
#include "ui/DesktopHints.h"

namespace varnel {

void DesktopHints::listenToDesktop()
{
    // Qt changes the palette with the system's appearance, so there is no other word to listen to.
    takeDark(std::nullopt);
}

} // namespace varnel
