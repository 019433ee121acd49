#pragma once

#include "base/Task.h"
#include "base/Worker.h"
#include "websearch/IpAddress.h"

#include <QString>

#include <stop_token>
#include <vector>

namespace varnel {

/// Finds where the host of a web page is and says whether pages may be read from there.
class PageNetwork
{
public:
    PageNetwork() = default;
    PageNetwork(const PageNetwork&) = delete;
    PageNetwork& operator=(const PageNetwork&) = delete;
    PageNetwork(PageNetwork&&) = delete;
    PageNetwork& operator=(PageNetwork&&) = delete;
    virtual ~PageNetwork() = default;

    /// Every address of a host, the best first. Throws TransportError if it has none, and Cancelled.
    virtual Task<std::vector<IpAddress>> addressesOf(QString host, std::stop_token stop) = 0;
    /// Whether a page may be read from an address.
    virtual bool allows(const IpAddress& address) const = 0;
};

/// The system's name resolution, and public addresses only.
class SystemPageNetwork final : public PageNetwork
{
public:
    Task<std::vector<IpAddress>> addressesOf(QString host, std::stop_token stop) override;
    bool allows(const IpAddress& address) const override { return isPublicAddress(address); }

private:
    // A look-up cannot be ended; one that hangs shall not hold up the next.
    Worker m_lookups{4};
};

} // namespace varnel
