#pragma once

#include "base/HttpClient.h"
#include "base/Task.h"
#include "websearch/PageNetwork.h"

#include <QString>

#include <chrono>
#include <stop_token>

namespace varnel {

/// How much a page may take.
struct PageLimits
{
    /// From the look-up of the name to the last byte, all redirects included.
    std::chrono::milliseconds time = std::chrono::seconds(30);
    /// Decoded bytes of the body.
    qint64 body = 4LL * 1024 * 1024;
    /// Bytes of a block of headers.
    qsizetype headers = 64LL * 1024;
    int redirects = 5;

    bool operator==(const PageLimits&) const = default;
};

/// A title and a text as a model is given them, at most 6,000 characters.
/// @param url stands in for a missing title.
QString pageResult(const QString& title, const QString& text, const QString& url);

/// Reads a public page from where it is and reduces it to text. Throws Error that says what failed, and
/// Cancelled.
///
/// Before each connection, those of redirects included, the host is looked up once; all its addresses must be
/// allowed, and one of them is what is connected to, past every proxy. Neither cookies nor credentials are
/// sent. A body that is longer than allowed, or takes longer, is read as far as it came. `http` and `network`
/// outlive the task.
Task<QString> readPublicPage(HttpClient* http, PageNetwork* network, QString url, PageLimits limits,
                             std::stop_token stop);

/// The same for a model, which is told what failed as the result. Only Cancelled is thrown, after a stop.
Task<QString> fetchPage(HttpClient* http, PageNetwork* network, QString url, PageLimits limits,
                        std::stop_token stop);

} // namespace varnel
