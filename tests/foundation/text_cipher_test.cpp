#include "foundation/text_cipher.h"

#include <gtest/gtest.h>
#include <string>

#include "tests/support/case_table.h"
#include "tests/support/fault_walk.h"

namespace {

using namespace AUX;
using platform::WideString;

constexpr char kKey[] = "0123456789abcdef";

std::uint32_t SizeOf(const std::string& bytes) { return static_cast<std::uint32_t>(bytes.size()); }

std::string Bytes(const WideString& hex) {
    std::string bytes;
    for (std::size_t i = 0; i < hex.size(); i += 2) {
        const std::string digits = platform::ToUtf8(hex.substr(i, 2));
        bytes += static_cast<char>(std::stoi(digits, nullptr, 16));
    }
    return bytes;
}

std::string TextOf(std::size_t length) {
    std::string text(length, '\0');
    for (std::size_t i = 0; i < length; ++i) text[i] = static_cast<char>(i * 7 + length);
    return text;
}

struct Keyed : TextCipher {
    explicit Keyed(const std::string& secret = kKey) { SetKey(secret.data(), SizeOf(secret)); }

    std::string Make(const std::string& text) {
        std::uint32_t size = 0;
        EXPECT_EQ(Encrypt(text.data(), SizeOf(text), nullptr, size), kStatusOk);
        std::string envelope(size, '\0');
        EXPECT_EQ(Encrypt(text.data(), SizeOf(text), envelope.data(), size), kStatusOk);
        EXPECT_EQ(size, envelope.size());
        return envelope;
    }
    /// Whether it opens as this text; if it does not, all must be as the failure promises.
    bool Opens(const std::string& envelope, const std::string& text) {
        std::uint32_t size = 77;
        const Status measured = Decrypt(envelope.data(), SizeOf(envelope), nullptr, size);
        EXPECT_EQ(size, measured ? 77 : text.size());
        std::string output(envelope.size() + 1, '\0');
        size = SizeOf(output);
        const Status status = Decrypt(envelope.data(), SizeOf(envelope), output.data(), size);
        EXPECT_EQ(status, measured);
        if (status == kStatusOk) return output.substr(0, size) == text;
        EXPECT_EQ(status, static_cast<Status>(0x80070057));
        EXPECT_EQ(size, output.size());
        EXPECT_EQ(output, std::string(output.size(), '\0'));
        return false;
    }
};

TEST(TextCipher, OpensWhatAnotherProgramMade) {
    for (const auto& row : test_support::ReadCases(FOUNDATION_CASES "text_cipher.tsv", 3)) {
        Keyed cipher(Bytes(row[0]));
        EXPECT_TRUE(cipher.Opens(Bytes(row[2]), Bytes(row[1]))) << platform::ToUtf8(row[0]);
    }
}

TEST(TextCipher, TakesKeysOfItsLengths) {
    const struct {
        std::uint32_t given;
        std::uint32_t length;
    } kCases[] = {{0, 16},  {1, 16},  {8, 16},  {20, 16}, {23, 16},
                  {24, 24}, {31, 24}, {32, 32}, {40, 32}};
    const std::string bytes(40, 'k');
    TextCipher cipher;
    std::uint32_t size = 100;
    char output[100];
    EXPECT_EQ(cipher.Encrypt("abc", 3, output, size), E_INVALIDARG);
    EXPECT_EQ(size, 100u);
    for (const auto& c : kCases) {
        cipher.SetKey(bytes.data(), c.given);
        EXPECT_EQ(cipher.KeyLength(), c.length) << c.given;
    }
    cipher.SetKey(nullptr, 16);
    EXPECT_EQ(cipher.Encrypt("abc", 3, output, size), E_INVALIDARG);
}

TEST(TextCipher, OpensItsOwnEnvelopesOfEachLength) {
    Keyed cipher;
    for (std::size_t length = 0; length <= 4096; ++length) {
        const std::string text = TextOf(length);
        const std::string envelope = cipher.Make(text);
        ASSERT_EQ(envelope.size(), ((length + 16) & ~std::size_t{15}) + 32);
        ASSERT_EQ(cipher.Opens(envelope, text), length > 0) << length;
        // Exactly the room that is needed, and a byte less.
        std::string output(length + 1, '!');
        std::uint32_t size = SizeOf(text);
        if (length == 0) continue;
        ASSERT_EQ(cipher.Decrypt(envelope.data(), SizeOf(envelope), output.data(), size), 0);
        ASSERT_EQ(output, text + '!');
        --size;
        ASSERT_EQ(cipher.Decrypt(envelope.data(), SizeOf(envelope), output.data(), size),
                  E_INVALIDARG);
        ASSERT_EQ(output.substr(length - 1), text.substr(length - 1) + '!');
    }
    EXPECT_NE(cipher.Make("abc"), cipher.Make("abc"));
}

TEST(TextCipher, NoticesEachDamage) {
    Keyed cipher;
    for (const std::size_t length : {1u, 5u, 15u, 16u, 31u, 100u}) {
        const std::string text = TextOf(length);
        const std::string envelope = cipher.Make(text);
        for (std::size_t bit = 0; bit < envelope.size() * 8; ++bit) {
            std::string damaged = envelope;
            damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ (1 << bit % 8));
            ASSERT_FALSE(cipher.Opens(damaged, text)) << length << ' ' << bit;
        }
        for (std::size_t size = 0; size < envelope.size(); ++size) {
            ASSERT_FALSE(cipher.Opens(envelope.substr(0, size), text)) << length << ' ' << size;
        }
        for (std::size_t i = 0; i < 16; ++i) {
            std::string key = kKey;
            ++key[i];
            ASSERT_FALSE(Keyed(key).Opens(envelope, text));
        }
        ASSERT_FALSE(Keyed(std::string(kKey) + kKey).Opens(envelope, text));
    }
}

