// Handlers of windows whose work is still to come: exported, so that the definition loads cleanly, and doing nothing.
// The file shrinks as they move to the sources of their windows.
#include <gtk/gtk.h>

#define PENDING(handler)                                                                                               \
    void handler(GtkWidget*, gpointer) {}

extern "C" {
PENDING(address_ok)
PENDING(admit_print)
PENDING(adrs_add_address)
PENDING(adrs_delete_address)
PENDING(adrs_print)
PENDING(adrs_rename_address)
PENDING(adrs_select_all)
PENDING(adrs_status_toggle)
PENDING(adrs_unselect_all)
PENDING(crypto_ok)
PENDING(edit_adrs_list_client)
PENDING(edit_adrs_list_server)
PENDING(edit_virtual_list_client)
PENDING(edit_virtual_list_server)
PENDING(fill_crypt_context)
PENDING(result_view)
}
