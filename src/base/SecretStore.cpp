#include "base/SecretStore.h"

#include <QStringDecoder>

#include <algorithm>

namespace varnel {

namespace {

/// The bytes of a secret, overwritten when they are no longer needed.
class SecretBytes
{
public:
    explicit SecretBytes(QByteArray bytes)
        : m_bytes(std::move(bytes))
    {}
    SecretBytes(const SecretBytes&) = delete;
    SecretBytes& operator=(const SecretBytes&) = delete;
    SecretBytes(SecretBytes&&) = delete;
    SecretBytes& operator=(SecretBytes&&) = delete;
    ~SecretBytes()
    {
        // Through a volatile pointer, since the compiler drops plain writes to memory that is about to be
        // freed.
        volatile char* const data = m_bytes.data();
        std::fill(data, data + m_bytes.size(), '\0');
    }

    const QByteArray& bytes() const noexcept { return m_bytes; }

private:
    QByteArray m_bytes;
};

} // namespace

SecretStoreError::SecretStoreError(int status)
    : Error(QStringLiteral("Keychain save failed (%1).").arg(status))
    , m_status(status)
{}

SecretStoreError::SecretStoreError(SecretServiceStatus status)
    : SecretStoreError(static_cast<int>(status))
{}

std::optional<QString> SecretStore::read(const QString& account, Unlocking unlocking)
{
    std::optional<QByteArray> found;
    try {
        found = find(account, unlocking);
    } catch (const SecretStoreError&) {
        return std::nullopt;
    }
    if (!found)
        return std::nullopt;
    const SecretBytes secret(*std::exchange(found, std::nullopt));
    // A byte order mark is part of the secret like any other character.
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    QString value = decoder(secret.bytes());
    if (decoder.hasError())
        return std::nullopt;
    return value.isNull() ? QStringLiteral("") : value;
}

void SecretStore::save(const QString& account, const QString& value)
{
    // The old value is read first: a store that the user leaves locked ends it here, with everything as it
    // was.
    std::optional<QByteArray> found = find(account, Unlocking::MayPrompt);
    const bool hadOld = found.has_value();
    const SecretBytes old(hadOld ? *std::exchange(found, std::nullopt) : QByteArray());
    const SecretBytes secret(value.toUtf8());

    remove(account);
    try {
        add(account, secret.bytes());
    } catch (const SecretStoreError&) {
        // If that fails as well, the first failure is still the one to tell about.
        if (hadOld)
            tryAdd(account, old.bytes());
        throw;
    }
}

bool SecretStore::tryAdd(const QString& account, const QByteArray& value)
{
    try {
        add(account, value);
        return true;
    } catch (const SecretStoreError&) {
        return false;
    }
}

bool SecretStore::remove(const QString& account)
{
    try {
        erase(account);
        return true;
    } catch (const SecretStoreError&) {
        return false;
    }
}

} // namespace varnel
