// The block cipher, its feedback mode, and passwords in and out of it.
#include "config/scrambling.h"

#include "app/mg_err.h"
#include "runtime/little_endian.h"
#include "runtime/mg_file.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <ctime>

using namespace vorma;

const uint32_t vorma::scrambling_key[8] = {
    0x868efa29, 0x43398ffb, 0x16b4bca9, 0xac7c41c4, 0xcd9a4e5f, 0xa6bf41b5, 0xd527a769, 0x05668d91,
};

namespace {

constexpr size_t initial_size = 8;

// The substitution of each of the word's eight 4-bit digits, lowest digit first.
constexpr uint8_t substitution[8][16] = {
    {0x9, 0x6, 0x3, 0x2, 0x8, 0xb, 0x1, 0x7, 0xa, 0x4, 0xe, 0xf, 0xc, 0x0, 0xd, 0x5},
    {0x3, 0x7, 0xe, 0x9, 0x8, 0xa, 0xf, 0x0, 0x5, 0x2, 0x6, 0xc, 0xb, 0x4, 0xd, 0x1},
    {0xe, 0x4, 0x6, 0x2, 0xb, 0x3, 0xd, 0x8, 0xc, 0xf, 0x5, 0xa, 0x0, 0x7, 0x1, 0x9},
    {0xe, 0x7, 0xa, 0xc, 0xd, 0x1, 0x3, 0x9, 0x0, 0x2, 0xb, 0x4, 0xf, 0x8, 0x5, 0x6},
    {0xb, 0x5, 0x1, 0x9, 0x8, 0xd, 0xf, 0x0, 0xe, 0x4, 0x2, 0x3, 0xc, 0x7, 0xa, 0x6},
    {0x3, 0xa, 0xd, 0xc, 0x1, 0x2, 0x0, 0xb, 0x7, 0x5, 0x9, 0x4, 0x8, 0xf, 0xe, 0x6},
    {0x1, 0xd, 0x2, 0x9, 0x7, 0xa, 0x6, 0x0, 0x8, 0xc, 0x4, 0x5, 0xf, 0x3, 0xb, 0xe},
    {0xb, 0xa, 0xf, 0x5, 0x0, 0xc, 0xe, 0x8, 0x6, 0x2, 0x3, 0x9, 0x1, 0x7, 0xd, 0x4},
};

using ByteTables = std::array<std::array<uint8_t, 256>, 4>;

// One table for each byte of the word: two digits at a time.
constexpr ByteTables byte_tables = [] {
    ByteTables tables{};
    for (size_t byte = 0; byte < tables.size(); ++byte)
        for (size_t value = 0; value < 256; ++value)
            tables[byte][value] =
                static_cast<uint8_t>(substitution[2 * byte + 1][value >> 4] << 4 | substitution[2 * byte][value & 15]);
    return tables;
}();

// Crosses word with the round's result: the four bytes of sum replaced and together rotated by 11, each brought to its
// place on its own. The byte that takes longest to get at comes last.
inline void cross_round(uint32_t& word, uint32_t sum) {
    word ^= static_cast<uint32_t>(byte_tables[0][sum & 255]) << 11 |
            static_cast<uint32_t>(byte_tables[3][sum >> 24]) << 3 |
            static_cast<uint32_t>(byte_tables[1][sum >> 8 & 255]) << 19;
    word ^= std::rotl(static_cast<uint32_t>(byte_tables[2][sum >> 16 & 255]), 27);
}

struct Block {
    uint32_t n1, n2;
};

// Enciphers blocks side by side, in registers: they don't wait for each other. Each round has its word of the key.
template <class... Blocks>
void encrypt_blocks(const uint32_t* key, Blocks&... result) {
    [&](Blocks... block) {
        const auto two_rounds = [&](uint32_t first, uint32_t second) {
            (cross_round(block.n2, block.n1 + first), ...);
            (cross_round(block.n1, block.n2 + second), ...);
        };
        for (int round = 0; round < 24; round += 2) two_rounds(key[round % 8], key[round % 8 + 1]);
        for (int word = 7; word > 0; word -= 2) two_rounds(key[word], key[word - 1]);
        ((result = block), ...);
    }(result...);
}

// What a gamma makes of two words, crossed: the block cipher leaves the standard's halves exchanged.
void cross_gamma(const Block& gamma, const uint32_t* in, uint32_t* out) {
    out[0] = in[0] ^ gamma.n2;
    out[1] = in[1] ^ gamma.n1;
}

// The last word may be there only in part.
void load_words(const uint8_t* bytes, size_t size, uint32_t* words) {
    size_t i = 0;
    for (; size - i >= 4; i += 4) words[i / 4] = get_le32(bytes + i);
    for (size_t shift = 0; i < size; ++i, shift += 8) {
        if (shift == 0) words[i / 4] = 0;
        words[i / 4] |= static_cast<uint32_t>(bytes[i]) << shift;
    }
}

void store_words(const uint32_t* words, uint8_t* bytes, size_t size) {
    size_t i = 0;
    for (; size - i >= 4; i += 4) put_le32(bytes + i, words[i / 4]);
    for (size_t shift = 0; i < size; ++i, shift += 8) bytes[i] = static_cast<uint8_t>(words[i / 4] >> shift);
}

using FeedbackMode = void (*)(uint32_t*, const uint32_t*, uint32_t*, size_t, const uint32_t*);

void work_in_pieces(FeedbackMode mode, const uint8_t* initial, const uint8_t* in, uint8_t* out, size_t size) {
    constexpr size_t piece_size = 1024;
    uint32_t state[2];
    load_words(initial, initial_size, state);
    for (size_t done = 0; done < size; done += piece_size) {
        const size_t piece = std::min(piece_size, size - done);
        uint32_t words_in[piece_size / 4] = {};
        uint32_t words_out[piece_size / 4];
        load_words(in + done, piece, words_in);
        mode(state, words_in, words_out, (piece + 7) / 8, scrambling_key);
        store_words(words_out, out + done, piece);
    }
}

} // namespace

