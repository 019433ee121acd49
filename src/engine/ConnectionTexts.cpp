#include "engine/ConnectionTexts.h"

namespace varnel {

QString unansweredMessage(const ConnectionSettings& connection, bool tunnelIsUp)
{
    switch (connection.mode) {
    case ConnectionMode::ThisMac:
        return QStringLiteral("Ollama is not running on this Mac.");
    case ConnectionMode::SshTunnel:
        if (tunnelIsUp)
            return QStringLiteral("The tunnel to %1 is open, but Ollama did not answer.")
                .arg(connection.hostLabel());
        return QStringLiteral("Not connected to %1. Connect opens the SSH tunnel.")
            .arg(connection.hostLabel());
    case ConnectionMode::Direct:
        break;
    }
    return QStringLiteral("Could not reach %1.").arg(connection.baseURL().toString(QUrl::RemoveUserInfo));
}

} // namespace varnel
