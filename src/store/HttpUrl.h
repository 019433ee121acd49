#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace varnel {

/// The text as a URL that requests can be sent to: strictly written, "http" or "https", with a host. Nothing
/// if it is anything else; blanks around it are not taken away.
std::optional<QUrl> parseHttpUrl(const QString& text);

/// The base with an endpoint behind its path, with exactly one "/" in between. What the base carries besides
/// its path (a port, user-info, a query) is kept.
/// @param endpoint a path that begins without "/", with every character that has a meaning in URLs
/// percent-encoded where it shall not have it.
QUrl endpointUrl(const QUrl& base, const QString& endpoint);

} // namespace varnel
