#include "providers/credentials/ModelFilter.h"

#include <algorithm>
#include <initializer_list>

namespace varnel {

namespace {

using Words = std::initializer_list<QLatin1String>;

bool containsAny(const QString& name, Words words)
{
    return std::any_of(words.begin(), words.end(),
                       [&name](QLatin1String word) { return name.contains(word); });
}

bool beginsWithAny(const QString& name, Words words)
{
    return std::any_of(words.begin(), words.end(),
                       [&name](QLatin1String word) { return name.startsWith(word); });
}

bool readsImages(RemoteProvider provider, const QString& id)
{
    if (id.contains(QLatin1String("vision")))
        return true;
    switch (provider) {
    case RemoteProvider::Gemini:
    case RemoteProvider::OpenAi:
    case RemoteProvider::Claude:
        return true;
    case RemoteProvider::DeepSeek:
        return false;
    case RemoteProvider::OpenRouter:
        return containsAny(id, {QLatin1String("gemini"), QLatin1String("claude"), QLatin1String("gpt-4"),
                                QLatin1String("gpt-5")});
    }
    return false;
}

bool readsPdfDocuments(RemoteProvider provider, const QString& id)
{
    switch (provider) {
    case RemoteProvider::Gemini:
    case RemoteProvider::Claude:
        return true;
    case RemoteProvider::OpenAi:
        return beginsWithAny(id, {QLatin1String("gpt-4o"), QLatin1String("gpt-4.1"), QLatin1String("gpt-5")});
    case RemoteProvider::DeepSeek:
        return false;
    case RemoteProvider::OpenRouter:
        return containsAny(id, {QLatin1String("gemini"), QLatin1String("claude"), QLatin1String("gpt-4o"),
                                QLatin1String("gpt-4.1"), QLatin1String("gpt-5")});
    }
    return false;
}

bool ollamaModelReads(AttachmentKind kind, const QString& model)
{
    switch (kind) {
    case AttachmentKind::Everything:
        return true;
    case AttachmentKind::Images:
        return ollamaModelReadsImages(model);
    case AttachmentKind::PdfDocuments:
        return false;
    }
    return false;
}

} // namespace

bool ollamaModelReadsImages(const QString& model)
{
    return containsAny(model.toLower(),
                       {QLatin1String("vision"), QLatin1String("llava"), QLatin1String("moondream"),
                        QLatin1String("-vl"), QLatin1String("vl:")});
}

bool remoteModelReads(AttachmentKind kind, RemoteProvider provider, const QString& model)
{
    switch (kind) {
    case AttachmentKind::Everything:
        return true;
    case AttachmentKind::Images:
        return readsImages(provider, model.toLower());
    case AttachmentKind::PdfDocuments:
        return readsPdfDocuments(provider, model.toLower());
    }
    return false;
}

std::vector<ModelOffer> modelsFor(AttachmentKind kind, const QStringList& installedModels,
                                  const std::vector<RemoteProvider>& available)
{
    std::vector<ModelOffer> offers;
    for (const QString& model : installedModels) {
        if (ollamaModelReads(kind, model))
            offers.push_back({.model = model, .provider = std::nullopt, .chosen = false});
    }
    for (const RemoteProvider provider : available) {
        for (const QString& model : suggestedModels(provider)) {
            if (remoteModelReads(kind, provider, model))
                offers.push_back({.model = model, .provider = provider, .chosen = false});
        }
    }
    return offers;
}

} // namespace varnel
