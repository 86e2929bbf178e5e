// The list dialog of users, queues and clients, dialog_admit, in its six modes. It edits a copy of its list and hands
// it to the level above on OK: to the profile editor's working copy, or to a client in the list dialog below it.
// Every handler finds its dialog at the back of stackAdmitDialog. On the toolkit's thread only.
#pragma once

#include "config/list_records.h"
#include "dialog/mg_dialog.h"

#include <string>
#include <vector>

// Opens a list and runs it to its end. `index` and `parent` name the client whose list it is in the modes of a
// client's own lists, and are 0 and null otherwise. Failures are told over ConfigDialog.
void edit_admit_list_ext(unsigned mode, unsigned index, std::vector<MGAllow>* parent);

// The next row behind `position` (-1: from the first on) whose key matches the mask, without regard to case; it goes
// into `position`, which stays where there is none. The key is the subject, the id, the name. Throw MGErr.
bool find_num_in_admit(const std::vector<MGAdmit>& list, const std::string& mask, int& position);
bool find_num_in_queue(const std::vector<MGQueue>& list, const std::string& mask, int& position);
bool find_num_in_allow(const std::vector<MGAllow>& list, const std::string& mask, int& position);

// Write a record into the current row; reset_mark takes its [v] mark off, else the mark stays.
void fill_admit_user(MGDialog* dialog, GtkListStore* store, bool reset_mark, const MGAdmit& user, unsigned mode);
void fill_admit_queue(MGDialog* dialog, GtkListStore* store, bool reset_mark, const MGQueue& queue, unsigned mode);
void fill_admit_allow(MGDialog* dialog, GtkListStore* store, bool reset_mark, const MGAllow& allow, unsigned mode);
