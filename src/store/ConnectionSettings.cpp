#include "store/ConnectionSettings.h"

#include "store/HttpUrl.h"

#include <algorithm>

namespace varnel {

QUrl ConnectionSettings::baseURL() const
{
    QUrl local(QStringLiteral("http://127.0.0.1:11434"));
    switch (mode) {
    case ConnectionMode::ThisMac:
        return local;
    case ConnectionMode::SshTunnel: {
        const qint64 port = std::clamp<qint64>(localPort, 1, 65535);
        return QUrl(QStringLiteral("http://127.0.0.1:%1").arg(port));
    }
    case ConnectionMode::Direct:
        return parseHttpUrl(directURL.trimmed()).value_or(local);
    }
    return local;
}

QString ConnectionSettings::hostLabel() const
{
    switch (mode) {
    case ConnectionMode::ThisMac:
        return QStringLiteral("this Mac");
    case ConnectionMode::SshTunnel: {
        const QString host = sshHost.trimmed();
        return host.isEmpty() ? QStringLiteral("the SSH host") : host;
    }
    case ConnectionMode::Direct:
        return baseURL().host(); // a base URL always has one
    }
    return {};
}

ConnectionSettings decodeConnectionSettings(JsonValue value)
{
    const JsonObject object = value.object();
    return {
        .mode = object.required("mode", decodeRawValue<ConnectionMode>),
        .sshHost = object.required("sshHost", &JsonValue::string),
        .sshUser = object.required("sshUser", &JsonValue::string),
        .localPort = object.required("localPort", &JsonValue::integer),
        .remoteBind = object.required("remoteBind", &JsonValue::string),
        .directURL = object.required("directURL", &JsonValue::string),
        .sshIdentityFile = object.optional("sshIdentityFile", &JsonValue::string).value_or(QString()),
    };
}

void writeConnectionSettings(JsonWriter& writer, const ConnectionSettings& settings)
{
    writer.beginObject();
    writer.key("directURL");
    writer.string(settings.directURL);
    writer.key("localPort");
    writer.integer(settings.localPort);
    writer.key("mode");
    writeRawValue(writer, settings.mode);
    writer.key("remoteBind");
    writer.string(settings.remoteBind);
    writer.key("sshHost");
    writer.string(settings.sshHost);
    writer.key("sshIdentityFile");
    writer.string(settings.sshIdentityFile);
    writer.key("sshUser");
    writer.string(settings.sshUser);
    writer.endObject();
}

} // namespace varnel
