#include "ui/ConversationSearch.h"

#include <QStringMatcher>

#include <algorithm>

namespace varnel {

namespace {

struct SearchedTexts
{
    QUuid session;
    std::vector<QString> texts;
};

std::vector<SearchedTexts> textsOf(const std::vector<ChatSession>& sessions)
{
    std::vector<SearchedTexts> all;
    all.reserve(sessions.size());
    for (const ChatSession& session : sessions) {
        SearchedTexts searched{session.id, {}};
        searched.texts.reserve(session.messages.size());
        for (const ChatMessage& message : session.messages)
            searched.texts.push_back(message.content);
        all.push_back(std::move(searched));
    }
    return all;
}

std::vector<QStringMatcher> matchersOf(const QString& query)
{
    std::vector<QStringMatcher> matchers;
    for (const QString& word : query.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts))
        matchers.emplace_back(word, Qt::CaseInsensitive);
    return matchers;
}

bool holdsAll(const QString& text, const std::vector<QStringMatcher>& matchers)
{
    return std::all_of(matchers.begin(), matchers.end(),
                       [&text](const QStringMatcher& matcher) { return matcher.indexIn(text) >= 0; });
}

std::set<QUuid> search(const std::vector<SearchedTexts>& all, const QString& query,
                       const std::stop_token& stop)
{
    const std::vector<QStringMatcher> matchers = matchersOf(query);
    std::set<QUuid> hits;
    for (const SearchedTexts& searched : all) {
        const bool hit = std::any_of(searched.texts.begin(), searched.texts.end(), [&](const QString& text) {
            return !stop.stop_requested() && holdsAll(text, matchers);
        });
        if (stop.stop_requested())
            throw Cancelled();
        if (hit)
            hits.insert(searched.session);
    }
    return hits;
}

Task<std::set<QUuid>> searchOn(Worker* worker, std::vector<SearchedTexts> texts, QString query,
                               std::stop_token stop)
{
    co_return co_await worker->run([texts = std::move(texts), query = std::move(query)](
                                       const std::stop_token& token) { return search(texts, query, token); },
                                   stop);
}

} // namespace

bool holdsWords(const QString& text, const QString& query)
{
    return holdsAll(text, matchersOf(query));
}

Task<std::set<QUuid>> conversationsWith(Worker* worker, const std::vector<ChatSession>& sessions,
                                        QString query, std::stop_token stop)
{
    // Not a coroutine itself: the conversations may change while it waits.
    return searchOn(worker, textsOf(sessions), std::move(query), std::move(stop));
}

} // namespace varnel
