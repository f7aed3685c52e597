#include <algorithm>
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
#include "platform/testing.h"
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
        WString text;
        (void)StatusToText(kStatusNotInitialized, text);
        const WStringView expected = TEXT("Error [System]: Component is not initialized.");
        if (isTaken || text != expected) std::_Exit(3);
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
    const struct {
        std::uint32_t status;
        const char* text;
    } kCases[] = {
        {0, "Success"},
        {0x82020010, "Error [IO subsystem]: Component is not initialized."},
        {0x82000010, "Error [Common]: Component is not initialized."},
        {0xC20203E8, "Failure [IO subsystem]: Insufficient memory."},
        {0xC2021001, "Failure [IO subsystem]: Unexpected error reading from file."},
        {0x820D1003, "Error [Frame buffer]: Error accessing temporary file."},
        {0x820104C7, "Error [Memory subsystem]: The operation was canceled by the user."},
        {0x820505DC, "Error [Codecs]: Incompatible internal format."},
        {0x42050000, "Warning [Codecs]: Ok."},
        {0x020505DC, "Success [Codecs]: Incompatible internal format."},
        {0x82991001, "Error [System]: Unknown error: 0x82991001."},
        {0x8202001E, "Error [IO subsystem]: Unknown error: 0x8202001E."},
        {0x83FFFFFE, "Error [Operating system]: Unknown error: 0x83FFFFFE."},
        {0x40020010, "Warning [System]: Unknown code: 0x40020010."},
    };
    for (const auto& c : kCases) {
        EXPECT_EQ(TextOf(c.status), c.text);
        const std::string whole = c.text;
        const std::size_t prefix = whole.find("]: ");
        const std::string sentence = prefix == std::string::npos ? whole : whole.substr(prefix + 3);
        EXPECT_EQ(TextOf(c.status, true), sentence);
    }
    EndLibrary();
    EXPECT_EQ(TextOf(0x820505DC), "Error [System]: Incompatible internal format.");
}

TEST_F(StatusTexts, ComeFromTheSystemForItsErrors) {
    const struct {
        std::uint32_t status;
        const char* prefix;
        std::uint32_t sameAs;  // has the same sentence
    } kCases[] = {{0x83FF0005, "Error [Operating system]: ", 5},
                  {0x80070057, "Error [System]: ", 87},
                  {0x00000020, "Success [System]: ", 0x83FF0020}};
    for (const auto& c : kCases) {
        const std::string text = TextOf(c.status);
        ASSERT_TRUE(text.starts_with(c.prefix)) << text;
        EXPECT_EQ(text.find_first_of("\r\n"), std::string::npos);
        EXPECT_TRUE(text.ends_with('.') && !text.ends_with("..")) << text;
        EXPECT_EQ(text.find("Unknown"), std::string::npos);
        EXPECT_EQ(TextOf(c.status, true), TextOf(c.sameAs, true));
    }
}

TEST_F(StatusTexts, AskModulesThatAreLoaded) {
    constexpr std::uint32_t kNameNotResolved = 12007;
    EXPECT_EQ(TextOf(kNameNotResolved), "Success [System]: Unknown code: 0x00002EE7.");
    const platform::ModuleHandle internet(LoadLibraryW(TEXT("wininet.dll")));
    if (!internet) GTEST_SKIP() << "there are no modules with messages here";
    EXPECT_TRUE(TextOf(kNameNotResolved).starts_with("Success [WinINet]: "));
    EXPECT_TRUE(TextOf(0x83FF2EE7).starts_with("Error [Operating system]: The"));
}

TEST_F(StatusTexts, FillOnlyTheirBuffer) {
    const Status status = static_cast<Status>(0x82020001);  // "Invalid argument"
    WCHAR buffer[20] = {};
    EXPECT_EQ(GetStatusMessage(2, status, nullptr, 0), 16u);
    buffer[8] = '#';
    EXPECT_EQ(GetStatusMessage(2, status, buffer, 8), 16u);
    EXPECT_EQ(platform::WideString(buffer, 9), platform::WideString(TEXT("Invalid\0#"), 9));
    EXPECT_EQ(GetStatusOrigin(2, status, buffer, 20), 12u);
    EXPECT_EQ(platform::WideView(buffer), TEXT("IO subsystem"));
    // The category counts, not the bits of the status.
    EXPECT_EQ(GetStatusOrigin(13, status, buffer, 1), 12u);
    EXPECT_EQ(buffer[0], 0);
}

