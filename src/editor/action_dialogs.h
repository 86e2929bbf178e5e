// The five dialogs that edit the parameters of an action, one a type. Each takes its record, and changes it only when
// the user confirms; what was typed into a field with a history then enters the history. True on OK. On the
// toolkit's thread only.
#pragma once

#include "config/action_records.h"

bool set_action_console(MGConsole& console);
bool set_action_send(MGSend& send);
bool set_action_copy(MGCopy& copy);
bool set_action_runprog(MGRunprog& runprog);
bool set_action_exist(MGExist& exist);
