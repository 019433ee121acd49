#pragma once

namespace varnel {

/// Runs the window to its end and yields the exit status of the process. What keeps it from opening is one
/// line on standard error and status 1.
int runWindowApplication(int argc, char** argv);

} // namespace varnel
