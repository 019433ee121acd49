#include "websearch/IpAddress.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstring>
#include <netinet/in.h>
#include <sys/socket.h>

namespace varnel {

namespace {

/// Addresses that share their first `bits` bits.
struct Block
{
    std::array<std::uint8_t, 4> start;
    int bits;
};

constexpr std::array privateV4Blocks = {
    Block{{0, 0, 0, 0}, 8},       // this network
    Block{{10, 0, 0, 0}, 8},      // private
    Block{{100, 64, 0, 0}, 10},   // shared by customers of a carrier
    Block{{127, 0, 0, 0}, 8},     // this computer
    Block{{169, 254, 0, 0}, 16},  // link-local
    Block{{172, 16, 0, 0}, 12},   // private
    Block{{192, 0, 0, 0}, 24},    // protocol assignments
    Block{{192, 0, 2, 0}, 24},    // documentation
    Block{{192, 88, 99, 0}, 24},  // relays to 6to4
    Block{{192, 168, 0, 0}, 16},  // private
    Block{{198, 18, 0, 0}, 15},   // measurements
    Block{{198, 51, 100, 0}, 24}, // documentation
    Block{{203, 0, 113, 0}, 24},  // documentation
    Block{{224, 0, 0, 0}, 3},     // multicast, reserved, broadcast
};

constexpr Block globalV6Block = {{0x20, 0, 0, 0}, 3};

/// What is set apart inside the block of global addresses.
constexpr std::array privateV6Blocks = {
    Block{{0x20, 0x01, 0x00, 0x00}, 23}, // protocol assignments, Teredo among them
    Block{{0x20, 0x01, 0x0d, 0xb8}, 32}, // documentation
    Block{{0x20, 0x02, 0x00, 0x00}, 16}, // 6to4
    Block{{0x3f, 0xff, 0x00, 0x00}, 20}, // documentation
};

bool isIn(const IpAddress& address, const Block& block)
{
    for (int bit = 0; bit < block.bits; ++bit) {
        const auto byte = static_cast<std::size_t>(bit / 8);
        if (((address.bytes.at(byte) ^ block.start.at(byte)) & (0x80U >> (bit % 8))) != 0)
            return false;
    }
    return true;
}

template <std::size_t Count>
bool isInAny(const IpAddress& address, const std::array<Block, Count>& blocks)
{
    return std::any_of(blocks.begin(), blocks.end(),
                       [&address](const Block& block) { return isIn(address, block); });
}

} // namespace

QByteArray IpAddress::text() const
{
    std::array<char, INET6_ADDRSTRLEN> text{};
    inet_ntop(family == Family::V4 ? AF_INET : AF_INET6, bytes.data(), text.data(), text.size());
    return text.data();
}

std::optional<IpAddress> parseIpAddress(const QByteArray& text)
{
    IpAddress address;
    if (inet_pton(AF_INET, text.constData(), address.bytes.data()) == 1)
        return address;
    address.family = IpAddress::Family::V6;
    if (inet_pton(AF_INET6, text.constData(), address.bytes.data()) == 1)
        return address;
    return std::nullopt;
}

std::optional<IpAddress> ipAddressOf(const sockaddr& socket)
{
    IpAddress address;
    if (socket.sa_family == AF_INET) {
        const auto& v4 = reinterpret_cast<const sockaddr_in&>(socket);
        std::memcpy(address.bytes.data(), &v4.sin_addr, sizeof v4.sin_addr);
        return address;
    }
    if (socket.sa_family == AF_INET6) {
        const auto& v6 = reinterpret_cast<const sockaddr_in6&>(socket);
        address.family = IpAddress::Family::V6;
        std::memcpy(address.bytes.data(), &v6.sin6_addr, sizeof v6.sin6_addr);
        return address;
    }
    return std::nullopt;
}

bool isPublicAddress(const IpAddress& address)
{
    if (address.family == IpAddress::Family::V4)
        return !isInAny(address, privateV4Blocks);
    return isIn(address, globalV6Block) && !isInAny(address, privateV6Blocks);
}

} // namespace varnel
