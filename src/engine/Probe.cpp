#include "engine/Probe.h"

namespace varnel {

Task<ProbeResult> probe(OllamaClient client, std::stop_token stop)
{
    ProbeResult result;
    result.version = co_await client.serverVersion(stop);
    result.models = co_await client.listModels(stop);
    co_return result;
}

QString reportOf(const ProbeResult& result)
{
    return QStringLiteral("Reachable · %1 · %2 models")
        .arg(result.version, QString::number(result.models.size()));
}

} // namespace varnel
