#pragma once

#include "providers/RemoteProvider.h"

#include <QHashFunctions>
#include <QString>

#include <variant>

namespace varnel {

/// A model of the Ollama server, offered in a menu.
struct OllamaModelChoice
{
    QString model;

    bool operator==(const OllamaModelChoice&) const = default;
};

/// A model of a cloud provider, offered in a menu.
struct RemoteModelChoice
{
    RemoteProvider provider = RemoteProvider::Gemini;
    QString model;

    bool operator==(const RemoteModelChoice&) const = default;
};

/// What the model menu of a conversation can choose.
using SessionModelChoice = std::variant<OllamaModelChoice, RemoteModelChoice>;

/// For QHash and QSet.
inline std::size_t qHash(const SessionModelChoice& choice, std::size_t seed = 0)
{
    if (const auto* remote = std::get_if<RemoteModelChoice>(&choice))
        return qHashMulti(seed, choice.index(), static_cast<int>(remote->provider), remote->model);
    return qHashMulti(seed, choice.index(), std::get<OllamaModelChoice>(choice).model);
}

} // namespace varnel
