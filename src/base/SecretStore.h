#pragma once

#include "base/Error.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>

namespace varnel {

/// Whether the system may ask the user to unlock the store.
enum class Unlocking {
    Never,     ///< nothing is shown; a locked store reads as an empty one
    MayPrompt, ///< the call waits for the user, up to two minutes
};

/// What SecretStoreError::status() says where the system's store is a Secret Service. These numbers are shown
/// to users and stay as they are. On macOS the status is the OSStatus of the Security framework instead.
enum class SecretServiceStatus : int {
    NoLibrary = 1, ///< libsecret is not installed
    NoService = 2, ///< no session bus, no Secret Service on it, or no answer in time
    Locked = 3,    ///< the keyring is locked, and the user did not unlock it
    Refused = 4,   ///< the service answered with another error
};

/// The system's store did not take a secret. The message carries the number and never the secret.
class SecretStoreError : public Error
{
public:
    explicit SecretStoreError(int status);
    explicit SecretStoreError(SecretServiceStatus status);

    int status() const noexcept { return m_status; }

private:
    int m_status;
};

/// The per-user store of the system for passwords and keys, for the items of this program ("app.varnel").
/// Values are kept exactly as they are given; trimming and checking them is the caller's business.
///
/// All calls block until the system has answered: within about five seconds where nothing may be asked, up to
/// two minutes where the user may be. They may be made from any thread.
class SecretStore
{
public:
    SecretStore() = default;
    SecretStore(const SecretStore&) = delete;
    SecretStore& operator=(const SecretStore&) = delete;
    SecretStore(SecretStore&&) = delete;
    SecretStore& operator=(SecretStore&&) = delete;
    virtual ~SecretStore() = default;

    /// The service that every item belongs to; other programs find an item by it and its account.
    static constexpr const char* service = "app.varnel";

    /// The secret saved for an account, which may be empty. Nothing if there is none, if it cannot be reached
    /// or unlocked, or if it is not valid UTF-8.
    std::optional<QString> read(const QString& account, Unlocking unlocking);
    /// Replaces the secret of an account; may ask the user to unlock the store. If the new one is not taken,
    /// throws SecretStoreError after trying to put the old one back.
    void save(const QString& account, const QString& value);
    /// Removes the secret of an account; may ask the user to unlock the store. False if it may still be
    /// there, because the store could not be reached or unlocked; a missing item is a success.
    bool remove(const QString& account);

protected:
    /// The bytes of the item, nothing if there is none. May throw SecretStoreError when nothing can be known.
    virtual std::optional<QByteArray> find(const QString& account, Unlocking unlocking) = 0;
    /// Adds an item; there is none of that account. Throws SecretStoreError.
    virtual void add(const QString& account, const QByteArray& value) = 0;
    /// Deletes every item of the account; none is a success. Throws SecretStoreError.
    virtual void erase(const QString& account) = 0;

private:
    bool tryAdd(const QString& account, const QByteArray& value);
};

/// The store of this system. Cheap to make: nothing is loaded or connected before the first call.
std::unique_ptr<SecretStore> systemSecretStore();

} // namespace varnel
