#include "engine/Probe.h"

#include <set>

namespace varnel {

std::vector<OllamaModel> usableModels(std::vector<OllamaModel> models)
{
    std::set<QString> seen;
    std::erase_if(models, [&seen](const OllamaModel& model) {
        return model.name.trimmed().isEmpty() || !seen.insert(model.name).second;
    });
    return models;
}

Task<ProbeResult> probe(OllamaClient client, std::stop_token stop)
{
    ProbeResult result;
    constexpr qsizetype longestVersion = 64;
    result.version = (co_await client.serverVersion(stop)).simplified().left(longestVersion);
    result.models = usableModels(co_await client.listModels(stop));
    co_return result;
}

QString reportOf(const ProbeResult& result)
{
    return QStringLiteral("Reachable · %1 · %2 models")
        .arg(result.version, QString::number(result.models.size()));
}

} // namespace varnel
