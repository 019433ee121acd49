#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace varnel {

/// The text as a URL that requests can be sent to: strictly written, "http" or "https", with a host. Nothing
/// if it is anything else; blanks around it are not taken away.
std::optional<QUrl> parseHttpUrl(const QString& text);

} // namespace varnel