std::string code_string(const std::string& plain) {
    return at_edge("code_string", [&]() -> std::string {
        if (plain.empty()) return "";
        const auto now = static_cast<uint32_t>(std::time(nullptr));
        const uint32_t initial[2] = {now, now};
        std::vector<uint8_t> data(initial_size + plain.size());
        store_words(initial, data.data(), initial_size);
        std::copy(plain.begin(), plain.end(), data.begin() + initial_size);
        encrypt_buffer(data.data(), data.data() + initial_size, data.data() + initial_size, plain.size());
        std::string coded;
        vector_data_to_base64_string(data, coded);
        return coded;
    });
}

std::string decode_string(const std::string& coded) {
    return at_edge("decode_string", [&]() -> std::string {
        std::vector<uint8_t> data;
        base64_string_to_vector_data(coded, data);
        if (data.size() <= initial_size) return "";
        decrypt_buffer(data.data(), data.data() + initial_size, data.data() + initial_size, data.size() - initial_size);
        const auto begin = data.begin() + initial_size;
        return std::string(begin, std::find(begin, data.end(), 0));
    });
}

void encrypt_block(const uint32_t* key, uint32_t& n1, uint32_t& n2) {
    Block block{n1, n2};
    encrypt_blocks(key, block);
    n1 = block.n1;
    n2 = block.n2;
}

void encrypt_(uint32_t* state, const uint32_t* in, uint32_t* out, size_t blocks, const uint32_t* key) {
    for (; blocks > 0; --blocks, in += 2, out += 2) {
        Block gamma{state[0], state[1]};
        encrypt_blocks(key, gamma);
        cross_gamma(gamma, in, out);
        state[0] = out[0];
        state[1] = out[1];
    }
}

void decrypt_(uint32_t* state, const uint32_t* in, uint32_t* out, size_t blocks, const uint32_t* key) {
    Block gamma{state[0], state[1]};
    for (; blocks > 1; blocks -= 2, in += 4, out += 4) {
        Block second{in[0], in[1]};
        encrypt_blocks(key, gamma, second);
        const Block next{in[2], in[3]};
        cross_gamma(gamma, in, out);
        cross_gamma(second, in + 2, out + 2);
        gamma = next;
    }
    if (blocks > 0) {
        const Block next{in[0], in[1]};
        encrypt_blocks(key, gamma);
        cross_gamma(gamma, in, out);
        gamma = next;
    }
    state[0] = gamma.n1;
    state[1] = gamma.n2;
}

void encrypt_buffer(const uint8_t* initial, const uint8_t* in, uint8_t* out, size_t size) {
    work_in_pieces(encrypt_, initial, in, out, size);
}

void decrypt_buffer(const uint8_t* initial, const uint8_t* in, uint8_t* out, size_t size) {
    work_in_pieces(decrypt_, initial, in, out, size);
}

void binary_to_base64(const uint8_t* data, size_t size, char* text) {
    at_edge("binary_to_base64", [&] {
        std::string coded;
        vector_data_to_base64_string({data, data + size}, coded);
        std::memcpy(text, coded.c_str(), coded.size() + 1);
    });
}

void base64_to_binary(const char* text, uint8_t* data, size_t& size) {
    at_edge("base64_to_binary", [&] {
        std::vector<uint8_t> decoded;
        base64_string_to_vector_data(text, decoded);
        std::copy(decoded.begin(), decoded.end(), data);
        size = decoded.size();
    });
}

void vector_data_to_base64_string(const std::vector<uint8_t>& data, std::string& text) {
    MGFile::DataToBase64(data, text);
}

void base64_string_to_vector_data(const std::string& text, std::vector<uint8_t>& data) {
    MGFile::Base64ToData(text, data);
}
