#pragma once

#include <libsecret/secret.h>

namespace varnel {

/// The functions that are used of libsecret and of the libraries under it.
///
/// They are loaded at the first use rather than linked: most runs of the program need no secret and should
/// not pay for the libraries at every start, and a system without them only loses its saved secrets.
struct Libsecret
{
    /// The loaded functions; null if the library or one of them is missing. Stays loaded until the program
    /// ends.
    static const Libsecret* get();

    decltype(&g_object_unref) objectUnref;
    decltype(&g_list_free_full) listFreeFull;
    decltype(&g_clear_error) clearError;
    decltype(&g_hash_table_new) hashTableNew;
    decltype(&g_hash_table_insert) hashTableInsert;
    decltype(&g_hash_table_unref) hashTableUnref;
    decltype(&g_str_hash) strHash;
    decltype(&g_str_equal) strEqual;
    decltype(&g_cancellable_new) cancellableNew;
    decltype(&g_cancellable_cancel) cancel;
    decltype(&g_main_context_new) contextNew;
    decltype(&g_main_context_unref) contextUnref;
    decltype(&g_main_context_push_thread_default) pushContext;
    decltype(&g_main_context_pop_thread_default) popContext;
    decltype(&g_main_context_iteration) iterateContext;
    decltype(&g_io_error_quark) ioErrorQuark;
    decltype(&g_dbus_error_quark) dbusErrorQuark;
    decltype(&g_bus_get_sync) busGet;
    decltype(&g_dbus_connection_set_exit_on_close) setExitOnClose;

    decltype(&secret_error_get_quark) secretErrorQuark;
    decltype(&secret_service_get_type) serviceType;
    decltype(&secret_service_open_sync) serviceOpen;
    decltype(&secret_service_search_sync) search;
    decltype(&secret_service_unlock_sync) unlock;
    decltype(&secret_service_store_sync) store;
    decltype(&secret_item_get_locked) itemLocked;
    decltype(&secret_item_load_secret_sync) itemLoadSecret;
    decltype(&secret_item_get_secret) itemSecret;
    decltype(&secret_item_delete_sync) itemDelete;
    decltype(&secret_value_new) valueNew;
    decltype(&secret_value_get) valueGet;
    decltype(&secret_value_unref) valueUnref;
};

} // namespace varnel