TEST(TextCipher, ChecksWhatItIsGiven) {
    Keyed cipher;
    std::uint32_t size = 47;
    std::string room(64, '!');
    EXPECT_EQ(cipher.Encrypt(nullptr, 5, room.data(), size), E_INVALIDARG);
    EXPECT_EQ(cipher.Encrypt("hello", 5, room.data(), size), E_INVALIDARG);
    EXPECT_EQ(cipher.Encrypt("hello", 0xFFFFFFF0, nullptr, size), E_INVALIDARG);
    EXPECT_EQ(cipher.Decrypt(nullptr, 48, nullptr, size), E_INVALIDARG);
    EXPECT_EQ(size, 47u);
    EXPECT_EQ(room, std::string(64, '!'));
    room.replace(0, 5, "hello");
    size = 64;
    ASSERT_EQ(cipher.Encrypt(room.data(), 5, room.data(), size), kStatusOk);  // In its place.
    EXPECT_EQ(room.substr(48), std::string(16, '!'));
    EXPECT_TRUE(cipher.Opens(room.substr(0, size), "hello"));
}

TEST(TextCipher, FailsWholeWhenTheSystemDoes) {
    const std::string envelope = Keyed().Make("hello");
    const auto work = [&](auto hasFailed) {
        Keyed cipher;
        std::string room(48, '\0');
        std::uint32_t size = 48;
        if (IsFailure(cipher.Encrypt("hello", 5, room.data(), size))) {
            EXPECT_TRUE(hasFailed());
            EXPECT_EQ(room, std::string(48, '\0'));
        }
        size = 40;
        if (IsFailure(cipher.Decrypt(envelope.data(), 48, room.data(), size))) {
            EXPECT_TRUE(hasFailed());
            EXPECT_EQ(size, 40u);
        }
        if (!hasFailed()) return;
        EXPECT_TRUE(cipher.Opens(envelope, "hello")) << "a failure is forgotten by the next call";
    };
    const bool canFail = platform::testing::kOwnsTheSystem;
    EXPECT_GE(test_support::WalkFaults(work), canFail ? std::uint64_t{10} : std::uint64_t{0});
}

