#pragma once

#include "base/HttpClient.h"
#include "base/Task.h"
#include "providers/credentials/ApiBase.h"
#include "websearch/SearchPlan.h"
#include "websearch/SearchTools.h"

#include <QString>
#include <QUrl>

#include <chrono>
#include <stop_token>
#include <vector>

namespace varnel {

/// A web search service and what it takes to use it.
struct SearchService
{
    SearchBackend backend = SearchBackend::Ollama;
    QString key;
    /// The service's address; a path in it is kept in front of every endpoint's.
    QUrl base;
    /// How long the service may take for a whole answer.
    std::chrono::milliseconds timeLimit = std::chrono::seconds(30);

    bool operator==(const SearchService&) const = default;
};

/// The service at its public address, or at the one that stands in for it.
SearchService searchServiceOf(SearchBackend backend, QString key, const ApiBases& bases);

/// Runs a search. The results are in the service's order, at most 10, none without a URL, and never none at
/// all. Throws Error with a text for the model, in which the key does not appear, and Cancelled. Redirects
/// are failures: the key goes to the service and nowhere else.
/// @param query not empty.
/// @param count how many results are wanted, 1 to 10.
Task<std::vector<WebResult>> searchWeb(HttpClient* http, SearchService service, QString query, int count,
                                       std::stop_token stop);

/// The results as a model is given them, at most 6,000 characters: title, URL and snippet of each.
QString searchResult(const std::vector<WebResult>& results);

/// Has Ollama's service read a public page: the result for the model, or what failed, for the model as well.
/// Only Cancelled is thrown, after a stop.
Task<QString> fetchPageThroughOllama(HttpClient* http, SearchService service, QString url,
                                     std::stop_token stop);

} // namespace varnel
