// The checks that the readers of configuration files make. Each gives back quietly when it holds; otherwise it
// completes err, which the reader has prepared with mess_1 and func_1, and throws it. Any thread may use these, on
// objects of its own.
#pragma once

#include "app/mg_err.h"

#include <string>

// Just before another element is stored: is the list already full? `name` is the element's name, here and below.
void if_counter_eq_quantity_throw_err(MGErr& err, int counter, int quantity, const char* name);
// After the last element: are there as many as the list says?
void if_counter_not_eq_quantity_throw_err(MGErr& err, int counter, int quantity, const char* name);

void if_root_not_eq_name(MGErr& err, const std::string& root, const char* name);
void if_version_not_eq_value(MGErr& err, int num, int version, const char* name);
void if_release_not_eq_value(MGErr& err, int num, int release, const char* name);
void if_id_not_eq_value(MGErr& err, const std::string& str, const std::string& id);
// `value` is the mark that the file must bear, `name` the name of its constant, `kind` what sort of file it marks.
// mess_2 and func_2 keep what they hold in front.
void if_mask_not_eq_value(MGErr& err, const std::string& str, const char* value, const char* name, const char* kind);
