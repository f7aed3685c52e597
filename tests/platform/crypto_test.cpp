#include "platform/crypto.h"

#include <gtest/gtest.h>
#include <string>

#include "platform/text.h"
#include "tests/support/test_profile.h"

namespace platform {
namespace {

std::string Bytes(const std::string& hex) {
    std::string bytes;
    for (std::size_t i = 0; i < hex.size(); i += 2) {
        bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    }
    return bytes;
}

PUCHAR Pointer(std::string& bytes) { return reinterpret_cast<PUCHAR>(bytes.data()); }

AlgorithmHandle Open(const WCHAR* id) {
    AlgorithmHandle algorithm;
    EXPECT_EQ(BCryptOpenAlgorithmProvider(algorithm.Put(), id, nullptr, 0), 0);
    return algorithm;
}

struct Aes {
    explicit Aes(const std::string& keyHex) : algorithm(Open(BCRYPT_AES_ALGORITHM)) {
        WCHAR mode[] = TEXT("ChainingModeCBC");
        EXPECT_EQ(BCryptSetProperty(algorithm.Get(), BCRYPT_CHAINING_MODE,
                                    reinterpret_cast<PUCHAR>(mode), sizeof mode, 0),
                  0);
        std::string secret = Bytes(keyHex);
        EXPECT_EQ(BCryptGenerateSymmetricKey(algorithm.Get(), key.Put(), nullptr, 0,
                                             Pointer(secret), static_cast<ULONG>(secret.size()), 0),
                  0);
    }
    NTSTATUS Run(decltype(BCryptEncrypt)* call, std::string& iv, std::string& text) {
        ULONG moved = 0;
        const auto bytes = static_cast<ULONG>(text.size());
        return call(key.Get(), Pointer(text), bytes, nullptr, Pointer(iv), 16, Pointer(text), bytes,
                    &moved, 0);
    }

    AlgorithmHandle algorithm;
    CipherKey key;
};

// NIST SP 800-38A, F.2: CBC. The blocks go through in one call and in two, with a chain that goes
// on and with one that begins anew, in place.
TEST(Crypto, EnciphersThePublishedBlocks) {
    const std::string plain = Bytes(
        "6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51"
        "30c81c46a35ce411e5fbc1191a0a52eff69f2445df4f9b17ad2b417be66c3710");
    const struct {
        const char* key;
        const char* cipher;
    } kCases[] = {{"2b7e151628aed2a6abf7158809cf4f3c",
                   "7649abac8119b246cee98e9b12e9197d5086cb9b507219ee95db113a917678b2"
                   "73bed6b8e3c1743b7116e69e222295163ff1caa1681fac09120eca307586e1a7"},
                  {"8e73b0f7da0e6452c810f32b809079e562f8ead2522c6b7b",
                   "4f021db243bc633d7178183a9fa071e8b4d9ada9ad7dedf4e5e738763f69145a"
                   "571b242012fb7ae07fa9baac3df102e008b0e27988598881d920a9e64f5615cd"},
                  {"603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4",
                   "f58c4c04d6e5f1ba779eabfb5f7bfbd69cfc4e967edb808d679f777bc6702c7d"
                   "39f23369a9d9bacfa530e26304231461b2eb05e2c39be9fcda6c19078c6a9d1b"}};
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.key);
        for (const bool isEncrypting : {true, false}) {
            Aes aes(c.key);
            const auto call = isEncrypting ? BCryptEncrypt : BCryptDecrypt;
            const std::string input = isEncrypting ? plain : Bytes(c.cipher);
            for (const std::size_t first : {48u, 16u, 48u}) {
                std::string iv = Bytes("000102030405060708090a0b0c0d0e0f");
                std::string head = input.substr(0, first);
                std::string tail = input.substr(first);
                EXPECT_EQ(aes.Run(call, iv, head), 0);
                const std::string next = Bytes(c.cipher).substr(first - 16, 16);
                EXPECT_TRUE(iv == next || test_support::RunsUnderWine());
                iv = next;
                EXPECT_EQ(aes.Run(call, iv, tail), 0);
                EXPECT_EQ(head + tail, isEncrypting ? Bytes(c.cipher) : plain);
            }
        }
    }
}

