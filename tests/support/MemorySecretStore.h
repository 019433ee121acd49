#pragma once

#include "base/SecretStore.h"

#include <QMap>
#include <QSemaphore>

namespace varnel::test {

/// A secret store that is nothing but a table, and fails when told to.
class MemorySecretStore final : public SecretStore
{
public:
    QMap<QString, QByteArray> items;
    /// As long as it is locked, nothing can be read or saved.
    bool locked = false;
    /// Where there is one, every look-up waits until it is let through.
    QSemaphore* gate = nullptr;
    /// How many of the next additions fail, and with which status.
    int failingAdditions = 0;
    int failureStatus = -34018;

protected:
    std::optional<QByteArray> find(const QString& account, Unlocking unlocking) override
    {
        if (gate)
            gate->acquire();
        if (locked && unlocking == Unlocking::MayPrompt)
            throw SecretStoreError(SecretServiceStatus::Locked);
        const auto item = items.constFind(account);
        return locked || item == items.constEnd() ? std::nullopt : std::optional(*item);
    }
    void add(const QString& account, const QByteArray& value) override
    {
        if (failingAdditions > 0) {
            --failingAdditions;
            throw SecretStoreError(failureStatus);
        }
        // A copy of its own, since the store overwrites the bytes it was given.
        items[account] = QByteArray(value.constData(), value.size());
    }
    void erase(const QString& account) override { items.remove(account); }
};

} // namespace varnel::test
