#include "tunnel/SshArguments.h"

#include "providers/VarnelError.h"

#include <QDir>

#include <algorithm>

namespace varnel {

namespace {

/// Whether a word holds something that separates words or, like NUL, ends them.
bool isBroken(const QString& word)
{
    return std::any_of(word.begin(), word.end(), [](QChar character) {
        return character.isSpace() || character.category() == QChar::Other_Control;
    });
}

/// Whether a word reaches ssh as one word and as no option. There is no shell in between, so this is all that
/// keeps what a user typed from being read as something else.
bool isUsable(const QString& word)
{
    return !word.isEmpty() && !word.startsWith(QLatin1Char('-')) && !isBroken(word);
}

} // namespace

int tunnelLocalPort(const ConnectionSettings& settings)
{
    return static_cast<int>(std::clamp<qint64>(settings.localPort, 1, 65535));
}

std::optional<QString> sshDestination(const ConnectionSettings& settings)
{
    const QString user = settings.sshUser.trimmed();
    const QString host = settings.sshHost.trimmed();
    if (!isUsable(user) || !isUsable(host))
        return std::nullopt;
    return user + QLatin1Char('@') + host;
}

std::optional<QString> sshForward(const ConnectionSettings& settings)
{
    const QString bind = settings.remoteBind.trimmed();
    if (!isUsable(bind) || !bind.contains(QLatin1Char(':')))
        return std::nullopt;
    return QStringLiteral("%1:").arg(tunnelLocalPort(settings)) + bind;
}

std::optional<QString> sshIdentityFile(const ConnectionSettings& settings)
{
    QString path = settings.sshIdentityFile.trimmed();
    const auto endsText = [](QChar character) {
        return character == QLatin1Char('\n') || character == QLatin1Char('\r') || character.isNull();
    };
    if (path.isEmpty() || path.startsWith(QLatin1Char('-')) ||
        std::any_of(path.begin(), path.end(), endsText))
        return std::nullopt;
    // Another user's home ("~me/…") is left to ssh, which expands it itself.
    if (path == QLatin1String("~") || path.startsWith(QLatin1String("~/")))
        return QDir::homePath() + path.mid(1);
    return path;
}

QStringList sshArguments(const ConnectionSettings& settings, SavedPassword password)
{
    const std::optional<QString> destination = sshDestination(settings);
    const std::optional<QString> forward = sshForward(settings);
    if (!destination || !forward)
        throw VarnelError::api(QStringLiteral("The SSH host, user, or remote bind is not usable."));

    const QString option = QStringLiteral("-o");
    QStringList arguments{QStringLiteral("-N"), option, QStringLiteral("ExitOnForwardFailure=yes"), option,
                          QStringLiteral("ServerAliveInterval=30")};
    if (password == SavedPassword::Present) {
        arguments << option << QStringLiteral("BatchMode=no") << option
                  << QStringLiteral("NumberOfPasswordPrompts=1") << option
                  << QStringLiteral("PreferredAuthentications=publickey,password,keyboard-interactive");
    } else {
        arguments << option << QStringLiteral("BatchMode=yes");
    }
    if (const std::optional<QString> identity = sshIdentityFile(settings))
        arguments << QStringLiteral("-i") << *identity << option << QStringLiteral("IdentitiesOnly=yes");
    arguments << QStringLiteral("-L") << *forward << *destination;
    return arguments;
}

} // namespace varnel
