#pragma once

#include <QByteArray>

#include <array>
#include <cstdint>
#include <optional>

struct sockaddr;

namespace varnel {

/// A numeric IPv4 or IPv6 address.
struct IpAddress
{
    enum class Family { V4, V6 };

    Family family = Family::V4;
    /// In network order; an IPv4 address takes the first four, the rest is zero.
    std::array<std::uint8_t, 16> bytes{};

    bool operator==(const IpAddress&) const = default;

    /// As it is usually written, IPv6 without brackets.
    QByteArray text() const;
};

/// Reads the usual forms only: four decimal numbers, or IPv6 without brackets and zone.
std::optional<IpAddress> parseIpAddress(const QByteArray& text);
/// The address of a socket; nothing for another kind of socket.
std::optional<IpAddress> ipAddressOf(const sockaddr& socket);

/// Whether an address belongs to the public internet. Addresses that wrap an IPv4 address (mapped, NAT64,
/// 6to4, Teredo) do not, whatever they wrap: they lead where the wrapped one would.
bool isPublicAddress(const IpAddress& address);

} // namespace varnel
