#include "app/Askpass.h"

#include "base/SecretStore.h"

#include <QByteArray>

#include <unistd.h>

namespace varnel {

int runAskpass(SecretStore& secrets)
{
    const std::optional<QString> password =
        secrets.read(QStringLiteral("varnel.ssh.password"), Unlocking::Never);
    if (!password || password->isEmpty())
        return 1;
    // The bytes go out as they are, even if the reader is a terminal: this is no text to be looked at.
    StandardStream(STDOUT_FILENO).writeBytes(password->toUtf8() + '\n');
    return 0;
}

} // namespace varnel
