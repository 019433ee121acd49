#include "websearch/PageFetch.h"

#include "base/Error.h"
#include "websearch/Deadline.h"
#include "websearch/PageCharset.h"
#include "websearch/PageText.h"
#include "websearch/PublicHost.h"

#include <algorithm>

namespace varnel {

namespace {

constexpr qsizetype resultLimit = 6000;
constexpr qsizetype textLimit = 12'000;
// A host whose first addresses are dead shall not use up the time for all of them.
constexpr std::size_t triedAddresses = 3;
constexpr std::chrono::milliseconds connectLimit = std::chrono::seconds(10);

struct Page
{
    QByteArray contentType;
    QByteArray body;
};

Error notPublic()
{
    return Error(QStringLiteral("That URL is not a public http or https page."));
}

Error tooSlow(const Deadline& deadline)
{
    const double seconds = std::chrono::duration<double>(deadline.limit()).count();
    return Error(QStringLiteral("That page did not answer within %1 seconds.").arg(QString::number(seconds)));
}

HttpRequest pageRequest(const QUrl& url, const IpAddress& address, const PageLimits& limits)
{
    HttpRequest request;
    request.url = url;
    request.headers = {{"User-Agent", "Varnel"}, {"Accept", "text/html, text/plain;q=0.9, */*;q=0.5"}};
    request.connectTimeout = std::min(connectLimit, limits.time);
    request.idleTimeout = limits.time;
    request.pinnedAddress = address.text();
    request.headerLimit = limits.headers;
    request.bodyLimit = limits.body;
    return request;
}

/// Sends a request to the host's addresses, all of them checked, until one can be connected to.
Task<HttpResponse> connectAndAsk(HttpClient* http, PageNetwork* network, QUrl url, PageLimits limits,
                                 std::stop_token stop)
{
    std::vector<IpAddress> addresses = co_await network->addressesOf(url.host(QUrl::EncodeUnicode), stop);
    if (!std::all_of(addresses.begin(), addresses.end(),
                     [network](const IpAddress& address) { return network->allows(address); }))
        throw notPublic();
    addresses.resize(std::min(addresses.size(), triedAddresses));
    for (std::size_t i = 0; i + 1 < addresses.size(); ++i) {
        try {
            co_return co_await http->send(pageRequest(url, addresses.at(i), limits), stop);
        } catch (const TransportError& error) {
            if (error.kind() != TransportError::Kind::Unreachable &&
                error.kind() != TransportError::Kind::TimedOut)
                throw;
        }
    }
    co_return co_await http->send(pageRequest(url, addresses.back(), limits), stop);
}

/// Where a redirect leads; nothing for any other answer. Throws if it leads nowhere public.
std::optional<QUrl> redirectTarget(const HttpResponse& response, const QUrl& url)
{
    const int status = response.status();
    const bool redirects = status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
    const QByteArray location = response.header("Location");
    if (!redirects || location.isEmpty())
        return std::nullopt;
    // Whether the target is written in an odd way is judged before anything is resolved against the base.
    const QString written = QString::fromUtf8(location);
    if (written.contains(u'\\'))
        throw notPublic();
    const QUrl relative(written, QUrl::TolerantMode);
    const std::optional<QUrl> target = publicPageUrl(QString::fromLatin1(url.resolved(relative).toEncoded()));
    if (!target)
        throw notPublic();
    return target;
}

/// The body as far as it came in time.
Task<QByteArray> readBody(HttpResponse* response, const Deadline* deadline)
{
    QByteArray body;
    try {
        while (const std::optional<QByteArray> piece = co_await response->next())
            body += *piece;
    } catch (const Cancelled&) {
        if (!deadline->hasPassed() || body.isEmpty())
            throw;
    }
    co_return body;
}

Task<Page> readPage(HttpClient* http, PageNetwork* network, QUrl url, PageLimits limits,
                    const Deadline* deadline)
{
    for (int redirects = 0;; ++redirects) {
        HttpResponse response = co_await connectAndAsk(http, network, url, limits, deadline->token());
        if (redirects < limits.redirects) {
            if (const std::optional<QUrl> target = redirectTarget(response, url)) {
                url = *target;
                continue;
            }
        }
        if (!response.isSuccess())
            throw Error(QStringLiteral("Could not read that page (HTTP %1).").arg(response.status()));
        Page page{response.header("Content-Type"), {}};
        page.body = co_await readBody(&response, deadline);
        co_return page;
    }
}

bool isHtml(const Page& page)
{
    return page.contentType.toLower().contains("html") || page.body.left(5).toLower() == "<html";
}

/// Whether the bytes are a picture, a film or the like, of which only noise would be left as text.
bool isNoText(const Page& page)
{
    const QByteArray type = page.contentType.toLower();
    return type.startsWith("image/") || type.startsWith("audio/") || type.startsWith("video/") ||
           type.startsWith("font/") || type.startsWith("application/pdf") ||
           (!type.contains("charset") && !QStringConverter::encodingForData(page.body) &&
            page.body.left(1024).contains('\0'));
}

QString resultOf(const Page& page, const QString& url)
{
    PageText reduced;
    if (!isNoText(page)) {
        const QString text = decodePage(page.body, page.contentType);
        if (isHtml(page))
            reduced = reducePage(text);
        else
            reduced.text = firstCharacters(text.trimmed(), textLimit);
    }
    if (reduced.text.isEmpty())
        throw Error(QStringLiteral("The page had no text."));
    return pageResult(reduced.title, reduced.text, url);
}

} // namespace

QString pageResult(const QString& title, const QString& text, const QString& url)
{
    return firstCharacters((title.isEmpty() ? url : title) + QStringLiteral("\n\n") + text, resultLimit);
}

Task<QString> readPublicPage(HttpClient* http, PageNetwork* network, QString url, PageLimits limits,
                             std::stop_token stop)
{
    const Deadline deadline(stop, limits.time);
    try {
        const std::optional<QUrl> target = publicPageUrl(url);
        if (!target)
            throw notPublic();
        const Page page = co_await readPage(http, network, *target, limits, &deadline);
        co_return resultOf(page, url.trimmed());
    } catch (const Cancelled&) {
        if (!deadline.hasPassed())
            throw;
        throw tooSlow(deadline);
    }
}

Task<QString> fetchPage(HttpClient* http, PageNetwork* network, QString url, PageLimits limits,
                        std::stop_token stop)
{
    try {
        co_return co_await readPublicPage(http, network, std::move(url), limits, std::move(stop));
    } catch (const Error& error) {
        co_return error.message();
    }
}

} // namespace varnel
