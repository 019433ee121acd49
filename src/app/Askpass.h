#pragma once

#include "app/StandardStream.h"

namespace varnel {

class SecretStore;

/// Answers ssh's question for the password: writes the saved one and a line feed to standard output. Yields
/// the exit status: 0, or 1 if none is saved. It never asks anybody to unlock anything.
int runAskpass(SecretStore& secrets);

/// Keeps the secret out of core dumps and away from debuggers of the same user.
void forbidInspection();

} // namespace varnel
