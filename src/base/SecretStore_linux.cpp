#include "base/SecretStore.h"

#include "base/Libsecret_linux.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace varnel {

namespace {

using namespace std::chrono_literals;

/// Memory and objects of the libraries, released as each demands.
template <typename T>
using Owned = std::unique_ptr<T, void (*)(T*)>;

template <typename T>
Owned<T> ownedObject(T* object)
{
    return {object, [](T* owned) { Libsecret::get()->objectUnref(owned); }};
}

using Items = Owned<GList>;

Items ownedItems(GList* items)
{
    return {items, [](GList* owned) {
                const Libsecret& lib = *Libsecret::get();
                lib.listFreeFull(owned, lib.objectUnref);
            }};
}

/// What a call left behind when it failed.
class Failure
{
public:
    explicit Failure(const Libsecret& lib)
        : m_lib(lib)
    {}
    Failure(const Failure&) = delete;
    Failure& operator=(const Failure&) = delete;
    Failure(Failure&&) = delete;
    Failure& operator=(Failure&&) = delete;
    ~Failure() { m_lib.clearError(&m_error); }

    GError** out() noexcept { return &m_error; }
    bool happened() const noexcept { return m_error; }

    SecretServiceStatus status() const
    {
        // A prompt that was dismissed fails without an error.
        if (!m_error ||
            (m_error->domain == m_lib.secretErrorQuark() && m_error->code == SECRET_ERROR_IS_LOCKED))
            return SecretServiceStatus::Locked;
        if (m_error->domain == m_lib.ioErrorQuark())
            return SecretServiceStatus::NoService;
        if (m_error->domain != m_lib.dbusErrorQuark())
            return SecretServiceStatus::Refused;
        switch (m_error->code) {
        case G_DBUS_ERROR_SERVICE_UNKNOWN:
        case G_DBUS_ERROR_NAME_HAS_NO_OWNER:
        case G_DBUS_ERROR_NO_REPLY:
        case G_DBUS_ERROR_TIMEOUT:
        case G_DBUS_ERROR_TIMED_OUT:
        case G_DBUS_ERROR_DISCONNECTED:
        case G_DBUS_ERROR_NO_SERVER:
        case G_DBUS_ERROR_SPAWN_SERVICE_NOT_FOUND:
            return SecretServiceStatus::NoService;
        default:
            return SecretServiceStatus::Refused;
        }
    }
    [[noreturn]] void raise() const { throw SecretStoreError(status()); }

private:
    const Libsecret& m_lib;
    GError* m_error = nullptr;
};

/// Cancels blocking calls that take longer than the limit: a bus or a service that hangs never answers.
class TimeLimit
{
public:
    TimeLimit(const Libsecret& lib, std::chrono::milliseconds limit)
        : m_cancellable(ownedObject(lib.cancellableNew()))
        , m_watch([&lib, limit, cancellable = m_cancellable.get()](const std::stop_token& done) {
            std::mutex mutex;
            std::condition_variable_any never;
            std::unique_lock lock(mutex);
            never.wait_for(lock, done, limit, [] { return false; });
            if (!done.stop_requested())
                lib.cancel(cancellable);
        })
    {}

    GCancellable* cancellable() const noexcept { return m_cancellable.get(); }

private:
    Owned<GCancellable> m_cancellable;
    std::jthread m_watch; // joined before the object it cancels goes
};

/// Where the library leaves its last bits of work while this lives: on a thread of a pool they would wait for
/// an event loop that never turns, and be lost with the thread.
class OwnContext
{
public:
    explicit OwnContext(const Libsecret& lib)
        : m_lib(lib)
        , m_context(lib.contextNew())
    {
        m_lib.pushContext(m_context);
    }
    OwnContext(const OwnContext&) = delete;
    OwnContext& operator=(const OwnContext&) = delete;
    OwnContext(OwnContext&&) = delete;
    OwnContext& operator=(OwnContext&&) = delete;
    ~OwnContext()
    {
        while (m_lib.iterateContext(m_context, FALSE)) {
        }
        m_lib.popContext(m_context);
        m_lib.contextUnref(m_context);
    }

private:
    const Libsecret& m_lib;
    GMainContext* m_context;
};

/// One conversation with the Secret Service. Each operation has its own, so that a service that was restarted
/// in between is no special case, and an idle program holds no connection.
class Session
{
public:
    explicit Session(Unlocking unlocking)
        : m_lib(Libsecret::get() ? *Libsecret::get() : throw SecretStoreError(SecretServiceStatus::NoLibrary))
        , m_context(m_lib)
        , m_limit(m_lib, unlocking == Unlocking::Never ? 5s : 120s)
        , m_bus(nullptr, nullptr)
        , m_service(nullptr, nullptr)
    {
        Failure failure(m_lib);
        m_bus = ownedObject(m_lib.busGet(G_BUS_TYPE_SESSION, m_limit.cancellable(), failure.out()));
        if (!m_bus)
            throw SecretStoreError(SecretServiceStatus::NoService);
        // Otherwise the library ends this program when the session bus goes away.
        m_lib.setExitOnClose(m_bus.get(), FALSE);
        m_service = ownedObject(m_lib.serviceOpen(m_lib.serviceType(), nullptr, SECRET_SERVICE_NONE,
                                                  m_limit.cancellable(), failure.out()));
        if (!m_service)
            throw SecretStoreError(SecretServiceStatus::NoService);
    }

