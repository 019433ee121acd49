#include "providers/RemoteProvider.h"

#include <algorithm>
#include <array>

namespace varnel {

namespace {

enum class OwnSearch { No, Yes };

struct CatalogueEntry
{
    RemoteProvider provider;
    QString rawValue;
    QString displayName;
    QStringList suggestedModels;
    QStringList credentialNames;
    OwnSearch ownSearch;
};

const std::array<CatalogueEntry, 5>& catalogue()
{
    static const std::array<CatalogueEntry, 5> entries = {{
        {RemoteProvider::Gemini,
         QStringLiteral("gemini"),
         QStringLiteral("Gemini"),
         {QStringLiteral("gemini-2.5-flash"), QStringLiteral("gemini-2.5-pro"),
          QStringLiteral("gemini-3.6-flash")},
         {QStringLiteral("GOOGLE_GEMINI_API_KEY"), QStringLiteral("GEMINI_API_KEY"),
          QStringLiteral("GOOGLE_API_KEY")},
         OwnSearch::Yes},
        {RemoteProvider::OpenAi,
         QStringLiteral("openai"),
         QStringLiteral("OpenAI"),
         {QStringLiteral("gpt-4.1-mini"), QStringLiteral("gpt-4.1"), QStringLiteral("gpt-4o"),
          QStringLiteral("gpt-4o-mini")},
         {QStringLiteral("OPENAI_API_KEY")},
         OwnSearch::Yes},
        {RemoteProvider::Claude,
         QStringLiteral("claude"),
         QStringLiteral("Claude"),
         {QStringLiteral("claude-sonnet-5"), QStringLiteral("claude-opus-5"),
          QStringLiteral("claude-haiku-4-5")},
         {QStringLiteral("CLAUDE_AI_API_KEY"), QStringLiteral("ANTHROPIC_API_KEY")},
         OwnSearch::Yes},
        {RemoteProvider::DeepSeek,
         QStringLiteral("deepseek"),
         QStringLiteral("DeepSeek"),
         {QStringLiteral("deepseek-v4-flash-vision-exp")},
         {QStringLiteral("DEEPSEEK_API_TOKEN"), QStringLiteral("DEEPSEEK_API_KEY")},
         OwnSearch::No},
        {RemoteProvider::OpenRouter,
         QStringLiteral("openrouter"),
         QStringLiteral("OpenRouter"),
         {QStringLiteral("google/gemini-2.5-flash"), QStringLiteral("anthropic/claude-sonnet-5"),
          QStringLiteral("openai/gpt-4.1-mini")},
         {QStringLiteral("OPENROUTER_API_KEY")},
         OwnSearch::No},
    }};
    return entries;
}

const CatalogueEntry& entryOf(RemoteProvider provider)
{
    const auto& entries = catalogue();
    return *std::find_if(entries.begin(), entries.end(),
                         [provider](const CatalogueEntry& entry) { return entry.provider == provider; });
}

} // namespace

const std::vector<RemoteProvider>& allRemoteProviders()
{
    static const std::vector<RemoteProvider> providers = [] {
        std::vector<RemoteProvider> all;
        for (const CatalogueEntry& entry : catalogue())
            all.push_back(entry.provider);
        return all;
    }();
    return providers;
}

const QString& rawValue(RemoteProvider provider)
{
    return entryOf(provider).rawValue;
}

std::optional<RemoteProvider> remoteProviderFromRawValue(QStringView text)
{
    for (const CatalogueEntry& entry : catalogue()) {
        if (entry.rawValue == text)
            return entry.provider;
    }
    return std::nullopt;
}

const QString& displayName(RemoteProvider provider)
{
    return entryOf(provider).displayName;
}

const QStringList& suggestedModels(RemoteProvider provider)
{
    return entryOf(provider).suggestedModels;
}

const QStringList& credentialNames(RemoteProvider provider)
{
    return entryOf(provider).credentialNames;
}

bool hasOwnSearch(RemoteProvider provider)
{
    return entryOf(provider).ownSearch == OwnSearch::Yes;
}

} // namespace varnel
