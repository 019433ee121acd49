#pragma once

#include <QString>

#include <variant>

namespace varnel {

/// A key that was saved in the system's store.
struct KeychainOrigin
{
    /// The account of the item.
    QString account;

    bool operator==(const KeychainOrigin&) const = default;
};

/// A key of the process's environment.
struct EnvironmentOrigin
{
    QString variable;

    bool operator==(const EnvironmentOrigin&) const = default;
};

/// Where a key that is in use was found.
using CredentialOrigin = std::variant<KeychainOrigin, EnvironmentOrigin>;

} // namespace varnel
