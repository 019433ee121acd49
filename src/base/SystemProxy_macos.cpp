// Never built here: written after Apple's documentation of CFNetwork, still to be tried on macOS.
#include "base/SystemProxy.h"

#include <CFNetwork/CFNetwork.h>
#include <CoreFoundation/CoreFoundation.h>

namespace varnel {

QByteArray desktopProxyFor(const QUrl& url)
{
    const CFDictionaryRef settings = CFNetworkCopySystemProxySettings();
    if (!settings)
        return "";
    const CFURLRef address = url.toCFURL();
    const CFArrayRef proxies = CFNetworkCopyProxiesForURL(address, settings);
    QByteArray chosen("");
    if (proxies && CFArrayGetCount(proxies) > 0) {
        const auto proxy = static_cast<CFDictionaryRef>(CFArrayGetValueAtIndex(proxies, 0));
        const auto type = static_cast<CFStringRef>(CFDictionaryGetValue(proxy, kCFProxyTypeKey));
        const auto host = static_cast<CFStringRef>(CFDictionaryGetValue(proxy, kCFProxyHostNameKey));
        const auto port = static_cast<CFNumberRef>(CFDictionaryGetValue(proxy, kCFProxyPortNumberKey));
        int portNumber = 0;
        if (port)
            CFNumberGetValue(port, kCFNumberIntType, &portNumber);
        if (host && type) {
            const QByteArray where =
                QString::fromCFString(host).toUtf8() + ':' + QByteArray::number(portNumber);
            if (CFEqual(type, kCFProxyTypeSOCKS))
                chosen = "socks5h://" + where;
            else if (CFEqual(type, kCFProxyTypeHTTP) || CFEqual(type, kCFProxyTypeHTTPS))
                chosen = "http://" + where;
        }
    }
    if (proxies)
        CFRelease(proxies);
    CFRelease(address);
    CFRelease(settings);
    return chosen;
}

} // namespace varnel
