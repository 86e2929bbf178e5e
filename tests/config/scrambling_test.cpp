// Scrambled passwords, against libgcrypt.
#include "config/scrambling.h"
#include "support/bytes.h"

#include <gtest/gtest.h>

#include <gcrypt.h>

namespace {

// libgcrypt's GOST 28147-89 with feedback, under the system's key.
Bytes by_libgcrypt(const Bytes& initial, Bytes data) {
    static const bool ready = gcry_check_version(nullptr) != nullptr;
    gcry_cipher_hd_t cipher;
    EXPECT_TRUE(ready && gcry_cipher_open(&cipher, GCRY_CIPHER_GOST28147, GCRY_CIPHER_MODE_CFB, 0) == 0);
    const gcry_error_t sbox = gcry_cipher_set_sbox(cipher, "1.2.643.2.2.31.1");
    EXPECT_EQ(sbox, 0u);
    EXPECT_EQ(gcry_cipher_setkey(cipher, vorma::scrambling_key, sizeof vorma::scrambling_key), 0u);
    EXPECT_EQ(gcry_cipher_setiv(cipher, initial.data(), initial.size()), 0u);
    EXPECT_EQ(gcry_cipher_encrypt(cipher, data.data(), data.size(), nullptr, 0), 0u);
    gcry_cipher_close(cipher);
    return data;
}

TEST(Scrambling, GivesTheStandardStreamAtAnyLength) {
    std::mt19937 random(28147);
    std::vector<size_t> sizes = {1, 7, 8, 9, 1023, 1024, 1025, 1032, 2048, 2049};
    for (int i = 0; i < 200; ++i) sizes.push_back(1 + random() % 5000);
    for (size_t size : sizes) {
        const Bytes initial = random_bytes(random, 8), plain = random_bytes(random, size);
        Bytes coded(size);
        encrypt_buffer(initial.data(), plain.data(), coded.data(), size);
        ASSERT_EQ(coded, by_libgcrypt(initial, plain)) << size;
        decrypt_buffer(initial.data(), coded.data(), coded.data(), size);
        ASSERT_EQ(coded, plain) << size;
    }
}

TEST(Scrambling, PasswordsComeBack) {
    char text[10];
    uint8_t back[4];
    size_t size = 0;
    binary_to_base64(reinterpret_cast<const uint8_t*>("abcd"), 4, text);
    base64_to_binary(text, back, size);
    EXPECT_EQ(text + std::string(back, back + size), "YWJjZA==abcd");
    EXPECT_EQ(code_string(""), "");
    for (const char* coded : {"AQIDZQECA2W", "====", "Пароль"}) EXPECT_EQ(decode_string(coded), "") << coded;
    EXPECT_EQ(decode_string(code_string(std::string("ab\0cd", 5))), "ab");
    for (const std::string& plain : {std::string("x"), std::string("Пароль №1 \n\t"), std::string(1025, 'q')}) {
        const std::string coded = code_string(plain);
        EXPECT_EQ(coded.size(), (plain.size() + 8 + 2) / 3 * 4);
        EXPECT_EQ(decode_string(coded), plain);
        Bytes data;
        base64_string_to_vector_data(coded, data);
        EXPECT_TRUE(std::equal(data.begin(), data.begin() + 4, data.begin() + 4)) << "the time stands there twice";
        const Bytes initial(data.begin(), data.begin() + 8);
        EXPECT_EQ(Bytes(data.begin() + 8, data.end()), by_libgcrypt(initial, bytes(plain)));
    }
}

} // namespace
