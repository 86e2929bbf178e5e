// Holds checksums, encodings, the cipher of stored passwords and the search in text beside the best public libraries.
#include "compare.h"
#include "config/scrambling.h"
#include "runtime/mg_file.h"

#include <clocale>
#include <fnmatch.h>
#include <gcrypt.h>
#include <glib.h>
#include <zlib.h>

namespace {

void checksums() {
    const std::vector<uint8_t> data = some_bytes(16 << 20);
    uint32_t ours = 0, zlib = 1;
    compare(
        "CRC-32 of 16 MiB / zlib", 1.2, [&] { ours = MGFile::MakeCrc32Ext(data); },
        [&] { zlib = static_cast<uint32_t>(crc32_z(0, data.data(), data.size())); });
    if (ours != zlib) give_up("another checksum");
}

void base64() {
    const std::vector<uint8_t> data = some_bytes(4 << 20);
    std::string text;
    gchar* their_text = nullptr;
    compare(
        "4 MiB to base64 / GLib", 1.0, [&] { MGFile::DataToBase64(data, text); },
        [&] {
            g_free(their_text);
            their_text = g_base64_encode(data.data(), data.size());
        });
    std::vector<uint8_t> back;
    guchar* their_data = nullptr;
    gsize their_size = 0;
    compare(
        "4 MiB from base64 / GLib", 1.0, [&] { MGFile::Base64ToData(text, back); },
        [&] {
            g_free(their_data);
            their_data = g_base64_decode(their_text, &their_size);
        });
    if (text != their_text || back != data || back != std::vector<uint8_t>(their_data, their_data + their_size))
        give_up("another text");
    g_free(their_text);
    g_free(their_data);
}

void cipher() {
    const std::vector<uint8_t> data = some_bytes(1 << 20), initial = some_bytes(8);
    std::vector<uint8_t> ours(data.size()), theirs(data.size());
    gcry_check_version(nullptr);
    gcry_cipher_hd_t handle;
    if (gcry_cipher_open(&handle, GCRY_CIPHER_GOST28147, GCRY_CIPHER_MODE_CFB, 0) != 0) give_up("gcry_cipher_open");
    gcry_cipher_ctl(handle, GCRYCTL_SET_SBOX, const_cast<char*>("1.2.643.2.2.31.1"), 0);
    gcry_cipher_setkey(handle, vorma::scrambling_key, sizeof vorma::scrambling_key);
    const auto theirs_by = [&](auto work) {
        return [&, work] {
            gcry_cipher_setiv(handle, initial.data(), initial.size());
            if (work(handle, theirs.data(), theirs.size(), data.data(), data.size()) != 0) give_up("gcry_cipher");
        };
    };
    compare(
        "1 MiB enciphered / libgcrypt", 1.0,
        [&] { encrypt_buffer(initial.data(), data.data(), ours.data(), data.size()); }, theirs_by(gcry_cipher_encrypt));
    if (ours != theirs) give_up("another cipher");
    compare(
        "1 MiB deciphered / libgcrypt", 1.0,
        [&] { decrypt_buffer(initial.data(), data.data(), ours.data(), data.size()); }, theirs_by(gcry_cipher_decrypt));
    if (ours != theirs) give_up("another cipher");
    gcry_cipher_close(handle);
}

void masks(bool case_sensitive) {
    std::vector<std::string> names;
    for (int i = 0; i < 1000; ++i) {
        names.push_back("dump_branch_" + std::to_string(i) + "_2024-03-31.sql.gz");
        names.push_back("Отчёт филиала № " + std::to_string(i) + ".txt");
    }
    const std::string patterns[] = {"*.gz", "dump_*_202?-03-*", "Отчёт*7.txt", "*филиала*", "*_99?_*"};
    size_t ours = 0, theirs = 1;
    const auto count = [&](auto&& matches) {
        size_t found = 0;
        for (const std::string& pattern : patterns)
            for (const std::string& name : names) found += matches(name, pattern);
        return found;
    };
    compare(
        case_sensitive ? "10000 masks / fnmatch" : "10000 masks without case / fnmatch", 1.0,
        [&] {
            ours = count([&](const std::string& name, const std::string& pattern) {
                return MGFile::CompareMaskUtf8(name, pattern, case_sensitive);
            });
        },
        [&] {
            theirs = count([&](const std::string& name, const std::string& pattern) {
                return fnmatch(pattern.c_str(), name.c_str(), case_sensitive ? 0 : FNM_CASEFOLD) == 0;
            });
        });
    if (ours != theirs) give_up("other matches");
}

void search() {
    std::string text;
    while (text.size() < 340'000) text += "<a";
    text += "\n>";
    std::string found;
    compare(
        "340 KB of marks searched / one pass of find", 2.0,
        [&] {
            for (size_t pos = 0; MGFile::FindSubString(text, pos, "<", ">", found, false);) {
            }
        },
        [&] {
            for (size_t at = 0; (at = text.find("<", at)) != std::string::npos; ++at) keep(at);
        });
}

} // namespace

int main() {
    if (!std::setlocale(LC_ALL, "C.UTF-8")) give_up("setlocale");
    checksums();
    base64();
    cipher();
    masks(true);
    masks(false);
    search();
}
