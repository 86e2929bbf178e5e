// The ticket: the receipt that a receiver gives for a file, as XML or as text for a person to read. Any thread may
// call this.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Replaces `text` by the ticket for a file of `length` bytes, issued now. ticket_type is a token of ticket_types; any
// but "XML" gives text. hash is the file's, in bytes. A name that an XML document would alter is refused with an MGErr.
// When it fails, text is empty.
void write_file_ticket(const std::string& ticket_type, const std::string& name, uint64_t length,
                       const std::vector<uint8_t>& hash, std::string& text);
