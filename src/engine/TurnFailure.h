#pragma once

#include "engine/Turn.h"
#include "store/ConnectionSettings.h"

#include <QString>
#include <QUuid>

#include <exception>

namespace varnel {

/// A turn that failed: what is shown beside the prompt it belongs to, until it is tried again.
struct TurnFailure
{
    QUuid session;
    /// The user's message that got no whole answer.
    QUuid prompt;
    /// The status text, as it stood.
    QString text;
    /// What the service itself said, where the text does not hold it; may be empty.
    QString detail;
    /// Whether that is nothing for the log, which people pass on.
    bool isDetailPrivate = false;
    /// Whether it may go through with the temperature that the model insists on.
    bool offersTemperatureReset = false;
    /// Whether it may go through without the web tools, which the model does not know.
    bool offersSearchOff = false;

    bool operator==(const TurnFailure&) const = default;
};

/// What the user is told of an Error that ended a turn; where it belongs is left open.
/// @param connection how the server was reached, and whether its tunnel stands now.
TurnFailure failureOf(std::exception_ptr exception, const TurnRequest& request,
                      const ConnectionSettings& connection, bool tunnelIsUp);

} // namespace varnel
