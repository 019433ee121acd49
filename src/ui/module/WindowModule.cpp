// The one entry of the window module, which the program looks up by its name.
#include "ui/WindowApplication.h"

extern "C" __attribute__((visibility("default"))) int varnel_run_window(int argc, char** argv)
{
    return varnel::runWindowApplication(argc, argv);
}
