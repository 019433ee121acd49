#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <optional>

namespace varnel {

/// Whether a host name or address (without brackets) is this computer: localhost and names below it,
/// 127.0.0.0/8, ::1, and 0.0.0.0 and ::. Such a host is never reached through a proxy; that is the only
/// question this answers.
bool isLoopbackHost(const QString& host);

/// Whether the environment names a proxy (http_proxy, https_proxy, all_proxy); libcurl then follows it, and
/// its no_proxy, by itself.
bool environmentNamesProxy();

/// The proxy that the desktop's settings name for a URL, as libcurl writes it ("http://host:port"); empty for
/// none. May block for as long as the settings' service does; call it on a worker.
QByteArray desktopProxyFor(const QUrl& url);

} // namespace varnel
