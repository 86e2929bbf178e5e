// The master file: the list of profiles and the editor's own settings. The service reads it too.
//
//   config    version, release, mark
//     profiles    quantity
//       profile     default, name, id, active        as many as quantity says
//     settings
//       editor      path
//
// Every element and attribute is written every time and required on reading. One thread at a time may read or write,
// as they share one file.
#pragma once

#include <string>

class MGContext;
class MGLibxml;

// Reads config_file into version, release, quantity, profiles (appends; each with the default settings until its own
// file is read) and editor_path. Throws MGErr; what was read up to then stays in the context.
void read_config_file(MGContext* context);

// Sets quantity, then writes config_file in place, after a reserve copy. Throws MGErr.
void write_config_file(MGContext* context);

// Copies the file, and its mode, to its name with "~" behind, over what stands there; does nothing where there is no
// such file. At every moment of a save the file or its reserve copy is whole: the copy is written while the file
// stands, and the file is touched when the copy is done. Throws MGErr: the writer stops then, and the file keeps its
// content.
void make_reserve_copy(const std::string& file);

// Writes the document in place, after a reserve copy. Throws MGErr; a save that fails half-way leaves the earlier
// content in the file too.
void save_after_reserve_copy(MGLibxml& xml, const std::string& file);
