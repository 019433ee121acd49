#include "providers/chat/ProviderClient.h"

#include "providers/chat/ProviderReply.h"
#include "providers/chat/ReadableMedia.h"
#include "providers/chat/RequestBuilder.h"

namespace varnel {

namespace {

// Far above any answer; it keeps a service that never stops sending from filling the memory.
constexpr qint64 replyLimit = 16 * 1024 * 1024;

Task<ProviderAnswer> sendRequest(HttpClient* http, ProviderRequest request,
                                 std::chrono::milliseconds idleTimeout, std::stop_token stop)
{
    HttpRequest sent;
    sent.method = "POST";
    sent.url = request.url;
    for (auto header = request.headers.cbegin(); header != request.headers.cend(); ++header)
        sent.headers.push_back({header.key(), header.value()});
    sent.body = std::exchange(request.body, {});
    sent.idleTimeout = idleTimeout;
    sent.connectTimeout = std::min(sent.connectTimeout, idleTimeout);
    HttpResponse response = co_await http->send(std::move(sent), std::move(stop));
    if (!response.isSuccess())
        throw providerStatusError(request, response.status(), co_await response.readUpTo(providerErrorLimit));
    co_return readProviderReply(request, co_await response.readAll(replyLimit));
}

Task<ProviderAnswer> askProvider(ApiBases bases, HttpClient* http, ImageConverter* images,
                                 std::chrono::milliseconds idleTimeout, ProviderTurn turn,
                                 std::stop_token stop)
{
    turn.messages = co_await readableMessages(turn.provider, std::move(turn.messages), images, stop);
    ProviderRequest request = buildProviderRequest(turn, bases);
    turn = {}; // its attachments are not needed while the request is under way
    co_return co_await sendRequest(http, std::move(request), idleTimeout, std::move(stop));
}

} // namespace

ProviderClient::ProviderClient(ApiBases bases, HttpClient& http, ImageConverter* images,
                               std::chrono::milliseconds idleTimeout)
    : m_bases(std::move(bases))
    , m_http(&http)
    , m_images(images)
    , m_idleTimeout(idleTimeout)
{}

Task<ProviderAnswer> ProviderClient::ask(ProviderTurn turn, std::stop_token stop) const
{
    return askProvider(m_bases, m_http, m_images, m_idleTimeout, std::move(turn), std::move(stop));
}

} // namespace varnel
