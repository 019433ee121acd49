#include "providers/credentials/KeyLookup.h"

#include "providers/VarnelError.h"

#include <algorithm>

namespace varnel {

namespace {

QString variableValue(const Environment& environment, const QString& name)
{
    return QString::fromUtf8(environment(name.toUtf8().constData()).value_or(QByteArray())).trimmed();
}

/// The variables that hold something, in the given order.
QStringList setVariables(const QStringList& names, const Environment& environment)
{
    QStringList set;
    std::copy_if(names.begin(), names.end(), std::back_inserter(set),
                 [&environment](const QString& name) { return !variableValue(environment, name).isEmpty(); });
    return set;
}

} // namespace

std::optional<ResolvedKey> resolveKey(const KeyNames& names, SecretStore& secrets,
                                      const Environment& environment, Unlocking unlocking)
{
    for (const QString& account : names.accounts) {
        const QString key = secrets.read(account, unlocking).value_or(QString()).trimmed();
        if (!key.isEmpty())
            return ResolvedKey{.key = key, .origin = KeychainOrigin{account}};
    }
    for (const QString& variable : names.variables) {
        const QString key = variableValue(environment, variable);
        if (!key.isEmpty())
            return ResolvedKey{.key = key, .origin = EnvironmentOrigin{variable}};
    }
    return std::nullopt;
}

std::optional<ResolvedKey> resolveProviderKey(RemoteProvider provider, SecretStore& secrets,
                                              const Environment& environment, Unlocking unlocking)
{
    const QStringList& names = credentialNames(provider);
    return resolveKey({.accounts = names, .variables = names}, secrets, environment, unlocking);
}

std::vector<RemoteProvider> availableProviders(SecretStore& secrets, const Environment& environment,
                                               Unlocking unlocking)
{
    std::vector<RemoteProvider> available;
    for (const RemoteProvider provider : allRemoteProviders()) {
        if (resolveProviderKey(provider, secrets, environment, unlocking))
            available.push_back(provider);
    }
    return available;
}

const QString& savingAccount(RemoteProvider provider)
{
    return credentialNames(provider).first();
}

void saveKey(SecretStore& secrets, const QString& account, const QString& key)
{
    const QString trimmed = key.trimmed();
    if (trimmed.isEmpty())
        throw VarnelError::api(QStringLiteral("There is no key to save; the text is empty."));
    if (!isSendableKey(trimmed))
        throw VarnelError::api(
            QStringLiteral("The key holds a line break or a NUL character and was not saved."));
    try {
        secrets.save(account, trimmed);
    } catch (const SecretStoreError& error) {
        throw VarnelError::api(error.message());
    }
}

bool isSendableKey(QStringView key)
{
    return std::none_of(key.begin(), key.end(), [](QChar character) {
        return character == u'\r' || character == u'\n' || character == QChar(u'\0');
    });
}

QString credentialLine(RemoteProvider provider, const std::optional<ResolvedKey>& key,
                       const Environment& environment)
{
    if (!key)
        return QStringLiteral("Not set");
    if (const auto* const origin = std::get_if<EnvironmentOrigin>(&key->origin))
        return QStringLiteral("Environment variable ") + origin->variable;
    QString line = QStringLiteral(u"Keychain · ") + std::get<KeychainOrigin>(key->origin).account;
    const QStringList variables = setVariables(credentialNames(provider), environment);
    if (!variables.isEmpty())
        line += QStringLiteral(". Also set in ") + variables.join(QStringLiteral(", ")) + u'.';
    return line;
}

} // namespace varnel
