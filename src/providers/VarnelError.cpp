#include "providers/VarnelError.h"

namespace varnel {

VarnelError::VarnelError(Kind kind, QString message)
    : Error(std::move(message))
    , m_kind(kind)
{}

VarnelError VarnelError::missingKey(const QString& displayName)
{
    return {Kind::MissingKey,
            displayName + QStringLiteral(" API key is not in the Keychain or the environment.")};
}

VarnelError VarnelError::api(const QString& message)
{
    return {Kind::Api, message};
}

VarnelError VarnelError::passthroughDisabled()
{
    return {Kind::PassthroughDisabled,
            QStringLiteral("Remote passthrough is off. The next message stays on Ollama.")};
}

} // namespace varnel
