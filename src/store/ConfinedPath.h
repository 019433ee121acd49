#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace varnel {

/// A place below a folder, with every symbolic link on the way resolved.
struct ConfinedPath
{
    QString folder;   ///< absolute, without a "/" at its end unless it is the root
    QString relative; ///< below the folder: names joined by "/", none of them a link when it was looked at

    bool operator==(const ConfinedPath&) const = default;

    QString absolute() const;
};

/// Where a relative path that somebody else wrote leads below a folder, whether anything is there or not.
/// Nothing when it is absolute, begins with "~", holds "\", a NUL or a name that is empty, "." or "..", or
/// leads out of the folder by a symbolic link, a dangling one included. Links that stay inside are fine, and
/// the folder may be reached by links.
std::optional<ConfinedPath> confinedPath(const QString& folder, const QString& relativePath);

/// The same as URLs of the local file system.
std::optional<QUrl> resolveProjectPath(const QUrl& folder, const QString& relativePath);

} // namespace varnel
