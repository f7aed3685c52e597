// The text cipher beside the same envelopes made by libcrypto's own calls, with contexts that are
// used again, as the cipher does. A table at the end gives the times by libcrypto's.

#include <cstring>
#include <openssl/evp.h>
#include <string>
#include <x86intrin.h>

#include "bench/ratio_table.h"
#include "foundation/text_cipher.h"

namespace {

using bench::RatioTable;

constexpr char kKey[] = "0123456789abcdef";
constexpr std::uint32_t kBlock = 16;

struct Direct {
    Direct() {
        EVP_CipherInit_ex2(aes, cipher, Key(), nullptr, 1, nullptr);
        EVP_CIPHER_CTX_set_padding(aes, 0);
        EVP_CipherInit_ex2(back, cipher, Key(), nullptr, 0, nullptr);
        EVP_CIPHER_CTX_set_padding(back, 0);
        EVP_DigestInit_ex2(digest, md5, nullptr);
    }
    static const unsigned char* Key() { return reinterpret_cast<const unsigned char*>(kKey); }

    void Hash(const void* bytes, std::size_t size, unsigned char* result) const {
        unsigned written = 0;
        EVP_DigestInit_ex2(digest, nullptr, nullptr);
        EVP_DigestUpdate(digest, bytes, size);
        EVP_DigestFinal_ex(digest, result, &written);
    }
    void Make(const char* text, std::uint32_t size, unsigned char* envelope) const {
        unsigned char source[8 + kBlock];
        const std::uint64_t stamp = __rdtsc();
        Hash(text, size, source + 8);
        std::memcpy(source, &stamp, 8);
        Hash(source, sizeof source, envelope);
        const std::uint32_t whole = size / kBlock * kBlock;
        unsigned char last[kBlock];
        std::memset(last, static_cast<int>(kBlock - size % kBlock), kBlock);
        std::memcpy(last, text + whole, size % kBlock);
        int moved = 0;
        EVP_CipherInit_ex2(aes, nullptr, nullptr, envelope, 1, nullptr);
        EVP_CipherUpdate(aes, envelope + 16, &moved, source + 8, kBlock);
        EVP_CipherUpdate(aes, envelope + 32, &moved, reinterpret_cast<const unsigned char*>(text),
                         static_cast<int>(whole));
        EVP_CipherUpdate(aes, envelope + 32 + whole, &moved, last, kBlock);
    }
    bool Open(const unsigned char* envelope, std::uint32_t size, unsigned char* text) const {
        unsigned char stored[kBlock];
        unsigned char hash[kBlock];
        const std::uint32_t body = size - 32;
        int moved = 0;
        EVP_CipherInit_ex2(back, nullptr, nullptr, envelope, 0, nullptr);
        EVP_CipherUpdate(back, stored, &moved, envelope + 16, kBlock);
        EVP_CipherUpdate(back, text, &moved, envelope + 32, static_cast<int>(body));
        Hash(text, body - text[body - 1], hash);
        return std::memcmp(hash, stored, kBlock) == 0;
    }

    EVP_CIPHER* cipher = EVP_CIPHER_fetch(nullptr, "AES-128-CBC", nullptr);
    EVP_MD* md5 = EVP_MD_fetch(nullptr, "MD5", nullptr);
    EVP_CIPHER_CTX* aes = EVP_CIPHER_CTX_new();
    EVP_CIPHER_CTX* back = EVP_CIPHER_CTX_new();
    EVP_MD_CTX* digest = EVP_MD_CTX_new();
};

template <std::uint32_t size>
void MakeByCipher(benchmark::State& state) {
    AUX::TextCipher cipher;
    cipher.SetKey(kKey, 16);
    const std::string text(size, 'x');
    std::string envelope(size + 48, '\0');
    for (auto _ : state) {
        auto room = static_cast<std::uint32_t>(envelope.size());
        if (cipher.Encrypt(text.data(), size, envelope.data(), room)) {
            return state.SkipWithError("cannot encipher");
        }
        benchmark::ClobberMemory();
    }
}
template <std::uint32_t size>
void MakeDirectly(benchmark::State& state) {
    static const Direct direct;
    const std::string text(size, 'x');
    std::string envelope(size + 48, '\0');
    for (auto _ : state) {
        direct.Make(text.data(), size, reinterpret_cast<unsigned char*>(envelope.data()));
        benchmark::ClobberMemory();
    }
}
template <std::uint32_t size>
void OpenByCipher(benchmark::State& state) {
    AUX::TextCipher cipher;
    cipher.SetKey(kKey, 16);
    std::string text(size, 'x');
    std::string envelope(size + 48, '\0');
    auto made = static_cast<std::uint32_t>(envelope.size());
    if (cipher.Encrypt(text.data(), size, envelope.data(), made)) {
        return state.SkipWithError("cannot encipher");
    }
    for (auto _ : state) {
        std::uint32_t room = size;
        if (cipher.Decrypt(envelope.data(), made, text.data(), room)) {
            return state.SkipWithError("cannot decipher");
        }
        benchmark::ClobberMemory();
    }
}
template <std::uint32_t size>
void OpenDirectly(benchmark::State& state) {
    static const Direct direct;
    const std::string text(size, 'x');
    std::string envelope(size + 48, '\0');
    std::string opened(size + 16, '\0');
    direct.Make(text.data(), size, reinterpret_cast<unsigned char*>(envelope.data()));
    for (auto _ : state) {
        if (!direct.Open(reinterpret_cast<unsigned char*>(envelope.data()), size + 48,
                         reinterpret_cast<unsigned char*>(opened.data()))) {
            return state.SkipWithError("cannot decipher");
        }
        benchmark::ClobberMemory();
    }
}

struct Comparison {
    const char* workload;
    void (*own)(benchmark::State&);
    void (*others)(benchmark::State&);
};
constexpr Comparison kComparisons[] = {
    {"encipher_64", MakeByCipher<64>, MakeDirectly<64>},
    {"encipher_4096", MakeByCipher<4096>, MakeDirectly<4096>},
    {"decipher_64", OpenByCipher<64>, OpenDirectly<64>},
    {"decipher_4096", OpenByCipher<4096>, OpenDirectly<4096>},
};

}  // namespace

int main(int count, char** arguments) {
    for (const Comparison& row : kComparisons) {
        RatioTable::Add(row.workload, "library", row.own);
        RatioTable::Add(row.workload, "libcrypto", row.others);
    }
    RatioTable table;
    if (!table.RunAll(count, arguments)) return 2;
    RatioTable::PrintHead("time by libcrypto's", {"library", "libcrypto"});
    for (const Comparison& row : kComparisons) {
        table.PrintRow(row.workload, {"library", "libcrypto"}, "libcrypto", 1.05);
    }
}
