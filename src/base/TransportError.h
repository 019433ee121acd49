#pragma once

#include "base/Error.h"

namespace varnel {

/// A request got no complete answer: the network, the connection or the HTTP framing failed. What a server
/// says in a well-formed answer, a status of 500 included, is never a TransportError.
class TransportError : public Error
{
public:
    enum class Kind {
        Unusable,    ///< the address cannot be requested at all
        Unresolved,  ///< the host name is not known
        Unreachable, ///< no connection could be made
        TimedOut,    ///< no byte came for as long as the request allows
        Insecure,    ///< TLS failed or the certificate is not trusted
        Closed,      ///< the connection ended before the answer was complete
        Malformed,   ///< what came is not HTTP, or cannot be unpacked
        TooLarge,    ///< headers or body are over their limit
    };

    TransportError(Kind kind, QString message)
        : Error(std::move(message))
        , m_kind(kind)
    {}

    Kind kind() const noexcept { return m_kind; }

private:
    Kind m_kind;
};

} // namespace varnel
