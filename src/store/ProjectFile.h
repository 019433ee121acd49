#pragma once

#include <QString>

namespace varnel {

/// A file that a reply gives, to be written into the project folder.
struct ProjectFile
{
    /// Where it belongs below the project folder, as the reply wrote it: not checked yet.
    QString relativePath;
    QString contents;

    bool operator==(const ProjectFile&) const = default;
};

} // namespace varnel
