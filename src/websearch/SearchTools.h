#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

#include <vector>

namespace varnel {

/// One call of a function that a model asks for.
struct SearchToolCall
{
    /// As the service gave it, to answer the call.
    QString id;
    QString name;
    /// JSON text as the model wrote it, whatever that is.
    QString arguments;

    bool operator==(const SearchToolCall&) const = default;
};

/// One page that a search found.
struct WebResult
{
    QString title;
    QString url;
    QString snippet;

    bool operator==(const WebResult&) const = default;
};

inline constexpr char16_t webSearchName[] = u"web_search";
inline constexpr char16_t webFetchName[] = u"web_fetch";

/// The functions offered to a model that may search, in the form that Ollama and OpenAI-compatible services
/// share.
QJsonArray searchToolDefinitions();

/// What the model is told about them, the first system message of every request that offers them.
QString searchGuidance();

/// Reads the calls of Ollama's reply. Its older servers give a call no id, so it is given one here.
std::vector<SearchToolCall> decodeToolCalls(const QJsonArray& calls);

/// The call as an assistant message repeats it to Ollama, which takes the arguments as an object only.
QJsonObject toOllamaToolCall(const SearchToolCall& call);

} // namespace varnel
