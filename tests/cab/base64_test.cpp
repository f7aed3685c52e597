#include "cab/base64.h"

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include "cab/base64_kernels.h"
#include "foundation/memory_testing.h"
#include "foundation/system_facts.h"
#include "platform/processor.h"
#include "platform/text.h"

namespace {

using namespace AUX::CAB;
using AUX::WString;
using AUX::WStringView;
using Bytes = std::vector<std::uint8_t>;

platform::WideString Encode(const Bytes& bytes) {
    WString text;
    EXPECT_TRUE(Base64Encode(bytes.data(), bytes.size(), text));
    return platform::WideString(WStringView(text));
}

// The forms for newer processors give the front of what the whole gives.
void CheckForms(const Bytes& bytes, const platform::WideString& text) {
    const auto check = [&](auto encode, auto decode) {
        platform::WideString letters(text.size(), '-');
        const std::size_t taken = encode(bytes.data(), bytes.size(), letters.data());
        ASSERT_TRUE(taken % 3 == 0 && bytes.size() - taken < 64) << taken;
        ASSERT_EQ(letters.substr(0, taken / 3 * 4), text.substr(0, taken / 3 * 4));
        Bytes read(bytes.size() + 3, 0x5A);
        const std::size_t units = decode(text.data(), text.size() / 4 * 4, read.data());
        ASSERT_TRUE(units % 4 == 0 && text.size() - units <= 64) << units;
        read.resize(units / 4 * 3);
        ASSERT_EQ(read, Bytes(bytes.begin(), bytes.begin() + std::ssize(read)));
    };
    if (AUX::Facts().hasAvx2) check(EncodeBase64Avx2, DecodeBase64Avx2);
    if (platform::HasAvx512Compress()) check(EncodeBase64Avx512, DecodeBase64Avx512);
}

// A block of exactly the text's size, so that a read behind it shows.
Bytes Decode(const platform::WideString& text) {
    const std::vector<WCHAR> exact(text.begin(), text.end());
    Base64Bytes bytes;
    EXPECT_TRUE(Base64Decode({exact.data(), exact.size()}, bytes));
    return Bytes(bytes.Data(), bytes.Data() + bytes.Size());
}

TEST(Base64, KnownTexts) {
    const struct {
        const char* bytes;
        const WCHAR* text;
    } cases[] = {{"", TEXT("")},
                 {"f", TEXT("Zg==")},
                 {"fo", TEXT("Zm8=")},
                 {"foo", TEXT("Zm9v")},
                 {"foob", TEXT("Zm9vYg==")},
                 {"fooba", TEXT("Zm9vYmE=")},
                 {"\xff\xfe", TEXT("//4=")},
                 {"foobar", TEXT("Zm9vYmFy")},
                 {"\xfb\xef\xbe", TEXT("++++")}};
    for (const auto& c : cases) {
        const std::string bytes = c.bytes;
        EXPECT_EQ(Encode(Bytes(bytes.begin(), bytes.end())), c.text);
        EXPECT_EQ(Decode(c.text), Bytes(bytes.begin(), bytes.end()));
    }
    // Bits that are left over in the last unit are dropped.
    EXPECT_EQ(Decode(TEXT("Zh==")), Bytes{'f'});
    for (const WCHAR* const text :
         {TEXT("QQ=A"), TEXT("Q==="), TEXT("===="), TEXT("QQQQQ="), TEXT("QQ= "), TEXT("QQ\n=="),
          TEXT("Q=Q="), TEXT("QQ==QQQQ"), TEXT("QQQ"), TEXT("QQQ-"), TEXT("QQQ\u0151")}) {
        EXPECT_TRUE(Decode(text).empty()) << platform::ToUtf8(text);
    }
}

TEST(Base64, EveryLengthAndEveryBadUnit) {
    std::mt19937 random(7);
    for (std::size_t size = 0; size < 200; ++size) {
        Bytes bytes(size);
        for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());
        platform::WideString text = Encode(bytes);
        ASSERT_EQ(text.size(), Base64Length(size));
        ASSERT_EQ(Decode(text), bytes);
        CheckForms(bytes, text);
        if (size < 3) continue;
        const std::size_t at = random() % (size / 3 * 4);
        const std::size_t bad = random() % 0xFFFF;
        const bool isLetter = bad < 128 && (std::isalnum(static_cast<int>(bad)) || bad == '+' ||
                                            bad == '/' || bad == '=');
        text[at] = static_cast<WCHAR>(isLetter ? bad + 0x100 : bad);
        ASSERT_TRUE(Decode(text).empty()) << at << " " << bad;
    }
    // Each unit at each place of a register, against the alphabet.
    const platform::WideString letters =
        TEXT("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");
    for (unsigned unit = 0; unit < 0x180; ++unit) {
        platform::WideString text(64, 'A');
        text[unit % 60] = static_cast<WCHAR>(unit);
        const bool isIn = letters.find(static_cast<WCHAR>(unit)) != platform::WideString::npos;
        ASSERT_EQ(!Decode(text).empty(), isIn) << unit;
        ASSERT_EQ(Encode(Decode(text)) == text, isIn) << unit;
    }
}

TEST(Base64, TellsWhenMemoryRunsOut) {
    WString text;
    ASSERT_TRUE(text.Assign(TEXT("old")));
    Base64Bytes bytes;
    ASSERT_TRUE(Base64Decode(TEXT("QUJD"), bytes));
    {
        AUX::testing::AllocationWatch watch;
        watch.FailOnce(1);
        EXPECT_FALSE(Base64Encode("x", 1, text));
        watch.FailOnce(1);
        EXPECT_FALSE(Base64Decode(TEXT("QUJD"), bytes));
    }
    EXPECT_FALSE(Base64Encode("x", 0xFFFFFFFFFFFF, text));
    EXPECT_EQ(text, WStringView(TEXT("old")));
    EXPECT_EQ(bytes.Size(), 3u);
}

}  // namespace
