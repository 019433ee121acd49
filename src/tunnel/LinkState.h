#pragma once

#include <QObject>

namespace varnel {
Q_NAMESPACE

/// The state of the link to the Ollama server, as it is shown.
enum class LinkState {
    Unknown,    ///< not looked at yet
    Connecting, ///< being looked at, or its tunnel being opened
    Connected,  ///< the server answered
    Offline,    ///< it did not
};
Q_ENUM_NS(LinkState)

} // namespace varnel
