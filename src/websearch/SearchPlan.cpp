#include "websearch/SearchPlan.h"

namespace varnel {

namespace {

bool answersRemotely(const SearchCircumstances& circumstances)
{
    return circumstances.answerBackend == AnswerBackend::Remote;
}

/// Gemini and Claude take no functions of ours, only their own search.
bool takesTools(const SearchCircumstances& circumstances)
{
    return !answersRemotely(circumstances) || (circumstances.provider != RemoteProvider::Gemini &&
                                               circumstances.provider != RemoteProvider::Claude);
}

SearchPlan planTools(const SearchCircumstances& circumstances, SearchBackend backend)
{
    const bool hasKey =
        backend == SearchBackend::Ollama ? circumstances.hasOllamaKey : circumstances.hasBraveKey;
    if (!hasKey)
        return SearchBlocked{QStringLiteral("Add a %1 search key in Settings → Providers. The query stays on "
                                            "this Mac until then.")
                                 .arg(displayName(backend))};
    if (takesTools(circumstances))
        return SearchWithTools{backend};
    return SearchBlocked{QStringLiteral("%1 searches with its own key. Choose %1 search in the Search menu, "
                                        "or switch this conversation to Ollama.")
                             .arg(displayName(circumstances.provider))};
}

SearchPlan planProviderSearch(const SearchCircumstances& circumstances)
{
    if (answersRemotely(circumstances) && hasOwnSearch(circumstances.provider)) {
        if (circumstances.hasProviderKey)
            return NativeSearch{};
        return SearchBlocked{QStringLiteral("Add a %1 key in Settings → Providers to search with %1.")
                                 .arg(displayName(circumstances.provider))};
    }
    if (circumstances.hasOllamaKey)
        return SearchWithTools{SearchBackend::Ollama};
    if (circumstances.hasBraveKey)
        return SearchWithTools{SearchBackend::Brave};
    return SearchBlocked{QStringLiteral("This model has no search of its own. Add an Ollama or Brave key in "
                                        "Settings → Providers, then choose that source.")};
}

} // namespace

QString displayName(SearchBackend backend)
{
    return backend == SearchBackend::Brave ? QStringLiteral("Brave") : QStringLiteral("Ollama");
}

SearchPlan planSearch(const SearchCircumstances& circumstances)
{
    switch (circumstances.source) {
    case SearchSource::Off:
        break;
    case SearchSource::Ollama:
        return planTools(circumstances, SearchBackend::Ollama);
    case SearchSource::Brave:
        return planTools(circumstances, SearchBackend::Brave);
    case SearchSource::Provider:
        return planProviderSearch(circumstances);
    }
    return NoSearch{};
}

QString searchingStatus(SearchBackend backend)
{
    return QStringLiteral("Searching with %1…").arg(displayName(backend));
}

QString missingSearchKeyMessage(SearchBackend backend)
{
    return QStringLiteral("Add a %1 search key in Settings → Providers.").arg(displayName(backend));
}

} // namespace varnel
