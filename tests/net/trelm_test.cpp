#include "net/mg_trelm.h"
#include "support/error_of.h"
#include "support/provider/stand_in.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

namespace {

const std::string none;

std::vector<uint8_t> bytes(const std::string& text) {
    return {text.begin(), text.end()};
}

std::string text(const std::vector<uint8_t>& data) {
    return {data.begin(), data.end()};
}

void start(MGTrelm& trelm) {
    trelm.InitLib();
    trelm.InitConnect(0, none, none, none, none);
    trelm.Initialize();
}

// The two sides' sessions, shaken hands without a network.
void shake_hands(MGTrelm& client, MGTrelm& server, bool options = true) {
    client.TlsCreate("vorma.test", options, false);
    server.TlsCreate("", false, options);
    std::vector<uint8_t> flight;
    client.TlsHandshake({}, flight);
    for (bool done = false; !done;) {
        server.TlsHandshake(flight, flight);
        if (!flight.empty()) client.TlsHandshake(flight, flight);
        done = client.TlsComplete() && server.TlsComplete();
    }
}

} // namespace

TEST(MGTrelm, StaysUnloadedWithoutTheLibraryOrAFunctionOfIt) {
    const ProviderTest provider;
    MGTrelm trelm;
    const struct {
        const char *library, *func_1, *missing;
    } rows[] = {{"/absent.so", "LoadLibrary", "/absent.so"}, {"libz.so.1", "GetLibFunc", "TRELM_InitMinimal"}};
    for (const auto& row : rows) {
        trelm.InitLib(); // so that there is something to unload
        const std::string whole = std::exchange(provider_library, row.library);
        const MGErr err = error_of([&] { trelm.InitLib(); });
        EXPECT_EQ(err.func_1, row.func_1);
        EXPECT_EQ(err.str_param, row.missing);
        EXPECT_FALSE(trelm.functions.InitMinimal);
        EXPECT_FALSE(dlopen(whole.c_str(), RTLD_LAZY | RTLD_NOLOAD));
        provider_library = whole;
    }
}

// A whole life with every kind of call of the provider, 18 in number; each of its calls fails once.
TEST(MGTrelm, EveryFailureOfTheProviderIsToldAndLeavesNothing) {
    const TempDir dir;
    dir.write("file", "a file of several pieces");
    std::vector<uint8_t> hash;
    const auto live = [&](MGTrelm& client) {
        MGTrelm server;
        start(client);
        start(server);
        shake_hands(client, server);
        std::vector<uint8_t> out;
        server.TlsQuery(1, out);
        EXPECT_NE(text(out).find("vorma.test"), std::string::npos);
        client.TlsWrite(bytes("secret"), out);
        EXPECT_EQ(text(out).find("secret"), std::string::npos);
        EXPECT_TRUE(server.TlsRead(out, out, false));
        EXPECT_EQ(text(out), "secret");
        client.TlsDestroy();
        client.SignFileDetached(dir.path("file"), dir.path("signature"), 20);
        hash = {1};
        client.VerifyFileDetached(dir.path("file"), dir.path("signature"), 20, hash);
    };
    std::set<std::string> failed;
    for (int call = 1;; ++call) {
        SCOPED_TRACE(call);
        const ProviderTest provider;
        provider_stand_in.fail_call = call;
        MGErr err;
        MGTrelm trelm;
        try {
            live(trelm);
        } catch (const MGErr& thrown) {
            err = thrown;
        }
        const std::string function = provider_stand_in.failed;
        if (function.empty()) break;
        if (err.func_1.empty()) { // a destructor met the failure
            EXPECT_EQ(function, "TRELM_TlsSessionDestroy");
            continue;
        }
        failed.insert(function);
        EXPECT_EQ(err.func_2, function);
        EXPECT_EQ(err.uint32_param, stand_in_failure);
        EXPECT_EQ(err.err_description, "Сбой E0700ABC");
        const bool tls = err.func_1.find("::Tls") != std::string::npos;
        EXPECT_EQ(static_cast<uint32_t>(err.err_code), tls ? 0xf42d327d : 0);
        EXPECT_EQ(err.opt_param + err.str_param + err.ext_param,
                  function == "TRELM_InitMinimal" ? "" : "КлючФайл:[ядро.c], Строка:[4711]№ 7");
        const bool file = err.func_1.find("FileDetached") != std::string::npos;
        EXPECT_EQ(err.ext_2_param + err.ext_3_param, file ? dir.path("file") + dir.path("signature") : "");
        if (err.func_1 == "VerifyFileDetached") {
            EXPECT_TRUE(hash.empty());
        }
        EXPECT_EQ(trelm.m_file_handle, -1);
    }
    EXPECT_EQ(failed.size(), 18u);
}