TEST(Crypto, ChecksWhatItIsGiven) {
    BCRYPT_ALG_HANDLE algorithm = nullptr;
    EXPECT_FALSE(
        BCRYPT_SUCCESS(BCryptOpenAlgorithmProvider(&algorithm, TEXT("no such"), nullptr, 0)));
    EXPECT_FALSE(BCRYPT_SUCCESS(BCryptOpenAlgorithmProvider(&algorithm, nullptr, nullptr, 0)));
    Aes aes(std::string(32, '0'));
    std::string iv(16, '\0');
    std::string block(32, 'x');
    ULONG needed = 0;
    EXPECT_EQ(BCryptEncrypt(aes.key.Get(), Pointer(block), 32, nullptr, Pointer(iv), 16, nullptr, 0,
                            &needed, 0),
              0);
    EXPECT_EQ(needed, 32u);
    EXPECT_FALSE(BCRYPT_SUCCESS(BCryptEncrypt(aes.key.Get(), Pointer(block), 32, nullptr,
                                              Pointer(iv), 16, Pointer(block), 16, &needed, 0)));
    EXPECT_FALSE(BCRYPT_SUCCESS(BCryptDecrypt(aes.key.Get(), Pointer(block), 17, nullptr,
                                              Pointer(iv), 16, Pointer(block), 32, &needed, 0)));
    EXPECT_EQ(block, std::string(32, 'x'));
    CipherKey key;
    EXPECT_FALSE(BCRYPT_SUCCESS(BCryptGenerateSymmetricKey(aes.algorithm.Get(), key.Put(), nullptr,
                                                           0, Pointer(block), 17, 0)));
    EXPECT_FALSE(BCRYPT_SUCCESS(BCryptDestroyHash(nullptr)));
}

// RFC 1321, A.5.
TEST(Crypto, DigestsThePublishedTexts) {
    const struct {
        const char* text;
        const char* digest;
    } kCases[] = {
        {"", "d41d8cd98f00b204e9800998ecf8427e"},
        {"a", "0cc175b9c0f1b6a831c399e269772661"},
        {"abc", "900150983cd24fb0d6963f7d28e17f72"},
        {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
        {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
         "d174ab98d277d9f5a5611c2c9f419d9f"},
        {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
         "57edf4a22be3c955ac49da2e2107b67a"}};
    const AlgorithmHandle md5 = Open(BCRYPT_MD5_ALGORITHM);
    for (const ULONG flags : {ULONG{BCRYPT_HASH_REUSABLE_FLAG}, ULONG{0}}) {
        DigestHandle digest;
        const auto begin = [&] {
            return BCryptCreateHash(md5.Get(), digest.Put(), nullptr, 0, nullptr, 0, flags);
        };
        ASSERT_EQ(begin(), 0);
        for (const auto& c : kCases) {
            std::string text = c.text;
            std::string result(16, '\0');
            const auto half = static_cast<ULONG>(text.size() / 2);
            const auto rest = static_cast<ULONG>(text.size()) - half;
            EXPECT_EQ(BCryptHashData(digest.Get(), Pointer(text), half, 0), 0);
            EXPECT_EQ(BCryptHashData(digest.Get(), Pointer(text) + half, rest, 0), 0);
            EXPECT_EQ(BCryptFinishHash(digest.Get(), Pointer(result), 16, 0), 0);
            EXPECT_EQ(result, Bytes(c.digest)) << c.text;
            if (flags) continue;
            ASSERT_EQ(begin(), 0);
        }
    }
}

}  // namespace
}  // namespace platform
