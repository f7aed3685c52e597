#include "settings/password_text.h"

#include <gtest/gtest.h>
#include <random>
#include <string>

#include "foundation/memory_testing.h"
#include "platform/text.h"

namespace {

using platform::WideString;

std::string Encoded(const WideString& password) {
    AUX::AString text;
    EXPECT_TRUE(EncodePasswordText(AUX::WStringView(password), text));
    EXPECT_EQ(EncodedPasswordSize(static_cast<std::uint32_t>(password.size())), text.Length());
    return {text.Text(), text.Length()};
}

std::string Repeat(const char* text, int times) {
    std::string result;
    while (times-- > 0) result += text;
    return result;
}

TEST(EncodePasswordText, WritesTheGivenFormToTheByte) {
    // 'A' is 41 00: two units are the groups QQBB AEEA but for the last byte.
    const std::string line1 = Repeat("QQBBAEEA", 9) + "QQBB";
    const std::string line2 = Repeat("AEEAQQBB", 9) + "AEEA";
    const struct {
        const char* why;
        WideString password;
        std::string text;
    } kCases[] = {
        {"empty", TEXT(""), ""},
        {"two paddings", TEXT("ab"), "YQBiAA=="},
        {"surrogates, low byte first", {0xD83D, 0xDE00}, "PdgA3g=="},
        {"both last symbols", {0xFBFF, 0xFFEF}, "//vv/w=="},
        {"a padded group fills the line", WideString(28, 'A'), Repeat("QQBBAEEA", 9) + "QQA="},
        {"a padded group behind a full line", WideString(29, 'A'), line1 + "\r\nAA=="},
        {"full lines, nothing padded", WideString(57, 'A'), line1 + "\r\n" + line2 + "\r\n"},
        {"a padded group fills the second line", WideString(56, 'A'),
         line1 + "\r\n" + Repeat("AEEAQQBB", 9) + "AA=="},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(Encoded(c.password), c.text);
    }
}

TEST(DecodePasswordText, ReadsWhatEncodingWrites) {
    const unsigned seed = 20110407;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    for (std::size_t length = 0; length < 130; ++length) {
        WideString password(length, 0);
        for (WCHAR& unit : password) unit = static_cast<WCHAR>(random());
        const std::string encoded = Encoded(password);
        AUX::WString decoded;
        ASSERT_EQ(DecodePasswordText(AUX::AStringView(encoded), decoded), AUX::kStatusOk);
        ASSERT_EQ(WideString(AUX::WStringView(decoded)), password) << length;
    }
}

TEST(DecodePasswordText, StopsAtAZeroBetweenGroupsAndSkipsWhatIsNoSymbol) {
    using namespace std::string_literals;
    const struct {
        const char* why;
        std::string text;
        bool accepted;
        WideString password;
    } kCases[] = {
        {"empty", "", true, TEXT("")},
        {"line breaks and blanks inside", "Y Q\r\nA=\r\n", true, TEXT("a")},
        {"bytes above 127", "\xC3\xA9YQA\xFF=", true, TEXT("a")},
        {"zero at the start", "\0YQA="s, true, TEXT("")},
        {"zero behind a whole group", "YQBiAGMA\0YQA="s, true, TEXT("abc")},
        {"zero inside a group is skipped", "YQ\0BiAA=="s, true, TEXT("ab")},
        {"zero behind skipped characters lies inside a group", "=\0YQA"s, true, TEXT("a")},
        {"a lone symbol holds no byte", "Y", true, TEXT("")},
        {"one byte", "YQ==", false, TEXT("")},
        {"three bytes", "YQBi", false, TEXT("")},
        {"three bytes before a zero", "YQBi\0AGMA"s, false, TEXT("")},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.why);
        AUX::WString password;
        ASSERT_TRUE(password.Assign(TEXT("left from before")));
        EXPECT_EQ(DecodePasswordText(AUX::AStringView(c.text), password),
                  c.accepted ? AUX::kStatusOk : AUX::kStatusInvalidArgument);
        EXPECT_EQ(WideString(AUX::WStringView(password)), c.password);
    }
}

TEST(PasswordText, LackOfMemoryLeavesNothing) {
    AUX::AString text;
    AUX::WString password;
    AUX::testing::AllocationWatch watch;
    watch.FailFrom(1);
    EXPECT_FALSE(EncodePasswordText(TEXT("secret"), text));
    EXPECT_EQ(text.Length(), 0u);
    EXPECT_EQ(DecodePasswordText("YQA=", password), AUX::kStatusInsufficientMemory);
    EXPECT_EQ(password.Length(), 0u);
    EXPECT_EQ(watch.LiveBlocks(), 0);
}

TEST(WipeText, OverwritesTheWholeBlock) {
    AUX::WString text;
    ASSERT_TRUE(text.Append(TEXT("a long secret")));
    ASSERT_TRUE(text.SetLength(4));  // The rest still lies behind the end.
    const std::uint32_t capacity = text.Capacity();
    WipeText(text);
    EXPECT_TRUE(text.IsEmpty());
    ASSERT_EQ(text.Capacity(), capacity);
    for (std::uint32_t i = 0; i < 14; ++i) EXPECT_EQ(text.Data()[i], 0) << i;
}

}  // namespace
