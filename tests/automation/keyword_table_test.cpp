#include "automation/keyword_table.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <sstream>
#include <string>

#include "platform/text.h"
#include "tests/support/fail_each_allocation.h"

namespace AUX {
namespace {

using platform::FromUtf8;

std::uint32_t Hash(const WCHAR* text, std::uint32_t length) {
    std::uint32_t hash = 7;
    for (std::uint32_t i = 0; i < length; ++i) hash = hash * 0x9E3779B1 + text[i];
    return hash & 0x7FFFFFFF;
}

TEST(KeywordTable, ReadsItsFields) {
    const struct {
        const char* spec;
        int least, most, otherwise;
        const char* prefix;
        const char* looked;  // name=number, parted by blanks; "*" is any other name
        unsigned count;
    } kCases[] = {
        {"a:1|b:2", 0, 9, 0, "", "a=1 b=2 c=0 A=1", 2},
        {"a:5", 0, 3, 0, "", "a=0", 0},
        {"a:0", 0, 9, 0, "", "a=0", 0},
        {"*:3|a:1", 0, 9, 0, "", "a=1 *=3", 1},
        {"*:3|*:4", 0, 9, 0, "", "*=3", 0},
        {"a:1|*:3", 0, 9, 0, "", "a=1 *=0", 1},
        {"*:9|a:1", 0, 3, 2, "", "a=1 *=2", 1},
        {"*|a:1", 0, 3, 2, "", "a=1 *=2", 1},
        {"a|b", 0, 9, 0, "", "a=1 b=1", 2},
        {"a|b:", 0, 9, 1, "", "a=0 b=0 *=1", 2},
        {"a|b", 0, 9, 2, "", "a=2 b=2", 0},
        {"a:12|b:-1|c:-12|d:-", -20, 9, 0, "", "a=0 b=-1 c=0 d=-3", 2},
        {"x:1", 0, 9, 0, "pre.", "x=0 pre.x=1", 1},
        {"a:1|a:2|b:1|b:0", 0, 9, 0, "", "a=2 b=1", 2},
        {" || a b:1 | c:2", 0, 9, 0, "", "a_b=0 c=2", 1},  // "1 " is no value
        {"c:1:2|d:1", 0, 9, 0, "", "c=0 d=1", 1},
        {"", 0, 9, 7, "", "*=7", 0},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.spec);
        KeywordTable table;
        table.Parse(WStringView(FromUtf8(c.spec)), c.least, c.most, c.otherwise,
                    WStringView(FromUtf8(c.prefix)));
        std::istringstream looked(c.looked);
        for (std::string row; looked >> row;) {
            const std::size_t equals = row.find('=');
            std::string name = row.substr(0, equals);
            std::replace(name.begin(), name.end(), '_', ' ');
            EXPECT_EQ(table.Lookup(FromUtf8(name).c_str()), std::stoi(row.substr(equals + 1)))
                << row;
        }
        EXPECT_EQ(table.entries.Count(), c.count);
    }
}

TEST(KeywordTable, FindsWhatAMapHasInBothModes) {
    std::mt19937 random(85);
    for (const KeywordHash hash : {KeywordHash{nullptr}, KeywordHash{Hash}}) {
        for (const bool isCaseSensitive : {false, true}) {
            KeywordTable table(hash, isCaseSensitive);
            std::map<std::string, int> expected;
            std::string spec;
            for (int i = 0; i < 300; ++i) {
                std::string key;
                for (auto k = random() % 3 + 1; k > 0; --k) key += "abXYZ"[random() % 5];
                const int value = static_cast<int>(random() % 9) + 1;
                spec.append(key).append(":").append(std::to_string(value)).append("|");
                std::string known = key;
                for (char& unit : known) {
                    if (!isCaseSensitive && unit < 'a') unit = static_cast<char>(unit + 0x20);
                }
                expected[known] = value;
            }
            table.Parse(WStringView(FromUtf8(spec)), 0, 9, 0, {});
            EXPECT_EQ(table.entries.Count(), expected.size());
            for (const auto& [key, value] : expected) {
                EXPECT_EQ(table.Lookup(FromUtf8(key).c_str()), value) << key;
                const platform::WideString longer = FromUtf8(std::string(key).append("q"));
                EXPECT_EQ(table.Lookup(longer.c_str()), 0);
                const auto length = static_cast<std::int32_t>(key.size());
                EXPECT_EQ(table.Lookup(longer.c_str(), length), hash ? value : 0) << "a part";
            }
            EXPECT_EQ(table.Lookup(nullptr), 0);
            EXPECT_EQ(table.Lookup(TEXT("")), 0);
        }
    }
}

TEST(KeywordTable, EndsWithWhatItHasWhenMemoryRunsOut) {
    for (const KeywordHash hash : {KeywordHash{nullptr}, KeywordHash{Hash}}) {
        test_support::FailEachAllocation([&](const auto& hasFailed) {
            KeywordTable table(hash, false);
            table.Parse(TEXT("alpha:1|beta:2|gamma:3|delta:4|epsilon:5"), 0, 9, 0, TEXT("name."));
            EXPECT_TRUE(hasFailed() || table.entries.Count() == 5);
            const bool isEmpty = table.entries.IsEmpty();
            const std::int32_t found = table.Lookup(TEXT("name.alpha"));
            EXPECT_TRUE(found == (isEmpty ? 0 : 1) || hasFailed());
        });
    }
}

}  // namespace
}  // namespace AUX
