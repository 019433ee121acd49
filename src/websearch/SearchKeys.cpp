#include "websearch/SearchKeys.h"

namespace varnel {

namespace {

QString sharedAccount()
{
    return QStringLiteral("tavrin.search.brave");
}

} // namespace

KeyNames searchKeyNames(SearchBackend backend)
{
    if (backend == SearchBackend::Ollama) {
        const QStringList names{QStringLiteral("OLLAMA_API_KEY")};
        return {.accounts = names, .variables = names};
    }
    const QStringList names{QStringLiteral("BRAVE_SEARCH_API_KEY"), QStringLiteral("BRAVE_API_KEY")};
    return {.accounts = names + QStringList{sharedAccount()}, .variables = names};
}

bool isSharedSearchKey(const ResolvedKey& key)
{
    const auto* const origin = std::get_if<KeychainOrigin>(&key.origin);
    return origin && origin->account == sharedAccount();
}

} // namespace varnel
