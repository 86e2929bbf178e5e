// The whole configuration of a profile as a report for people, and the shorter report of a gateway's device.
// Passwords are never listed, only whether one exists. One thread at a time: all reports go to the result file of
// LogFileGlobal.
#pragma once

#include "config/records.h"
#include "runtime/mg_info.h"

#include <string>
#include <vector>

// Appends the report to the result file of LogFileGlobal: the general settings, then each start mode that is on.
void print_selected_profile(const MGProfile& profile);

// Adds what is in force of a gateway's device.
void print_info_dev(MGInfo& info, const MGDev& dev);
// Adds the internal and the virtual addresses, each numbered from 1, without what is empty in them.
void print_info_adrs_virt(MGInfo& info, const std::vector<MGListAdrs>& adrs, const std::vector<MGListAdrs>& virt);
// Replaces text by the chosen protocols, a blank before each: " icmp tcp".
void create_ip_prot_str(const MGDev& dev, std::string& text);
