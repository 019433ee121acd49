#pragma once

#include <QString>
#include <QUrl>

namespace varnel {

/// Where conversations and the library are stored.
struct LibraryLocation
{
    /// The data folder, a local URL.
    QUrl url;
    /// Whether the folder is inside the container that the system keeps in step across computers.
    bool usingCloud = false;

    bool operator==(const LibraryLocation&) const = default;

    /// The path of the data folder, without a slash at its end.
    QString folder() const { return url.adjusted(QUrl::StripTrailingSlash).toLocalFile(); }
};

} // namespace varnel
