#pragma once

#include <QByteArray>
#include <QStringList>

#include <functional>
#include <optional>

namespace varnel {

/// What one start of the program is to be.
enum class CommandMode {
    Askpass,  ///< answers ssh's question for the password
    Ctl,      ///< the command line
    TestHost, ///< an event loop without anything to see, inside somebody's test runner
    Window,   ///< the application
};

/// The value of an environment variable; nothing if it is not set.
using Environment = std::function<std::optional<QByteArray>(const char* name)>;

/// This process's own environment.
std::optional<QByteArray> processEnvironment(const char* name);

/// Decides from the environment and the arguments behind the program's name, before anything else is set up.
CommandMode chooseMode(const Environment& environment, const QStringList& arguments);

} // namespace varnel
