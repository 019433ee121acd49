#pragma once

#include "base/Environment.h"
#include "base/SecretStore.h"
#include "providers/RemoteProvider.h"
#include "providers/credentials/CredentialOrigin.h"

#include <QStringList>

#include <optional>
#include <vector>

namespace varnel {

/// A key that was found, without white space around it; never empty.
struct ResolvedKey
{
    QString key;
    CredentialOrigin origin;

    bool operator==(const ResolvedKey&) const = default;
};

/// Under which names a key is looked for, in the order of the look-up.
struct KeyNames
{
    QStringList accounts;  ///< in the system's store
    QStringList variables; ///< in the environment

    bool operator==(const KeyNames&) const = default;
};

// Everything here that is given a SecretStore blocks until the system has answered (see there) and may be
// called from any thread.

/// The first key that is not blank: a saved one, under any of the names, before any variable.
std::optional<ResolvedKey> resolveKey(const KeyNames& names, SecretStore& secrets,
                                      const Environment& environment, Unlocking unlocking);
/// The same for the names of a provider.
std::optional<ResolvedKey> resolveProviderKey(RemoteProvider provider, SecretStore& secrets,
                                              const Environment& environment, Unlocking unlocking);

/// The providers that have a key, in the fixed order.
std::vector<RemoteProvider> availableProviders(SecretStore& secrets, const Environment& environment,
                                               Unlocking unlocking);

/// The account under which a key typed by the user is saved.
const QString& savingAccount(RemoteProvider provider);

/// Saves a key without the white space around it, in place of what the account held. Throws VarnelError: when
/// the key is blank or could not travel in a header (see isSendableKey()), before anything is changed, or
/// when the store does not take it.
void saveKey(SecretStore& secrets, const QString& account, const QString& key);

/// Whether a key can be a header of a request: no carriage return, line feed or NUL, which would end the
/// header and begin another.
bool isSendableKey(QStringView key);

/// The line that describes a provider's key in the settings, for example "Environment variable
/// OPENAI_API_KEY".
/// @param key what resolveProviderKey() found.
QString credentialLine(RemoteProvider provider, const std::optional<ResolvedKey>& key,
                       const Environment& environment);

} // namespace varnel
