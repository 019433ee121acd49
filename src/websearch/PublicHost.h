#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace varnel {

/// Whether a host, as it is written, belongs to the public internet: no name or address of this computer or
/// of a local network, no IPv6 address. Compares letter by letter; lower-casing is the caller's business. A
/// name that resolves to a private address passes; that is found out when it is connected to.
bool isPublicHost(const QString& host);

/// The text as the URL of a public page, its host in ASCII and lower case and without a dot at its end;
/// nothing if it is anything but http or https, carries a user name, holds a backslash or a control
/// character, or names a host that is not public.
std::optional<QUrl> publicPageUrl(const QString& text);

} // namespace varnel
