#pragma once

#include "base/Error.h"

namespace varnel {

/// A turn could not be sent to a provider, or the provider refused it.
class VarnelError : public Error
{
public:
    enum class Kind {
        MissingKey,          ///< the provider has no key, saved or in the environment
        Api,                 ///< something failed with a message of its own
        PassthroughDisabled, ///< the user does not allow providers at all
    };

    /// @param displayName the provider's name as it is shown.
    static VarnelError missingKey(const QString& displayName);
    /// @param message the complete text for the user.
    static VarnelError api(const QString& message);
    static VarnelError passthroughDisabled();

    Kind kind() const noexcept { return m_kind; }

private:
    VarnelError(Kind kind, QString message);

    Kind m_kind;
};

} // namespace varnel
