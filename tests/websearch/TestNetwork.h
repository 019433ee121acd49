#pragma once

#include "base/Error.h"
#include "base/StopWakeup.h"
#include "base/TransportError.h"
#include "websearch/PageNetwork.h"

#include <QHash>
#include <QStringList>

namespace varnel::test {

/// A network of hosts that a test names, where pages may be read from this computer too.
class TestNetwork final : public PageNetwork
{
public:
    /// The addresses of each host; a host without any is looked up until it is stopped.
    QHash<QString, QList<QByteArray>> hosts{{QStringLiteral("page.test"), {"127.0.0.1"}}};
    QStringList lookups;

    Task<std::vector<IpAddress>> addressesOf(QString host, std::stop_token stop) override
    {
        lookups.append(host);
        if (!hosts.contains(host))
            throw TransportError(TransportError::Kind::Unresolved,
                                 QStringLiteral("The host \"%1\" could not be found.").arg(host));
        std::vector<IpAddress> addresses;
        const QList<QByteArray> texts = hosts.value(host);
        for (const QByteArray& text : texts)
            addresses.push_back(*parseIpAddress(text));
        Wakeup wakeup;
        const StopWakeup onStop(stop, wakeup);
        while (addresses.empty()) {
            if (stop.stop_requested())
                throw Cancelled();
            co_await wakeup.wait();
        }
        co_return addresses;
    }
    bool allows(const IpAddress& address) const override
    {
        return isPublicAddress(address) || address == *parseIpAddress("127.0.0.1") ||
               address == *parseIpAddress("127.0.0.2");
    }
};

} // namespace varnel::test
