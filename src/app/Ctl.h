#pragma once

#include "app/CommandModes.h"
#include "app/StandardStream.h"
#include "base/Task.h"

#include <QStringList>

namespace varnel {

class HttpClient;
class Preferences;

/// What a command needs from outside; all of it outlives the command.
struct CtlContext
{
    const Environment& environment;
    const Preferences& preferences;
    HttpClient& http;
    const StandardStream& output;
    const StandardStream& errors;
};

/// `varnel ctl …`: runs the command that `arguments`, without "ctl", name, and yields the exit status, 0
/// or 1. What went wrong is written to the error stream, one line each: what ended the command, and before it
/// preferences that cannot be read, which do not end it.
Task<int> runCtl(QStringList arguments, CtlContext context);

} // namespace varnel
