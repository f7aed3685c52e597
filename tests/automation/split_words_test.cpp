#include "automation/split_words.h"

#include <gtest/gtest.h>
#include <string>

#include "platform/text.h"
#include "tests/support/fail_each_allocation.h"

namespace AUX {
namespace {

TEST(SplitWords, CutsAtWhiteSpaceOutsideQuotations) {
    const struct {
        const char* text;
        const char* words;  // each in brackets; "-" for no array
    } kCases[] = {
        {"", "-"},
        {" \t\n", ""},
        {"a  \"b c\" d", "[a][b c][d]"},
        {"\"\"", "[\"\"]"},
        {"\"\"\"", "[\"\"\"]"},
        {"\"ab\"cd", "[\"ab\"cd]"},
        {"\"a b\"cd e", "[\"a][b\"cd][e]"},
        {"\"ab", "[\"ab]"},
        {"\"a b", "[\"a][b]"},
        {"\"", "[\"]"},
        {"\"a\"\" b", "[a\"][b]"},
        {"\"\"a b\"", "[\"\"a][b\"]"},
        {"x\"a b\"", "[x\"a][b\"]"},
        {"\" \"", "[ ]"},
        {"a\xC2\xA0"
         "b\xE2\x80\x80"
         "c\xE2\x80\x8F"
         "d\xE2\x80\x90"
         "e",
         "[a][b][c][d\xE2\x80\x90"
         "e]"},
    };
    for (const auto& c : kCases) {
        Array<BSTR> words;
        const HRESULT result = SplitWords(platform::FromUtf8(c.text).c_str(), words);
        std::string shown = result == S_FALSE ? "-" : "";
        for (BSTR word : words) {
            shown.append("[").append(platform::ToUtf8({word, SysStringLen(word)})).append("]");
        }
        EXPECT_EQ(shown, c.words) << c.text;
        FreeWords(words);
    }
    Array<BSTR> none;
    EXPECT_EQ(SplitWords(nullptr, none), S_FALSE);
}

TEST(SplitWords, GivesAllBackWhenMemoryRunsOut) {
    test_support::FailEachAllocation([](const auto& hasFailed) {
        Array<BSTR> words;
        const HRESULT result = SplitWords(TEXT("a b c d e f g h i j k l m n o p q"), words);
        EXPECT_TRUE(result == S_OK || (result == E_OUTOFMEMORY && hasFailed()));
        EXPECT_EQ(words.Count(), result == S_OK ? 17u : 0u);
        FreeWords(words);
    });
}

}  // namespace
}  // namespace AUX
