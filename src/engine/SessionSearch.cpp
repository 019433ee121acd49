#include "engine/SessionSearch.h"

#include <QStringMatcher>

#include <algorithm>

namespace varnel {

namespace {

using Matchers = std::vector<QStringMatcher>;

Matchers matchersOf(const QString& query)
{
    Matchers matchers;
    for (const QString& word : query.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts))
        matchers.emplace_back(word, Qt::CaseInsensitive);
    return matchers;
}

bool holdsAll(const QString& text, const Matchers& matchers)
{
    return std::all_of(matchers.begin(), matchers.end(),
                       [&text](const QStringMatcher& matcher) { return matcher.indexIn(text) >= 0; });
}

/// Fills in the line of the message that shows the first word found.
void quote(SessionHit& hit, const QString& text, const Matchers& matchers)
{
    constexpr qsizetype before = 32;
    constexpr qsizetype after = 120;
    qsizetype start = text.size();
    qsizetype length = 0;
    for (const QStringMatcher& matcher : matchers) {
        const qsizetype found = matcher.indexIn(text);
        if (found < start) {
            start = found;
            length = matcher.pattern().size();
        }
    }
    qsizetype begin = std::max<qsizetype>(0, start - before);
    if (begin > 0 && text[begin].isLowSurrogate())
        ++begin;
    qsizetype end = std::min(text.size(), start + length + after);
    if (end < text.size() && text[end].isLowSurrogate())
        --end;
    const auto line = [&text](qsizetype from, qsizetype to) {
        QString part = text.mid(from, to - from);
        std::replace_if(part.begin(), part.end(), [](QChar c) { return c.isSpace(); }, u' ');
        return part;
    };
    // Blanks at the beginning shift nothing else: the word keeps its place behind what stands before it.
    QString lead = line(begin, start);
    while (lead.startsWith(QLatin1Char(' ')))
        lead.remove(0, 1);
    if (begin > 0)
        lead.prepend(QStringLiteral("…"));
    hit.hitStart = lead.size();
    hit.hitLength = length;
    hit.snippet = lead + line(start, end);
}

std::optional<SessionHit> searchOne(const ChatSession& session, const Matchers& matchers,
                                    const std::stop_token& stop)
{
    SessionHit hit{.session = session.id, .message = {}, .snippet = {}};
    const auto found =
        std::find_if(session.messages.rbegin(), session.messages.rend(), [&](const ChatMessage& message) {
            if (stop.stop_requested())
                throw Cancelled();
            return holdsAll(message.content, matchers);
        });
    if (found != session.messages.rend()) {
        hit.message = found->id;
        quote(hit, found->content, matchers);
        return hit;
    }
    return holdsAll(session.title, matchers) ? std::optional(hit) : std::nullopt;
}

using NumberedHits = std::vector<std::pair<std::size_t, SessionHit>>;

/// Every second conversation, so that two threads meet short and long ones alike.
NumberedHits searchHalf(const SessionList& sessions, std::size_t first, const QString& query,
                        const std::stop_token& stop)
{
    const Matchers matchers = matchersOf(query);
    NumberedHits hits;
    for (std::size_t index = first; index < sessions.size(); index += 2) {
        if (std::optional<SessionHit> hit = searchOne(sessions[index], matchers, stop))
            hits.emplace_back(index, std::move(*hit));
    }
    return hits;
}

} // namespace

bool holdsWords(const QString& text, const QString& query)
{
    return holdsAll(text, matchersOf(query));
}

Task<std::vector<SessionHit>> searchSessions(Worker* worker, SessionList sessions, QString query,
                                             std::stop_token stop)
{
    const auto half = [&](std::size_t first) {
        return worker->run(
            [sessions, first, query](const std::stop_token& token) {
                return searchHalf(sessions, first, query, token);
            },
            stop);
    };
    Task<NumberedHits> even = half(0);
    Task<NumberedHits> odd = half(1);
    NumberedHits all = co_await std::move(even);
    const NumberedHits others = co_await std::move(odd);
    all.insert(all.end(), others.begin(), others.end());
    std::sort(all.begin(), all.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<SessionHit> hits;
    hits.reserve(all.size());
    for (auto& [index, hit] : all)
        hits.push_back(std::move(hit));
    co_return hits;
}

} // namespace varnel
