#include "tunnel/SshCommandLine.h"

namespace varnel {

namespace {

/// The options of OpenSSH that take a value.
bool takesValue(QChar option)
{
    return QLatin1String("bceilmopwBDEFIJLOPQRSW").contains(option);
}

} // namespace

SshCommandLine parseSshCommandLine(const QStringList& words)
{
    SshCommandLine line;
    bool optionsEnded = false;
    for (qsizetype i = 0; i < words.size(); ++i) {
        const QString& word = words[i];
        // Behind the destination come more options, and then the command for the other side with options of
        // its own.
        if (optionsEnded || line.operands.size() > 1 || word.size() < 2 ||
            !word.startsWith(QLatin1Char('-'))) {
            line.operands.append(word);
            continue;
        }
        if (word == QLatin1String("--")) {
            optionsEnded = true;
            continue;
        }
        for (qsizetype at = 1; at < word.size(); ++at) {
            const QChar option = word[at];
            line.carriesConnection = line.carriesConnection || option == QLatin1Char('W');
            if (!takesValue(option))
                continue;
            const QString value = at + 1 < word.size() ? word.mid(at + 1) : words.value(++i);
            if (option == QLatin1Char('L'))
                line.forwards.append(value);
            break;
        }
    }
    return line;
}

} // namespace varnel
