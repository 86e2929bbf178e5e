// Parsing under the bounds that every document of the system keeps to:
//
//   no document type declaration     no entity is ever declared, and none expanded
//   64 elements deep
//   256 attributes in an element, and 256 name spaces known there; many more end the parsing inside the start tag
//   some 85 KB of different names
//
// and, where it came in a text from a peer:
//
//   16 MiB in all
//   64 KiB between the beginnings of two elements
//
// What oversteps one is refused there, while it is parsed, and reported with its place.
#pragma once

#include "config/xml_library.h"

#include <libxml/tree.h>

// The document in what is left of an open file, or in a text; null where there is none, and reports tells why. options
// are those of xmlReadDoc.
xmlDoc* parse_xml_file(int fd, XmlReports& reports);
xmlDoc* parse_xml_text(const char* text, int options, XmlReports& reports);
