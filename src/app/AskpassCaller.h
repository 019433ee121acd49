#pragma once

#include <QString>
#include <QStringList>

namespace varnel {

/// The process that started this one, as far as askpass has to know it.
struct AskpassCaller
{
    qint64 pid = 0;
    /// Together with the number it names one process: the time of its start, in the system's own measure.
    QString started;
    QString name;             ///< of its program, without the folder
    QStringList arguments;    ///< behind the program's name
    bool hasSshAbove = false; ///< it was started, over however many steps, by an ssh

    bool operator==(const AskpassCaller&) const = default;
};

/// Looks at the parent of this process. One that cannot be seen, as outside a container, has no name; throws
/// Error if the system tells nothing of one that is there.
AskpassCaller askpassCaller();

/// The folder for what lives as long as the user's session; only the user can look into it.
/// Empty if there is no such place.
QString userRuntimeFolder();

/// Whether the saved password may be given to the caller. Anybody who runs askpass by hand gets it, as from
/// any other tool of the user's; ssh asks on behalf of a server, so it gets at most eight answers (an unknown
/// host key is asked about for as long as answers come), and none when it is only the way to another host.
/// @param folder where answers are counted, one small file for each ssh; made if it is missing. When they
/// cannot be counted, there is no answer.
bool mayAnswer(const AskpassCaller& caller, const QString& folder);

} // namespace varnel
