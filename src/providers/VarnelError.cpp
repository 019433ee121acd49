#include "providers/VarnelError.h"

namespace varnel {

VarnelError::VarnelError(Kind kind, QString message, QString detail, bool isPrivate)
    : Error(std::move(message))
    , m_kind(kind)
    , m_detail(std::move(detail))
    , m_isDetailPrivate(isPrivate)
{}

VarnelError VarnelError::missingKey(const QString& displayName)
{
    return {Kind::MissingKey,
            displayName + QStringLiteral(" API key is not in the Keychain or the environment.")};
}

VarnelError VarnelError::api(const QString& message, const QString& detail, bool isPrivate)
{
    return {Kind::Api, message, detail, isPrivate};
}

VarnelError VarnelError::passthroughDisabled()
{
    return {Kind::PassthroughDisabled,
            QStringLiteral("Remote passthrough is off. The next message stays on Ollama.")};
}

} // namespace varnel
