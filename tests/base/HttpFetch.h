#pragma once

#include "base/HttpClient.h"
#include "practice_host/HttpServer.h"
#include "support/Await.h"

namespace varnel::test {

using Exchange = std::shared_ptr<practice::HttpExchange>;

inline HttpRequest get(const QUrl& url)
{
    HttpRequest request;
    request.url = url;
    return request;
}

/// The whole body of an answer.
inline Task<QByteArray> fetch(HttpClient& http, HttpRequest request, std::stop_token stop = {})
{
    HttpResponse response = co_await http.send(std::move(request), stop);
    co_return co_await response.readAll(1024 * 1024);
}

} // namespace varnel::test
