#include "providers/credentials/CredentialWorker.h"

namespace varnel {

namespace {

Task<void> saved(Task<bool> work)
{
    co_await std::move(work);
}

} // namespace

CredentialWorker::CredentialWorker(std::shared_ptr<SecretStore> secrets, Environment environment)
    : m_secrets(std::move(secrets))
    , m_environment(std::move(environment))
{}

Task<std::optional<ResolvedKey>> CredentialWorker::providerKey(RemoteProvider provider, std::stop_token stop)
{
    const QStringList& names = credentialNames(provider);
    return key({.accounts = names, .variables = names}, std::move(stop));
}

Task<std::optional<ResolvedKey>> CredentialWorker::key(KeyNames names, std::stop_token stop)
{
    return m_worker.run(
        [secrets = m_secrets, environment = m_environment, names = std::move(names)](const std::stop_token&) {
            return resolveKey(names, *secrets, environment, Unlocking::MayPrompt);
        },
        std::move(stop));
}

Task<std::vector<CredentialStatus>> CredentialWorker::statuses(Unlocking unlocking, std::stop_token stop)
{
    return m_worker.run(
        [secrets = m_secrets, environment = m_environment, unlocking](const std::stop_token&) {
            std::vector<CredentialStatus> statuses;
            for (const RemoteProvider provider : allRemoteProviders()) {
                const auto key = resolveProviderKey(provider, *secrets, environment, unlocking);
                statuses.push_back({.provider = provider,
                                    .available = key.has_value(),
                                    .line = credentialLine(provider, key, environment)});
            }
            return statuses;
        },
        std::move(stop));
}

Task<void> CredentialWorker::save(QString account, QString key, std::stop_token stop)
{
    return saved(m_worker.run(
        [secrets = m_secrets, account = std::move(account), key = std::move(key)](const std::stop_token&) {
            saveKey(*secrets, account, key);
            return true;
        },
        std::move(stop)));
}

Task<bool> CredentialWorker::remove(QString account, std::stop_token stop)
{
    return m_worker.run([secrets = m_secrets, account = std::move(account)](
                            const std::stop_token&) { return secrets->remove(account); },
                        std::move(stop));
}

} // namespace varnel
