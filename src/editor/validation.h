// The predicates of which the OK handlers of all dialogs are built. Each judges one input and changes nothing: at a
// fault it tells the user in a box over the dialog, gives the keyboard focus to the entry at fault and returns 1, and
// the handler stops there with the dialog still open; it returns 0 when the value passes. None of them throws. On
// the toolkit's thread only.
#pragma once

#include <string>

class MGDialog;

// The entry is blank.
int entry_is_empty(MGDialog* dialog, const char* entry);
// The entry is filled, but with blanks only.
int entry_is_spam(MGDialog* dialog, const char* entry);
// The entry holds other characters than those of an identifier.
int entry_not_id(MGDialog* dialog, const char* entry);

// The entry of the profile editor is neither blank nor an IP address (with a prefix length: ..._net). The box names
// the notebook tab and the section where the entry stands, and the tab comes to the front.
int is_error_config_ip(MGDialog* dialog, const char* tab, const char* section, const char* entry);
int is_error_config_ip_net(MGDialog* dialog, const char* tab, const char* section, const char* entry);

// The text is no IP address, no network, no address with a prefix length; the focus goes to the entry.
int is_error_ip(MGDialog* dialog, const char* entry, const char* text);
int is_error_net(MGDialog* dialog, const char* entry, const char* text);
int is_error_ip_net(MGDialog* dialog, const char* entry, const char* text);

// What was chosen, and not typed, can't be stored as it is: it is no UTF-8, or holds a zero byte or another character
// that the file can't hold. The box says which of these; `name` is what was chosen, `advice` what the user can do.
int is_error_stored(MGDialog* dialog, const char* name, const std::string& text, const char* advice);

// Not exactly one of the two entries is filled, or the IP entry is and holds no IP address.
int error_test_ip_or_domen(MGDialog* dialog, const char* ip_entry, const char* domen_entry);
