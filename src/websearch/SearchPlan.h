#pragma once

#include "providers/RemoteProvider.h"
#include "store/ConversationKinds.h"

#include <QString>

#include <variant>

namespace varnel {

/// The service that runs the web searches of a model.
enum class SearchBackend { Ollama, Brave };

/// The name that is shown: "Ollama" or "Brave".
QString displayName(SearchBackend backend);

/// The web tools are offered to the model, and the program runs what it asks for.
struct SearchWithTools
{
    SearchBackend backend = SearchBackend::Ollama;

    bool operator==(const SearchWithTools&) const = default;
};

/// The turn is not sent; the message tells the user what to change.
struct SearchBlocked
{
    QString message;

    bool operator==(const SearchBlocked&) const = default;
};

/// The turn is sent without search.
struct NoSearch
{
    bool operator==(const NoSearch&) const = default;
};

/// The provider searches by itself.
struct NativeSearch
{
    bool operator==(const NativeSearch&) const = default;
};

/// How a turn looks up current information.
using SearchPlan = std::variant<SearchWithTools, SearchBlocked, NoSearch, NativeSearch>;

/// Everything that the plan of a turn depends on.
struct SearchCircumstances
{
    SearchSource source = SearchSource::Off;
    AnswerBackend answerBackend = AnswerBackend::Ollama;
    /// Counts only for a conversation that a provider answers.
    RemoteProvider provider = RemoteProvider::Gemini;
    bool hasOllamaKey = false;
    bool hasBraveKey = false;
    /// Whether the provider's own key is there.
    bool hasProviderKey = false;

    bool operator==(const SearchCircumstances&) const = default;
};

SearchPlan planSearch(const SearchCircumstances& circumstances);

/// The status of a turn whose model may search, "Searching with Ollama…".
QString searchingStatus(SearchBackend backend);
/// Why a turn was not sent whose search key is gone since it was planned.
QString missingSearchKeyMessage(SearchBackend backend);

} // namespace varnel