TEST_F(StatusTexts, LeaveTheBlankThatIsAllOfAMessage) {
    const StatusMessage first[] = {{1, "Own \t\r\n"}, {2, " \n"}, {3, "Ends."}, {1, "Hidden"}};
    const StatusMessage second[] = {{1, "Second"}};
    EXPECT_TRUE(RegisterStatusCategory(40, first, 4, "First"));
    EXPECT_TRUE(RegisterStatusCategory(40, second, 1, "Second"));
    EXPECT_TRUE(RegisterStatusCategory(0, second, 1, "Second"));
    EXPECT_TRUE(RegisterStatusCategory(41, nullptr, 9, ""));
    EXPECT_EQ(TextOf(0x82280001), "Error [First]: Own.");
    EXPECT_EQ(TextOf(0x82280002), "Error [First]:  .");
    EXPECT_EQ(TextOf(0x82280003), "Error [First]: Ends.");
    EXPECT_EQ(TextOf(0x82000001), "Error [Common]: Invalid argument.");
    EXPECT_EQ(TextOf(0x82290001), "Error [System]: Invalid argument.");
    UnregisterStatusCategory(40);
    UnregisterStatusCategory(40);
    UnregisterStatusCategory(41);
    EXPECT_EQ(TextOf(0x82280001), "Error [System]: Invalid argument.");
}

TEST_F(StatusTexts, KnowTheCategoriesThatAreRegistered) {
    constexpr unsigned kSeed = 1951;
    SCOPED_TRACE(kSeed);
    std::mt19937 random(kSeed);
    const std::string names[] = {"a", "b", "c"};
    std::map<std::uint32_t, std::string> model;
    for (int step = 0; step < 3000; ++step) {
        const std::uint32_t number = 100 + static_cast<std::uint32_t>(random() % 60);
        const std::string& name = names[random() % 3];
        if (random() % 3 == 0) {
            UnregisterStatusCategory(number);
            model.erase(number);
        } else {
            ASSERT_TRUE(RegisterStatusCategory(number, nullptr, 0, name.c_str()));
            model.emplace(number, name);
        }
        const std::uint32_t asked = 100 + static_cast<std::uint32_t>(random() % 60);
        const auto known = model.find(asked);
        const std::string origin = known == model.end() ? "System" : known->second;
        ASSERT_EQ(TextOf(0x82000001 | asked << 16), "Error [" + origin + "]: Invalid argument.");
    }
    for (const auto& [number, name] : model) UnregisterStatusCategory(number);
}

TEST_F(StatusTexts, GetShorterWhenMemoryOrTheSystemFails) {
    const struct {
        std::uint32_t code;
        const char* severity;
        const char* unknown;
    } kCases[] = {{0x82020010, "Error", "Unknown error: 0x82020010."},
                  {0x83FF0005, "Error", "Unknown error: 0x83FF0005."},
                  {0x80070057, "Error", "Unknown error: 0x80070057."},
                  {0x00002EE7, "Success", "Unknown code: 0x00002EE7."}};
    for (const auto& c : kCases) {
        const std::string whole = TextOf(c.code);
        const std::size_t sentence = whole.find("]: ") + 3;
        const std::string allowed[] = {
            whole, c.unknown, whole.substr(0, sentence) + c.unknown,
            c.severity + std::string(" [Unknown]: ") + whole.substr(sentence)};
        const std::uint64_t runs = test_support::WalkFaults([&](auto hasFailed) {
            const std::string text = TextOf(c.code);
            const bool isBeginning =
                std::any_of(std::begin(allowed), std::end(allowed),
                            [&](const std::string& one) { return one.starts_with(text); });
            EXPECT_TRUE(hasFailed() ? isBeginning : text == whole) << text;
        });
        EXPECT_GT(runs, 3u);
    }
}

TEST_F(StatusTexts, AreReadWhileCategoriesComeAndGo) {
    std::thread writer([] {
        for (int i = 0; i < 2000; ++i) {
            const std::string name = "Passing " + std::to_string(i);
            (void)RegisterStatusCategory(300, nullptr, 0, name.c_str());
            UnregisterStatusCategory(300);  // Its name ends here.
        }
    });
    for (int i = 0; i < 2000; ++i) {
        const std::string text = TextOf(0x832C0001);
        ASSERT_TRUE(text.starts_with("Error [Pass") || text.starts_with("Error [S")) << text;
    }
    writer.join();
}

}  // namespace
