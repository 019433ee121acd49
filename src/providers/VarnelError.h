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
    /// @param detail what the service itself said, where the message does not.
    /// @param isPrivate whether the detail is a model's words about the conversation.
    static VarnelError api(const QString& message, const QString& detail = {}, bool isPrivate = false);
    static VarnelError passthroughDisabled();

    Kind kind() const noexcept { return m_kind; }
    /// The words of the service for whoever wants to know more than message() says; foreign text, often
    /// empty.
    const QString& detail() const noexcept { return m_detail; }
    /// Whether the detail is nothing for a log.
    bool isDetailPrivate() const noexcept { return m_isDetailPrivate; }

private:
    VarnelError(Kind kind, QString message, QString detail = {}, bool isPrivate = false);

    Kind m_kind;
    QString m_detail;
    bool m_isDetailPrivate;
};

} // namespace varnel
