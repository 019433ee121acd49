#pragma once

#include "store/DataFile.h"
#include "store/SessionList.h"

#include <QString>
#include <QUrl>

#include <optional>
#include <stop_token>

namespace varnel {

/// Reads and writes the conversations of a data folder. It holds none itself. It belongs to no thread, but
/// only one may use it at a time; both operations block for as long as the disk does.
class SessionStore
{
public:
    /// Reads nothing yet.
    explicit SessionStore(const QString& dataFolder)
        : m_file(fileIn(dataFolder))
    {}

    static QString fileIn(const QString& dataFolder) { return dataFolder + QStringLiteral("/sessions.json"); }
    QUrl fileURL() const { return QUrl::fromLocalFile(m_file.path()); }

    /// The stored conversations, sorted; none if there is no file. Throws Error when the file cannot be read;
    /// the next save() then renames it, so that nothing is lost.
    SessionList load();

    /// Replaces the file by these conversations; they are on the disk when it returns. Throws Error, and the
    /// old file is in place then; so does a stop, with Cancelled, as long as it comes before the new file is
    /// complete. Yields what had to be kept beside it.
    std::optional<SetAside> save(const SessionList& sessions, const std::stop_token& stop = {});

private:
    DataFile m_file;
};

} // namespace varnel
