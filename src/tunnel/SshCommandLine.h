#pragma once

#include <QString>
#include <QStringList>

namespace varnel {

/// The command line of some ssh, read the way ssh reads it: several options may share a word, and a value may
/// follow its option at once or as the next word.
struct SshCommandLine
{
    QStringList forwards; ///< the values of -L
    QStringList operands; ///< what is neither an option nor its value: the destination, and a remote command
    /// Whether it has -W: it carries another ssh's connection to the host behind it.
    bool carriesConnection = false;

    bool operator==(const SshCommandLine&) const = default;
};

/// @param words the arguments behind the program's name.
SshCommandLine parseSshCommandLine(const QStringList& words);

} // namespace varnel
