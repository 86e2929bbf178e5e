// What an administrator can do about a file that a start can't read, added to the error that says why.
#pragma once

class MGContext;
class MGErr;

// Adds to err_description what helps, by the cause: err_code, which is errno, tells a missing file and one that is out
// of reach for now from a damaged one. The reserve copy where it can be read, else what else there is. ext_3_param
// takes the file's name where the error doesn't bear it. Throws MGErr.
void advise_on_config_file(MGErr& err, const MGContext& context);
void advise_on_profile_file(MGErr& err, const MGContext& context, int index);
