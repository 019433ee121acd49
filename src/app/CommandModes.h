#pragma once

#include "base/Environment.h"

#include <QStringList>

namespace varnel {

/// What one start of the program is to be.
enum class CommandMode {
    Askpass,  ///< answers ssh's question for the password
    Ctl,      ///< the command line
    TestHost, ///< an event loop without anything to see, inside somebody's test runner
    Window,   ///< the application
};

/// Decides from the environment and the arguments behind the program's name, before anything else is set up.
CommandMode chooseMode(const Environment& environment, const QStringList& arguments);

} // namespace varnel
