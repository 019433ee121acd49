#pragma once

#include "base/JsonReader.h"
#include "base/JsonWriter.h"
#include "store/ConversationKinds.h"

#include <QString>
#include <QUrl>

namespace varnel {

/// How the Ollama server is reached; the defaults are those of a program that was never set up.
struct ConnectionSettings
{
    ConnectionMode mode = ConnectionMode::ThisMac;
    QString sshHost;
    QString sshUser;
    /// The tunnel's port on this computer, as stored: any number.
    qint64 localPort = 11434;
    /// host:port on the far side of the tunnel.
    QString remoteBind = QStringLiteral("127.0.0.1:11434");
    QString directURL = QStringLiteral("http://127.0.0.1:11434");
    /// The path of an ssh private key, empty for ssh's own choice.
    QString sshIdentityFile;

    bool operator==(const ConnectionSettings&) const = default;

    /// The URL of the Ollama server in the chosen mode; this computer's when the direct URL is none.
    QUrl baseURL() const;
    /// The name of the host in status texts, for example "this Mac".
    QString hostLabel() const;
};

/// Throws DecodeError when a key is missing or holds the wrong type; only "sshIdentityFile" may be missing.
ConnectionSettings decodeConnectionSettings(JsonValue value);
void writeConnectionSettings(JsonWriter& writer, const ConnectionSettings& settings);

} // namespace varnel
