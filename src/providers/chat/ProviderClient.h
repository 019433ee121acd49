#pragma once

#include "base/HttpClient.h"
#include "providers/chat/ImageConverter.h"
#include "providers/chat/ProviderAnswer.h"
#include "providers/chat/ProviderTurn.h"
#include "providers/credentials/ApiBase.h"
#include "providers/credentials/ProviderRequest.h"

namespace varnel {

/// Asks cloud providers. A request is one POST whose whole reply is read at once; a redirect is a failure,
/// because nothing that carries a key or a conversation goes where it was not sent.
class ProviderClient
{
public:
    /// @param http,images must outlive the client and its tasks; without `images` a picture that a provider
    /// does not read is refused.
    /// @param idleTimeout how long a provider may think without sending a byte.
    ProviderClient(ApiBases bases, HttpClient& http, ImageConverter* images = nullptr,
                   std::chrono::milliseconds idleTimeout = std::chrono::minutes(10));

    /// Converts what must be converted, sends the turn and reads the reply. Throws VarnelError (no key, an
    /// attachment that cannot be read, a failure that the service reports, a reply without an answer),
    /// TransportError or Cancelled.
    Task<ProviderAnswer> ask(ProviderTurn turn, std::stop_token stop) const;

private:
    ApiBases m_bases;
    HttpClient* m_http;
    ImageConverter* m_images;
    std::chrono::milliseconds m_idleTimeout;
};

} // namespace varnel