struct Text {
    Status status;
    std::uint32_t count;
    WideString text;
};

WStringView ViewOf(const WideString& text) { return {text.data(), text.size()}; }

template <class Call>
Text Turn(Call call, TextCipher* cipher, const WideString& text, std::uint32_t room) {
    Text result{0, room, WideString(room, '!')};
    result.status = call(cipher, ViewOf(text), result.text.data(), result.count);
    if (result.status == kStatusOk) result.text.resize(result.count);
    return result;
}

TEST(TextCipher, TurnsTextsBothWays) {
    Keyed cipher;
    Keyed wrong("another key");
    for (const WideString& text : {WideString(TEXT("x")), WideString(300, 'y'), WideString(2, 0)}) {
        const auto length = static_cast<std::uint32_t>(text.size());
        Text made = Turn(EncryptText, &cipher, text, 400);
        ASSERT_EQ(made.status, kStatusOk);
        EXPECT_EQ(made.text[0], 0);
        EXPECT_EQ(made.count, 1 + (((length * 2 + 16) & ~15u) + 32) / 2);
        std::uint32_t count = 0;
        EXPECT_EQ(EncryptText(&cipher, ViewOf(text), nullptr, count), kStatusOk);
        EXPECT_EQ(count, made.count);
        for (const WideString& form : {made.text, made.text.substr(1)}) {
            EXPECT_EQ(Turn(DecryptText, &cipher, form, length).text, text);
            const Text cut = Turn(DecryptText, &cipher, form, length - 1);
            EXPECT_EQ(cut.status, kStatusInsufficientBuffer);
            EXPECT_EQ(cut.count, length);
            EXPECT_EQ(DecryptText(&cipher, ViewOf(form), nullptr, count), kStatusOk);
            EXPECT_EQ(count, length);
            const Text refused = Turn(DecryptText, &wrong, form, 400);
            EXPECT_EQ(refused.status, static_cast<Status>(0x80090330));
            EXPECT_EQ(refused.count, 400u);
        }
        for (const std::uint32_t room : {0u, made.count - 1}) {
            const Text refused = Turn(EncryptText, &cipher, text, room);
            EXPECT_EQ(refused.status, static_cast<Status>(0x8007007A));
            EXPECT_EQ(refused.count, made.count);
        }
    }
    // An envelope of which the first unit happens to be U+0000.
    WideString zero;
    do {
        zero = Turn(EncryptText, &cipher, TEXT("x"), 100).text.substr(1);
    } while (zero[0] != 0);
    EXPECT_EQ(Turn(DecryptText, &cipher, zero, 100).text, TEXT("x"));
    for (const WideString& none : {WideString(), WideString(1, 0), WideString(30, 'z')}) {
        EXPECT_EQ(Turn(DecryptText, &cipher, none, 100).status, kStatusDecryptFailure);
    }
    const std::string half = '\0' + std::string(1, '\0') + cipher.Make("odd");
    const WideString odd(reinterpret_cast<const WCHAR*>(half.data()), half.size() / 2);
    EXPECT_EQ(Turn(DecryptText, &cipher, odd, 100).status, kStatusDecryptFailure);
}

TEST(TextCipher, CopiesTextsWithoutACipher) {
    for (const auto call : {EncryptText, DecryptText}) {
        EXPECT_EQ(Turn(call, nullptr, TEXT("abc"), 3).text, TEXT("abc"));
        const Text cut = Turn(call, nullptr, TEXT("abc"), 2);
        EXPECT_EQ(cut.status, static_cast<Status>(0x8007007A));
        EXPECT_EQ(cut.count, 3u);
        EXPECT_EQ(cut.text, TEXT("!!"));
        EXPECT_EQ(Turn(call, nullptr, {}, 2).count, 0u);
    }
}

}  // namespace
