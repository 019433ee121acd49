#pragma once

#include "store/ConnectionSettings.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace varnel {

/// The tunnel's port on this computer: the stored number, brought into the range from 1 to 65535.
int tunnelLocalPort(const ConnectionSettings& settings);

/// "user@host", the way ssh takes it. Nothing if one of the two is empty, begins with "-" and would be read
/// as an option, or holds white space or a control character.
std::optional<QString> sshDestination(const ConnectionSettings& settings);

/// "11434:127.0.0.1:11434", the value of -L. Nothing if the remote bind cannot be one.
std::optional<QString> sshForward(const ConnectionSettings& settings);

/// The path of the private key with the home directory in place of a leading "~"; nothing if none is set or
/// it cannot be one.
std::optional<QString> sshIdentityFile(const ConnectionSettings& settings);

/// Whether ssh may ask for a password, because there is one to answer with.
enum class SavedPassword {
    None,
    Present,
};

/// The arguments of the ssh that holds the tunnel. Throws VarnelError if the settings name no destination or
/// no forward.
QStringList sshArguments(const ConnectionSettings& settings, SavedPassword password);

} // namespace varnel
