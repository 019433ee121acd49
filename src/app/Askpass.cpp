#include "app/Askpass.h"

#include "base/SecretStore.h"

#include <QByteArray>

#include <cerrno>
#include <unistd.h>

namespace varnel {

int runAskpass(SecretStore& secrets)
{
    const std::optional<QString> password =
        secrets.read(QStringLiteral("varnel.ssh.password"), Unlocking::Never);
    if (!password || password->isEmpty())
        return 1;
    // The bytes go out as they are, even if the reader is a terminal: this is no text to be looked at.
    const QByteArray answer = password->toUtf8() + '\n';
    for (qsizetype written = 0; written < answer.size();) {
        const ssize_t count = ::write(STDOUT_FILENO, answer.constData() + written,
                                      static_cast<std::size_t>(answer.size() - written));
        if (count < 0 && errno != EINTR)
            return 1;
        written += std::max<ssize_t>(count, 0);
    }
    return 0;
}

} // namespace varnel
