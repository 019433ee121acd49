#pragma once

#include "base/Clock.h"

#include <QString>

namespace varnel {

/// The text file in which a user finds why a connection or a reply failed: one line an event, a time stamp, a
/// blank and the message. It only grows.
class DiagnosticsLog
{
public:
    /// @param folder holds "varnel.log"; made with the first line.
    /// @param clock has to outlive the log.
    DiagnosticsLog(QString folder, const Clock& clock);

    /// "Library/Logs/Varnel" in the user's home, on every system.
    static QString defaultFolder();

    const QString& folder() const noexcept { return m_folder; }
    QString file() const;

    /// Appends a line and never fails towards the caller: what cannot be written is not. The message may hold
    /// text of servers and files, it goes through logText(). A log that cannot be appended to is replaced by
    /// the new line.
    void log(const QString& message) const;

private:
    QString m_folder;
    const Clock& m_clock;
};

/// What a message becomes in the log: user names and passwords are taken out of URLs, what would break the
/// line or turn its direction is written as an escape ("\n", "\x1b", "\u202e"), and of more than 2 KiB of
/// UTF-8 the beginning is kept, followed by "…".
QString logText(const QString& message);

} // namespace varnel
