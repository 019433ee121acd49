#include "base/SystemProxy.h"

#include <array>

namespace varnel {

bool isLoopbackHost(const QString& host)
{
    QString name = host.toLower();
    if (name.endsWith(QLatin1Char('.')))
        name.chop(1);
    if (name == QLatin1String("localhost") || name.endsWith(QLatin1String(".localhost")))
        return true;
    if (name == QLatin1String("0.0.0.0") || name == QLatin1String("::"))
        return true; // copied from what a server listens on; connecting to it ends here
    if (name == QLatin1String("::1") || name.startsWith(QLatin1String("::ffff:127.")))
        return true;
    // QUrl writes every form of an IPv4 address with four numbers; a name may begin with "127." too.
    const QStringList parts = name.split(QLatin1Char('.'));
    if (parts.size() != 4 || parts.first() != QLatin1String("127"))
        return false;
    for (const QString& part : parts) {
        bool isNumber = false;
        if (part.toUShort(&isNumber) > 255 || !isNumber)
            return false;
    }
    return true;
}

bool environmentNamesProxy()
{
    constexpr std::array names = {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"};
    for (const char* const name : names) {
        if (!qEnvironmentVariableIsEmpty(name))
            return true;
    }
    return false;
}

} // namespace varnel
