#include "base/Libsecret_linux.h"

#include <dlfcn.h>

#include <optional>

namespace varnel {

namespace {

/// Looks functions up in a library and the libraries that it needs, and remembers whether all were there.
class Lookup
{
public:
    explicit Lookup(const char* file)
        : m_library(dlopen(file, RTLD_LAZY | RTLD_LOCAL))
    {}

    template <typename Function>
    void operator()(Function*& function, const char* name)
    {
        function = m_library ? reinterpret_cast<Function*>(dlsym(m_library, name)) : nullptr;
        m_complete = m_complete && function;
    }
    bool complete() const noexcept { return m_complete; }

private:
    void* m_library;
    bool m_complete = true;
};

std::optional<Libsecret> load()
{
    Lookup look("libsecret-1.so.0");
    Libsecret lib{};
    look(lib.objectUnref, "g_object_unref");
    look(lib.listFreeFull, "g_list_free_full");
    look(lib.clearError, "g_clear_error");
    look(lib.hashTableNew, "g_hash_table_new");
    look(lib.hashTableInsert, "g_hash_table_insert");
    look(lib.hashTableUnref, "g_hash_table_unref");
    look(lib.strHash, "g_str_hash");
    look(lib.strEqual, "g_str_equal");
    look(lib.cancellableNew, "g_cancellable_new");
    look(lib.cancel, "g_cancellable_cancel");
    look(lib.contextNew, "g_main_context_new");
    look(lib.contextUnref, "g_main_context_unref");
    look(lib.pushContext, "g_main_context_push_thread_default");
    look(lib.popContext, "g_main_context_pop_thread_default");
    look(lib.iterateContext, "g_main_context_iteration");
    look(lib.ioErrorQuark, "g_io_error_quark");
    look(lib.dbusErrorQuark, "g_dbus_error_quark");
    look(lib.busGet, "g_bus_get_sync");
    look(lib.setExitOnClose, "g_dbus_connection_set_exit_on_close");
    look(lib.secretErrorQuark, "secret_error_get_quark");
    look(lib.serviceType, "secret_service_get_type");
    look(lib.serviceOpen, "secret_service_open_sync");
    look(lib.search, "secret_service_search_sync");
    look(lib.unlock, "secret_service_unlock_sync");
    look(lib.store, "secret_service_store_sync");
    look(lib.itemLocked, "secret_item_get_locked");
    look(lib.itemLoadSecret, "secret_item_load_secret_sync");
    look(lib.itemSecret, "secret_item_get_secret");
    look(lib.itemDelete, "secret_item_delete_sync");
    look(lib.valueNew, "secret_value_new");
    look(lib.valueGet, "secret_value_get");
    look(lib.valueUnref, "secret_value_unref");
    return look.complete() ? std::optional(lib) : std::nullopt;
}

} // namespace

const Libsecret* Libsecret::get()
{
    static const std::optional<Libsecret> library = load();
    return library ? &*library : nullptr;
}

} // namespace varnel
