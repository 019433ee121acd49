#include "ollama/OllamaError.h"

namespace varnel {

OllamaError OllamaError::unreachable(const QString& detail)
{
    return {Kind::Unreachable, QStringLiteral("Ollama is not reachable. ") + detail};
}

OllamaError OllamaError::api(QString message)
{
    return {Kind::Api, std::move(message)};
}

OllamaError OllamaError::interrupted()
{
    return {Kind::Interrupted, QStringLiteral("The connection closed before the model finished.")};
}

OllamaError OllamaError::withoutReply()
{
    return {Kind::Api, QStringLiteral("The model finished without a reply.")};
}

} // namespace varnel
