// The dialogs of one record of a list: a user with an onward connection, a user by name, a queue, a client. The list
// dialog opens them; while one is open, user_data points to the index of the row under edit (null for a new record)
// and user_data2 to the list. The record changes only after the dialog has closed with OK. On the toolkit's thread
// only.
#pragma once

#include "config/list_records.h"
#include "dialog/mg_dialog.h"

#include <string>
#include <vector>

// Show a record in a newly opened dialog; a new record is shown with its defaults.
void load_record(MGDialog* dialog, const MGAdmit& user, unsigned mode);
void load_record(MGDialog* dialog, const MGQueue& queue, unsigned mode);
void load_record(MGDialog* dialog, const MGAllow& allow, unsigned mode);

// Read the dialog into a record and compute its key; histories take what they are given here. The lists of a client
// stay as they are.
void assign_admit_subject(MGDialog* dialog, MGAdmit& user, unsigned mode);
void assign_admit_queue(MGDialog* dialog, MGQueue& queue, unsigned mode);
void assign_admit_allow(MGDialog* dialog, MGAllow& allow, unsigned mode);

// Switches the widgets of the onward connection of SubjectDialog.
void set_sensitive_subject(int state);

// Lets the user choose a certificate file and writes its owner's name into the entry of SubjectDialog, byte for byte.
// A name that can't be stored so is refused in a box, and the entry stays.
void get_subject_name(const char* entry);

// Whether another row of the list, not the one that `row` points to, has this id or login, byte for byte.
bool queue_already_exist(const std::vector<MGQueue>& list, const char* id, const int* row);
bool allow_already_exist(const std::vector<MGAllow>& list, const char* login, const int* row);
