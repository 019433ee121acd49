#pragma once

#include "base/Task.h"
#include "ollama/OllamaClient.h"

#include <QString>

#include <stop_token>
#include <vector>

namespace varnel {

/// What a server that answers says of itself.
struct ProbeResult
{
    QString version;
    std::vector<OllamaModel> models;

    bool operator==(const ProbeResult&) const = default;
};

/// Asks a server for its version and then for its models, once each. Throws what the client throws.
Task<ProbeResult> probe(OllamaClient client, std::stop_token stop);

/// The models that can be asked for by name: without those that have none, each name once.
std::vector<OllamaModel> usableModels(std::vector<OllamaModel> models);

/// "Reachable · 0.24.0 · 3 models", the short report of a probe.
QString reportOf(const ProbeResult& result);

} // namespace varnel
