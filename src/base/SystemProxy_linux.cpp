#include "base/SystemProxy.h"

#include <QLibrary>

#include <cstdlib>

namespace varnel {

// libproxy reads the settings of GNOME, KDE and the system. It is loaded on first use, because few requests
// leave this computer, and because a system without it has no such settings to read.
QByteArray desktopProxyFor(const QUrl& url)
{
    QLibrary library(QStringLiteral("libproxy"), QStringLiteral("1"));
    using NewFactory = void* (*)();
    using GetProxies = char** (*)(void*, const char*);
    using FreeFactory = void (*)(void*);
    const auto newFactory = reinterpret_cast<NewFactory>(library.resolve("px_proxy_factory_new"));
    const auto getProxies = reinterpret_cast<GetProxies>(library.resolve("px_proxy_factory_get_proxies"));
    const auto freeFactory = reinterpret_cast<FreeFactory>(library.resolve("px_proxy_factory_free"));
    if (!newFactory || !getProxies || !freeFactory)
        return "";

    void* const factory = newFactory();
    if (!factory)
        return "";
    const QByteArray address = url.toEncoded(QUrl::RemoveUserInfo | QUrl::RemoveFragment);
    char** const proxies = getProxies(factory, address.constData());
    QByteArray chosen("");
    bool decided = false;
    for (char** proxy = proxies; proxy && *proxy; ++proxy) {
        const QByteArray candidate(*proxy);
        std::free(*proxy); // the list and each of its texts belong to the caller
        if (decided)
            continue;
        decided = true;
        if (candidate.startsWith("http"))
            chosen = candidate;
        else if (candidate.startsWith("socks"))
            chosen = "socks5h://" + candidate.mid(candidate.indexOf("://") + 3);
        else
            decided = candidate.startsWith("direct");
    }
    std::free(static_cast<void*>(proxies));
    freeFactory(factory);
    return chosen;
}

} // namespace varnel
