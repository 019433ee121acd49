#pragma once

#include "base/Worker.h"
#include "providers/credentials/KeyLookup.h"

namespace varnel {

/// A provider's key as the settings describe it.
struct CredentialStatus
{
    RemoteProvider provider = RemoteProvider::Gemini;
    bool available = false;
    QString line;

    bool operator==(const CredentialStatus&) const = default;
};

/// The look-up and the saving of keys for the event loop: a locked keyring may ask the user for minutes, so
/// the store is talked to on a thread of its own, one request after the other.
class CredentialWorker
{
public:
    /// The store is shared, because a keyring that hangs is left behind rather than waited for.
    CredentialWorker(std::shared_ptr<SecretStore> secrets, Environment environment);

    /// The key of a provider; may ask the user to unlock the store. Throws Cancelled.
    Task<std::optional<ResolvedKey>> providerKey(RemoteProvider provider, std::stop_token stop = {});
    /// The first key found under the names; may ask the user to unlock the store. Throws Cancelled.
    Task<std::optional<ResolvedKey>> key(KeyNames names, std::stop_token stop = {});
    /// What is known of every provider's key, in the fixed order. Throws Cancelled.
    Task<std::vector<CredentialStatus>> statuses(Unlocking unlocking, std::stop_token stop = {});
    /// As saveKey(). Throws VarnelError or Cancelled.
    Task<void> save(QString account, QString key, std::stop_token stop = {});
    /// Removes a saved key; false if it may still be there. Throws Cancelled.
    Task<bool> remove(QString account, std::stop_token stop = {});

private:
    std::shared_ptr<SecretStore> m_secrets;
    Environment m_environment;
    Worker m_worker;
};

} // namespace varnel
