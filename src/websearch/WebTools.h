#pragma once

#include "base/HttpClient.h"
#include "base/Task.h"
#include "websearch/KnownAddresses.h"
#include "websearch/PageFetch.h"
#include "websearch/PageNetwork.h"
#include "websearch/SearchService.h"
#include "websearch/SearchTools.h"

#include <QString>

#include <functional>
#include <stop_token>

namespace varnel {

/// One thing that is looked up for a model.
struct WebLookup
{
    enum class Kind { Search, Read };

    Kind kind = Kind::Search;
    /// The query or the URL, as the model wrote it, without white space around it.
    QString subject;

    bool operator==(const WebLookup&) const = default;
};

/// How whoever runs a turn takes part in what is looked up.
struct WebToolHooks
{
    /// Called before each search and each page, when nothing can keep it from running any more.
    std::function<void(const WebLookup&)> onLookup;
    /// Asked before a page whose URL is neither in the user's texts nor in anything that was looked up; false
    /// leaves it unread. Without it every page is read.
    std::function<Task<bool>(QString url, std::stop_token stop)> approve;
};

/// Runs the calls of one turn.
class WebTools
{
public:
    /// @param userTexts what the user wrote; a URL in it needs no approval.
    /// `http` and `network` outlive this.
    WebTools(SearchService service, HttpClient& http, PageNetwork& network, WebToolHooks hooks = {},
             const QStringList& userTexts = {}, PageLimits limits = {});

    /// The text that the model gets for a call: what was found, or what went wrong. Throws Cancelled, after a
    /// stop, and whatever the hooks throw. One call at a time; this outlives the task.
    Task<QString> run(SearchToolCall call, std::stop_token stop);

private:
    Task<QString> search(QString query, int count, std::stop_token stop);
    Task<QString> read(QString url, std::stop_token stop);
    void report(WebLookup::Kind kind, const QString& subject) const;

    SearchService m_service;
    HttpClient* m_http;
    PageNetwork* m_network;
    WebToolHooks m_hooks;
    PageLimits m_limits;
    KnownAddresses m_known;
};

} // namespace varnel
