// The small XML documents that go ahead of a transfer and behind it: what is sent, its checksum, and what a client of a
// gateway or of a file server asks for. Each is a string; how it travels is not known here.
// A writer replaces `text`; it refuses, with an MGErr, a value that the document would alter. A reader refuses, with an
// MGErr, a text that is no XML, that is a document of another kind, that lacks an attribute, or whose lists don't hold
// as many rows as they say; it judges no value. Any thread may call these.
#pragma once

#include "config/action_records.h"
#include "config/list_records.h"

#include <cstdint>
#include <string>
#include <vector>

// A file that is being received.
struct MGRecvFile {
    std::string name;
    uint64_t size = 0;        // bytes
    uint64_t buf_len = 0;     // bytes in a block
    uint32_t crc32 = 0;       // of the whole file
    uint64_t full_blocks = 0; // blocks of buf_len bytes, none if buf_len is 0
    uint64_t rest = 0;        // bytes behind them
};

// --- A file: the header ahead of it, the checksum behind it ---

// The file's name and the size of a block come from `send`; size is in bytes.
void write_file_header(const MGSend& send, uint64_t size, std::string& text);
// Fills all but crc32.
void read_file_header(const std::string& text, MGRecvFile& file);

void write_file_crc(uint32_t crc32, std::string& text);
// Fills crc32 alone.
void read_file_crc(const std::string& text, MGRecvFile& file);

// The header of a file that goes into a queue; size and buf_len are in bytes.
void write_file2_header(const std::string& que, const std::string& name, uint64_t size, uint64_t buf_len,
                        std::string& text);
void read_file2_header(const std::string& text, std::string& que, std::string& name, uint64_t& size, uint64_t& buf_len);

// Refuses a block of data whose CRC-32 is another.
void test_data_crc(const std::vector<uint8_t>& data, uint32_t crc32);

// --- Clients ---

// The device and the mode of a gateway's client; the two addresses of local mode and the address lists of router mode
// only where that mode is on. A reader leaves alone what the document doesn't state, and replaces the lists it does.
void write_gw_client(const MGDev& dev, std::string& text);
void read_gw_client(const std::string& text, MGDev& dev);

// Of a queue only id is written; reading sets crc_id with it. hash is written as it is given. When reading fails, the
// four outputs are empty.
void write_file_client(const std::vector<MGQueue>& queue, const std::string& login, const std::string& hash,
                       const std::string& type, std::string& text);
void read_file_client(const std::string& text, std::vector<MGQueue>& queue, std::string& login, std::string& hash,
                      std::string& type);
