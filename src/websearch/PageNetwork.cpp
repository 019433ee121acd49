#include "websearch/PageNetwork.h"

#include "base/TransportError.h"

#include <memory>
#include <netdb.h>
#include <sys/socket.h>

namespace varnel {

namespace {

std::vector<IpAddress> lookUp(const QString& host)
{
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_ADDRCONFIG;
    addrinfo* first = nullptr;
    const int result = getaddrinfo(host.toLatin1().constData(), nullptr, &hints, &first);
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(first, &freeaddrinfo);
    std::vector<IpAddress> addresses;
    for (const addrinfo* entry = result == 0 ? first : nullptr; entry; entry = entry->ai_next) {
        if (const auto address = ipAddressOf(*entry->ai_addr))
            addresses.push_back(*address);
    }
    if (addresses.empty())
        throw TransportError(TransportError::Kind::Unresolved,
                             QStringLiteral("The host \"%1\" could not be found.").arg(host));
    return addresses;
}

} // namespace

Task<std::vector<IpAddress>> SystemPageNetwork::addressesOf(QString host, std::stop_token stop)
{
    return m_lookups.run([host = std::move(host)](const std::stop_token&) { return lookUp(host); },
                         std::move(stop));
}

} // namespace varnel
