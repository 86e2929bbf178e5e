// How a document gets into its file: in place, under the file's own name byte for byte, and only after the whole
// document is complete in memory, by overwrite_file. What stood in the file is lost as late and for as short as can be.
#pragma once

#include "config/xml_library.h"

#include <libxml/tree.h>

// Whether the document was saved, formatted and in UTF-8; if not, reports tells why. Only a regular file is written,
// or a new one.
bool save_xml(xmlDoc* document, const char* file, XmlReports& reports);

// Makes libxml2 hand what save_xml saves to us; xmlCleanupParser undoes it.
void register_saving();
