#pragma once

#include "store/ConnectionSettings.h"

#include <QString>

namespace varnel {

/// What is shown when a server that should answer does not, in the words of how it is reached.
/// @param tunnelIsUp whether the tunnel to it stands; looked at only where there is one.
QString unansweredMessage(const ConnectionSettings& connection, bool tunnelIsUp);

} // namespace varnel
