#include "config/scrambling.h"

#include <gcrypt.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;

// libgcrypt's GOST 28147-89 with feedback, under the system's key.
Bytes by_libgcrypt(const Bytes& initial, Bytes data) {
    static const bool ready = gcry_check_version(nullptr) != nullptr;
    gcry_cipher_hd_t cipher;
    EXPECT_TRUE(ready && gcry_cipher_open(&cipher, GCRY_CIPHER_GOST28147, GCRY_CIPHER_MODE_CFB, 0) == 0);
    const gcry_error_t sbox = gcry_cipher_set_sbox(cipher, "1.2.643.2.2.31.1");
    EXPECT_EQ(sbox, 0u);
    EXPECT_EQ(gcry_cipher_setkey(cipher, scrambling_key, sizeof scrambling_key), 0u);
    EXPECT_EQ(gcry_cipher_setiv(cipher, initial.data(), initial.size()), 0u);
    EXPECT_EQ(gcry_cipher_encrypt(cipher, data.data(), data.size(), nullptr, 0), 0u);
    gcry_cipher_close(cipher);
    return data;
}

Bytes random_bytes(std::mt19937& random, size_t size) {
    Bytes bytes(size);
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<uint8_t>(random()); });
    return bytes;
}

} // namespace

TEST(Scrambling, GivesTheStandardStreamAtAnyLength) {
    std::mt19937 random(28147);
    std::vector<size_t> sizes = {1, 7, 8, 9, 1023, 1024, 1025, 1032, 2048, 2049};
    for (int i = 0; i < 200; ++i) sizes.push_back(1 + random() % 5000);
    for (size_t size : sizes) {
        SCOPED_TRACE(size);
        const Bytes initial = random_bytes(random, 8);
        const Bytes plain = random_bytes(random, size);
        Bytes coded(size + 1, 0xA5);
        encrypt_buffer(initial.data(), plain.data(), coded.data(), size);
        EXPECT_EQ(coded.back(), 0xA5) << "written past the size";
        coded.pop_back();
        ASSERT_EQ(coded, by_libgcrypt(initial, plain));
        decrypt_buffer(initial.data(), coded.data(), coded.data(), size);
        ASSERT_EQ(coded, plain);
    }
}

TEST(Scrambling, PasswordsComeBack) {
    EXPECT_EQ(code_string(""), "");
    for (const char* coded : {"AQIDZQECA2W", "====", "Пароль"}) EXPECT_EQ(decode_string(coded), "") << coded;
    EXPECT_EQ(decode_string(code_string(std::string("ab\0cd", 5))), "ab");
    for (const std::string& plain : {std::string("x"), std::string("Пароль №1 \n\t"), std::string(1025, 'q')}) {
        SCOPED_TRACE(plain);
        const std::string coded = code_string(plain);
        EXPECT_EQ(coded.size(), (plain.size() + 8 + 2) / 3 * 4);
        EXPECT_EQ(decode_string(coded), plain);
        Bytes data;
        base64_string_to_vector_data(coded, data);
        EXPECT_TRUE(std::equal(data.begin(), data.begin() + 4, data.begin() + 4)) << "the time stands there twice";
        const Bytes initial(data.begin(), data.begin() + 8);
        EXPECT_EQ(Bytes(data.begin() + 8, data.end()), by_libgcrypt(initial, Bytes(plain.begin(), plain.end())));
    }
}
