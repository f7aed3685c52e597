#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <string>
#include <thread>

#include "foundation/library.h"
#include "foundation/status_category.h"
#include "foundation/status_text.h"
#include "platform/modules.h"
#include "tests/support/case_table.h"
#include "tests/support/fault_walk.h"

namespace {

using namespace AUX;
using platform::ToUtf8;

std::string TextOf(std::uint32_t status, bool messageOnly = false) {
    WString text;
    EXPECT_TRUE(StatusToText(static_cast<Status>(status), text, messageOnly));
    return ToUtf8({text.Text(), text.Length()});
}

// Made before the registry, so that it ends after it: the library still has to answer. A run that
// only lists the tests makes no registry.
struct LateCaller {
    bool hasRegistry = false;
    ~LateCaller() {
        if (!hasRegistry) return;
        const bool isTaken = RegisterStatusCategory(77, nullptr, 0, "Late");
        UnregisterStatusCategory(77);
        const bool isRight = TextOf(0x82020001) == "Error [System]: Invalid argument.";
        if (isTaken || !isRight) std::_Exit(3);
    }
} lateCaller;

class StatusTexts : public ::testing::Test {
protected:
    void SetUp() override {
        StartLibrary();
        lateCaller.hasRegistry = true;
    }
    void TearDown() override { EndLibrary(); }
};

TEST_F(StatusTexts, SayOriginAndMessage) {
    const StatusMessage first[] = {{1, "Own \t\r\n"}, {2, " \n"}, {3, "Ends."}, {1, "Hidden"}};
    const StatusMessage second[] = {{1, "Second"}};
    EXPECT_TRUE(RegisterStatusCategory(40, first, 4, "First"));
    EXPECT_TRUE(RegisterStatusCategory(40, second, 1, "Second"));
    EXPECT_TRUE(RegisterStatusCategory(0, second, 1, "Second"));
    EXPECT_TRUE(RegisterStatusCategory(41, nullptr, 9, ""));
    for (const auto& row : test_support::ReadCases(FOUNDATION_CASES "status.tsv", 2)) {
        const std::string code = ToUtf8(row[0]);
        const std::string whole = ToUtf8(row[1]);
        const auto status = static_cast<std::uint32_t>(std::strtoul(code.c_str(), nullptr, 16));
        EXPECT_EQ(TextOf(status), whole);
        const std::size_t prefix = whole.find("]: ");
        EXPECT_EQ(TextOf(status, true), whole.substr(prefix < whole.size() ? prefix + 3 : 0));
    }
    for (const std::uint32_t number : {40u, 40u, 41u}) UnregisterStatusCategory(number);
    EXPECT_EQ(TextOf(0x82280001), "Error [System]: Invalid argument.");
}

TEST_F(StatusTexts, ComeFromTheSystemAndItsModulesForTheirErrors) {
    const struct {
        std::uint32_t status;
        const char* prefix;
        std::uint32_t sameAs;  // has the same sentence
    } kCases[] = {{0x83FF0005, "Error [Operating system]: ", 5},
                  {0x80070057, "Error [System]: ", 87},
                  {0x00000020, "Success [System]: ", 0x83FF0020}};
    for (const auto& c : kCases) {
        const std::string text = TextOf(c.status);
        EXPECT_TRUE(text.starts_with(c.prefix) && text.ends_with('.')) << text;
        EXPECT_FALSE(text.ends_with("..") || text.find("Unknown") < text.size()) << text;
        EXPECT_EQ(TextOf(c.status, true), TextOf(c.sameAs, true));
    }
    EXPECT_EQ(TextOf(12007), "Success [System]: Unknown code: 0x00002EE7.");
    const platform::ModuleHandle internet(LoadLibraryW(TEXT("wininet.dll")));
    if (!internet) return;  // Only where there are modules with messages.
    EXPECT_TRUE(TextOf(12007).starts_with("Success [WinINet]: "));
    EXPECT_TRUE(TextOf(0x83FF2EE7).starts_with("Error [Operating system]: The"));
}

TEST_F(StatusTexts, FillOnlyTheirBuffer) {
    const Status status = static_cast<Status>(0x82020001);  // "Invalid argument"
    WCHAR buffer[20] = {};
    EXPECT_EQ(GetStatusMessage(2, status, nullptr, 0), 16u);
    buffer[8] = '#';
    EXPECT_EQ(GetStatusMessage(2, status, buffer, 8), 16u);
    EXPECT_EQ(platform::WideString(buffer, 9), platform::WideString(TEXT("Invalid\0#"), 9));
    EXPECT_EQ(GetStatusOrigin(13, status, buffer, 20), 12u) << "its bits do not count";
    EXPECT_EQ(platform::WideView(buffer), TEXT("Frame buffer"));
}

TEST_F(StatusTexts, KnowTheCategoriesThatAreRegistered) {
    std::mt19937 random(1951);
    const auto any = [&random] { return 100 + static_cast<std::uint32_t>(random() % 60); };
    const std::string names[] = {"a", "b", "c"};
    std::map<std::uint32_t, std::string> model;
    std::atomic<bool> hasEnded{false};
    std::thread reader([&hasEnded] {
        while (!hasEnded) EXPECT_TRUE(TextOf(0x82640001).ends_with("]: Invalid argument."));
    });
    for (int step = 0; step < 600; ++step) {
        const std::uint32_t number = any();
        const std::string& name = names[random() % 3];
        if (random() % 3 == 0) {
            UnregisterStatusCategory(number);
            model.erase(number);
        } else {
            EXPECT_TRUE(RegisterStatusCategory(number, nullptr, 0, name.c_str()));
            model.emplace(number, name);
        }
        const std::uint32_t asked = any();
        const std::string origin = model.contains(asked) ? model[asked] : "System";
        EXPECT_EQ(TextOf(0x82000001 | asked << 16), "Error [" + origin + "]: Invalid argument.");
    }
    hasEnded = true;
    reader.join();
    for (const auto& [number, name] : model) UnregisterStatusCategory(number);
}

TEST_F(StatusTexts, GetShorterWhenMemoryOrTheSystemFails) {
    for (const std::uint32_t code : {0x82020010u, 0x83FF0005u, 0x80070057u, 0x80990001u}) {
        const std::string whole = TextOf(code);
        const std::string sentence = whole.substr(whole.find("]: ") + 3);
        WString unknown;
        ASSERT_TRUE(unknown.Format(TEXT("Unknown error: 0x%08X."), code));
        const std::string notKnown = ToUtf8(unknown.Text());
        const std::string allowed[] = {whole, notKnown, "Error [Unknown]: " + sentence,
                                       whole.substr(0, whole.find("]: ") + 3) + notKnown};
        const auto check = [&](auto hasFailed) {
            const std::string text = TextOf(code);
            bool isBeginning = false;
            for (const std::string& one : allowed) isBeginning |= one.starts_with(text);
            EXPECT_TRUE(hasFailed() ? isBeginning : text == whole) << text;
        };
        EXPECT_GT(test_support::WalkFaults(check), 3u);
    }
}

}  // namespace