TEST(MGTrelm, SharedContextIsReleasedOnceByItsOwner) {
    const ProviderTest provider;
    MGTrelm owner;
    start(owner);
    {
        MGTrelm copy, copy_of_copy;
        start(copy); // what it had goes back
        owner.CopyTrelm(copy);
        owner.CopyTrelm(owner);
        copy.CopyTrelm(copy_of_copy);
        EXPECT_EQ(provider_stand_in.live.size(), 2u);
        shake_hands(copy, copy_of_copy);
        copy.Clear();
        EXPECT_FALSE(copy.IsInitialize());
        start(copy); // on its own feet again
        EXPECT_EQ(provider_stand_in.live.size(), 2u + 2u + 1u);
        copy.Initialize(); // the former contexts go back
        EXPECT_EQ(provider_stand_in.live.size(), 2u + 2u + 1u);
    }
    EXPECT_EQ(provider_stand_in.live.size(), 2u);
    owner.Clear();
    EXPECT_FALSE(owner.IsInitialize());
    EXPECT_FALSE(dlopen(provider_library.c_str(), RTLD_LAZY | RTLD_NOLOAD));
}

TEST(MGTrelm, SignsAndVerifiesFiles) {
    const ProviderTest provider;
    const TempDir dir;
    MGTrelm trelm;
    start(trelm);
    const struct {
        std::string content;
        const char* hash; // published with SHA-256
    } rows[] = {
        {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
         "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
        {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
    };
    const std::string file = dir.path("file"), signature = dir.path("signature");
    std::vector<uint8_t> hash;
    for (const auto& row : rows)
        for (const uint32_t buffer_size : {1u, 7u, 56u, 4096u}) {
            SCOPED_TRACE(testing::Message() << row.content << " in pieces of " << buffer_size);
            dir.write("file", row.content);
            trelm.SignFileDetached(file, signature, buffer_size);
            trelm.VerifyFileDetached(file, signature, buffer_size, hash);
            std::string hex;
            MGFile::BinToHex(hash, hex);
            EXPECT_EQ(hex, row.hash);
        }

    dir.write("file", "another content");
    const MGErr bad = error_of([&] { trelm.VerifyFileDetached(file, signature, 4, hash); });
    EXPECT_EQ(bad.mess_2, "Ошибка проверки подписи");
    EXPECT_EQ(bad.uint32_param, stand_in_bad_digest);
    EXPECT_EQ(bad.uint32_2_param, 2u);
    EXPECT_EQ(bad.err_description, "Сбой E0700ABE");
    EXPECT_TRUE(hash.empty());
    // Failures of the file system and of the caller, with the provider at work.
    const std::string absent = dir.path("absent/file");
    EXPECT_EQ(error_of([&] { trelm.SignFileDetached(dir.path(), signature, 4); }).func_1, "ReadFileBufEx");
    EXPECT_EQ(error_of([&] { trelm.SignFileDetached(file, absent, 4); }).func_1, "WriteFile");
    EXPECT_EQ(error_of([&] { trelm.SignFileDetached(file, signature, 0); }).err_description, "buffer_size");
    EXPECT_EQ(error_of([&] { trelm.VerifyFileDetached(dir.path(), signature, 4, hash); }).func_1, "ReadFileBufEx");
    EXPECT_EQ(error_of([&] { trelm.VerifyFileDetached(file, absent, 4, hash); }).func_1, "ReadFile");
    EXPECT_EQ(error_of([&] { trelm.VerifyFileDetached(file, file, 4, hash); }).func_2, "TRELM_CmsStrDetVerifyInitMem");
    EXPECT_EQ(trelm.m_file_handle, -1);
    EXPECT_EQ(provider_stand_in.live.size(), 2u);
}

TEST(MGTrelm, ConvertsTexts) {
    std::string out = "x";
    const char name[] = "\xCF\xF0\xEE\xF4\xE8\xEB\xFC No\xB9 1";
    MGTrelm::conv_trelm_ansy1251_to_lower_utf8(name, out);
    EXPECT_EQ(out, "профиль no№ 1");
    MGTrelm::conv_trelm_ansy1251_to_lower_utf8_len(name, 4, out);
    EXPECT_EQ(out, "проф");
    MGTrelm::conv_trelm_ansy1251_to_lower_utf8(nullptr, out);
    EXPECT_EQ(out, "");
    EXPECT_EQ(Utf8toAnsi1251("Профиль No№ 1"), name);
    EXPECT_EQ(Utf8toAnsi1251("a漢b"), "a"); // as far as it can be converted
    mem_blk block;
    EXPECT_EQ(MGTrelm::MemBlkToString(block), "");
    block = {3, const_cast<char*>(name)}; // no zero byte behind it
    EXPECT_EQ(MGTrelm::MemBlkToString(block), "Про");
}
