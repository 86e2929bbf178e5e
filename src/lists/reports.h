// Reports of the lists: the button "Распечатать" writes the list as it stands in its dialog into a text file, and a
// small dialog tells where the file is and opens it in the external viewer. On the toolkit's thread only.
#pragma once

#include "config/list_records.h"

#include <string>
#include <vector>

class MGDialog;

// Append a list to the result file of LogFileGlobal. Throw MGErr. A password is never printed.
void print_result_admit_list(const std::vector<MGAdmit>& list, unsigned list_kind);
void print_result_queue_list(const std::vector<MGQueue>& list, unsigned list_kind);
void print_result_allow_list(const std::vector<MGAllow>& list, unsigned list_kind);
void print_result_adrs_list(const std::vector<MGListAdrs>& list, bool is_virtual);

// Whether the program can be started; tells the user over the dialog why not.
bool test_exist_start_program(MGDialog* dialog, const std::string& program);

// Starts the program with one argument and does not wait for it; no zombie stays. A program that can't be executed is
// not reported. Throws MGErr: fork failed.
void start_program(const std::string& program, const std::string& argument);
