#pragma once

namespace varnel {

/// Opens the window and runs it to its end; yields the exit status.
///
/// The window is a module beside the program, loaded only here, so that the command line and the askpass
/// helper never pay for it. Without a display or without the module, one line on standard error says so and
/// the status is 1.
int runWindow(int argc, char** argv);

} // namespace varnel