    std::optional<QByteArray> find(const QString& account, Unlocking unlocking)
    {
        // Unlocked items come first, so one is enough.
        const Items items = search(account, SECRET_SEARCH_NONE);
        if (!items)
            return std::nullopt;
        auto* const item = static_cast<SecretItem*>(items->data);
        if (m_lib.itemLocked(item)) {
            if (unlocking == Unlocking::Never)
                return std::nullopt;
            unlock(items.get());
        }
        Failure failure(m_lib);
        if (!m_lib.itemLoadSecret(item, m_limit.cancellable(), failure.out()))
            failure.raise();
        const auto value = secretValue(m_lib.itemSecret(item));
        if (!value)
            return std::nullopt;
        gsize size = 0;
        const gchar* const bytes = m_lib.valueGet(value.get(), &size);
        return QByteArray(bytes, static_cast<qsizetype>(size));
    }

    void add(const QString& account, const QByteArray& bytes)
    {
        const Attributes attributes(m_lib, account);
        const QByteArray label = (QStringLiteral("Varnel: ") + account).toUtf8();
        const auto value = secretValue(m_lib.valueNew(bytes.constData(), bytes.size(), "text/plain"));
        Failure failure(m_lib);
        if (!m_lib.store(m_service.get(), nullptr, attributes.table(), SECRET_COLLECTION_DEFAULT,
                         label.constData(), value.get(), m_limit.cancellable(), failure.out()))
            failure.raise();
    }

    void erase(const QString& account)
    {
        const Items items = search(account, SECRET_SEARCH_ALL);
        for (const GList* at = items.get(); at; at = at->next) {
            auto* const item = static_cast<SecretItem*>(at->data);
            if (m_lib.itemLocked(item)) {
                GList alone{item, nullptr, nullptr};
                unlock(&alone);
            }
            Failure failure(m_lib);
            if (!m_lib.itemDelete(item, m_limit.cancellable(), failure.out()))
                failure.raise();
        }
    }

private:
    /// What an item is found by: exactly the service and the account, without the name of a schema, so that
    /// the desktop's own tools find and replace the same items.
    class Attributes
    {
    public:
        Attributes(const Libsecret& lib, const QString& account)
            : m_account(account.toUtf8())
            , m_table(lib.hashTableNew(lib.strHash, lib.strEqual), lib.hashTableUnref)
        {
            lib.hashTableInsert(m_table.get(), const_cast<char*>("service"),
                                const_cast<char*>(SecretStore::service));
            lib.hashTableInsert(m_table.get(), const_cast<char*>("account"), m_account.data());
        }
        GHashTable* table() const noexcept { return m_table.get(); }

    private:
        QByteArray m_account;
        Owned<GHashTable> m_table;
    };

    Owned<SecretValue> secretValue(SecretValue* value) const
    {
        // Overwrites the secret, which the library keeps in memory that is never swapped out.
        return {value, [](SecretValue* owned) { Libsecret::get()->valueUnref(owned); }};
    }

    /// Never prompts; locked items are found as well.
    Items search(const QString& account, SecretSearchFlags flags)
    {
        const Attributes attributes(m_lib, account);
        Failure failure(m_lib);
        Items items = ownedItems(m_lib.search(m_service.get(), nullptr, attributes.table(), flags,
                                              m_limit.cancellable(), failure.out()));
        if (failure.happened())
            failure.raise();
        return items;
    }

    void unlock(GList* items)
    {
        Failure failure(m_lib);
        if (m_lib.unlock(m_service.get(), items, m_limit.cancellable(), nullptr, failure.out()) < 1)
            failure.raise();
    }

    const Libsecret& m_lib;
    OwnContext m_context; // emptied after everything below is released
    TimeLimit m_limit;
    Owned<GDBusConnection> m_bus;
    Owned<SecretService> m_service;
};

/// The store of a Linux desktop: GNOME's or KDE's keyring, KeePassXC, whatever offers the Secret Service.
class SecretServiceStore final : public SecretStore
{
protected:
    std::optional<QByteArray> find(const QString& account, Unlocking unlocking) override
    {
        return Session(unlocking).find(account, unlocking);
    }
    void add(const QString& account, const QByteArray& value) override
    {
        Session(Unlocking::MayPrompt).add(account, value);
    }
    void erase(const QString& account) override { Session(Unlocking::MayPrompt).erase(account); }
};

} // namespace

std::unique_ptr<SecretStore> systemSecretStore()
{
    return std::make_unique<SecretServiceStore>();
}

} // namespace varnel
