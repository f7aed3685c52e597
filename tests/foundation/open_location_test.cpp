#include "foundation/open_location.h"

#include <gtest/gtest.h>

#include "platform/registry.h"
#include "platform/shell.h"
#include "platform/testing.h"
#include "platform/user.h"
#include "tests/support/case_table.h"
#include "tests/support/fail_each_allocation.h"
#include "tests/support/test_profile.h"

namespace {

using namespace AUX;
using platform::ToUtf8;
using platform::WideString;
using platform::testing::InjectedFault;
using platform::testing::ShellRecorder;
using platform::testing::ShellRequest;
using test_support::TestProfile;

std::string Handler() {
    WString handler;
    EXPECT_TRUE(DefaultHandlerOf(TEXT("http"), handler));
    return ToUtf8(WStringView(handler));
}

/// A machine with a program for the addresses of the web.
class OpenLocationTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!platform::testing::kOwnsTheSystem) return;
        const WCHAR* kKey = TEXT("Software\\Classes\\http\\shell\\open\\command");
        const WideString command = TEXT("\"C:\\web browser.exe\" \"%1\"");
        HKEY key = nullptr;
        RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr);
        RegSetValueExW(key, nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(command.c_str()),
                       static_cast<DWORD>((command.size() + 1) * sizeof(WCHAR)));
        RegCloseKey(key);
    }

    TestProfile profile_;
};

TEST_F(OpenLocationTest, AsksTheShellInTheRightWords) {
    const std::string web = Handler();
    const HCURSOR old = SetCursor(LoadCursorW(nullptr, IDC_ARROW));
    const HCURSOR wait = LoadCursorW(nullptr, IDC_WAIT);
    for (const auto& row : test_support::ReadCases(FOUNDATION_CASES "open_location.tsv", 5)) {
        SCOPED_TRACE(ToUtf8(row[0]));
        std::vector<bool> answers;
        for (const WCHAR answer : row[2]) answers.push_back(answer == TEXT('+'));
        const ShellRecorder recorder(answers);
        const UseBrowser useBrowser = row[1].empty() ? UseBrowser::No : UseBrowser::Yes;
        EXPECT_EQ(OpenLocation(row[0].c_str(), useBrowser), row[3] == TEXT("+"));
        std::string requests;
        for (const ShellRequest& request : recorder.Requests()) {
            EXPECT_EQ(ToUtf8(request.verb), "open");
            EXPECT_EQ(request.cursor, wait);
            const std::string file = ToUtf8(request.file);
            requests += (file == web ? "WEB" : file) + "|" + ToUtf8(request.parameters) + "|" +
                        std::to_string(request.mask) + " ";
        }
        EXPECT_EQ(requests, ToUtf8(row[4]) + (row[4].empty() ? "" : " "));
    }
    EXPECT_FALSE(OpenLocation(nullptr, UseBrowser::No));
    EXPECT_EQ(SetCursor(old), LoadCursorW(nullptr, IDC_ARROW)) << "not put back";
}

TEST_F(OpenLocationTest, KnowsHandlersAndSaysSo) {
    EXPECT_EQ(Handler() == "C:\\web browser.exe", platform::testing::kOwnsTheSystem);
    for (const WCHAR* unknown : {TEXT("nosuchprotocol"), TEXT(".nosuch"), TEXT("")}) {
        WString handler;
        ASSERT_TRUE(handler.Assign(TEXT("old")));
        EXPECT_FALSE(DefaultHandlerOf(unknown, handler));
        EXPECT_TRUE(handler.IsEmpty());
    }
}

TEST_F(OpenLocationTest, FailsWithoutMemory) {
    test_support::FailEachAllocation([](const auto& hasFailed) {
        const ShellRecorder recorder({false});
        const bool isOpened = OpenLocation(TEXT("file:///a b#c"), UseBrowser::No);
        // Without memory for the escaped form the plain one serves.
        const bool isPlain = recorder.Requests().size() == 2 &&
                             recorder.Requests()[1].parameters == TEXT("file:///a b#c");
        EXPECT_NE(isOpened && !isPlain, hasFailed());
    });
}

constexpr HRESULT kAnyFailure = E_FAIL;

class RevealItemsTest : public ::testing::Test {
protected:
    void SetUp() override {
        for (const WCHAR* name : {TEXT("a"), TEXT("b")}) {
            ASSERT_TRUE(test_support::WriteWholeFile(profile_.Path(name), "x"));
        }
        folder_ = profile_.Folder().substr(0, profile_.Folder().size() - 1);
    }

    /// \return the folder's path and those of the items, one a line.
    std::string Reveal(const WideString& folder, const std::vector<WideString>& names,
                       NamesAreRelative relative, HRESULT expected) {
        Array<const WCHAR*> list;
        for (const WideString& name : names) EXPECT_TRUE(list.Add(name.c_str()));
        const ShellRecorder recorder(answers_);
        const HRESULT result = RevealItems(folder.c_str(), list, relative);
        EXPECT_TRUE(result == expected || (expected == kAnyFailure && FAILED(result))) << result;
        std::string text;
        for (const ShellRequest& request : recorder.Requests()) {
            WideString file = request.file;
            if (file.back() == '\\') file.pop_back();  // as some shells do
            text += std::string(request.call) + " " + ToUtf8(file) + "\n";
            for (const WideString& item : request.items) text += ToUtf8(item) + "\n";
        }
        return text;
    }

    TestProfile profile_;
    WideString folder_;
    std::vector<bool> answers_;
};

TEST_F(RevealItemsTest, SelectsWhatIsThere) {
    constexpr NamesAreRelative kRelative = NamesAreRelative::Yes;
    constexpr NamesAreRelative kWhole = NamesAreRelative::No;
    const WideString a = profile_.Path(TEXT("a"));
    const WideString b = profile_.Path(TEXT("b"));
    const std::string shown = "SHOpenFolderAndSelectItems " + ToUtf8(folder_) + "\n";
    const std::string both = shown + ToUtf8(a) + "\n" + ToUtf8(b) + "\n";
    const std::vector<WideString> relative = {TEXT("a"), TEXT("none"), TEXT(""), TEXT(".\\b"),
                                              WideString(300, TEXT('x'))};
    EXPECT_EQ(Reveal(folder_, relative, kRelative, S_OK), both);
    EXPECT_EQ(Reveal(TEXT("\t\r\n ") + folder_ + TEXT(" \n"), {a, b}, kWhole, S_OK), both);
    EXPECT_EQ(Reveal(folder_, {}, kWhole, S_OK), shown);
    const WideString missing = profile_.Path(TEXT("none"));
    Reveal(missing, {a}, kWhole, kAnyFailure);
    EXPECT_EQ(Reveal(TEXT(" "), {a, b}, kWhole, S_OK), both) << "the folder of the first name";

    EXPECT_EQ(Reveal(TEXT(" \t"), {}, kWhole, E_INVALIDARG), "");
    EXPECT_EQ(Reveal(TEXT(""), {a}, kRelative, E_INVALIDARG), "");
    EXPECT_EQ(Reveal(TEXT(""), {TEXT("a")}, kWhole, E_INVALIDARG), "");
    EXPECT_EQ(Reveal(TEXT(" http://h/a "), {a}, kWhole, S_OK), "ShellExecuteExW http://h/a\n");
    answers_ = {false};
    EXPECT_EQ(Reveal(TEXT("tel:1"), {a}, kWhole, S_FALSE), "ShellExecuteExW tel:1\n");
    EXPECT_EQ(Reveal(folder_, {a}, kWhole, kAnyFailure), shown + ToUtf8(a) + "\n");
    answers_ = {};
    EXPECT_EQ(Reveal(TEXT("ftp://h/"), {a}, kWhole, kAnyFailure), "") << "no location to open";
}

TEST_F(RevealItemsTest, ExploresTheFolderWhereItemsCannotBeSelected) {
    if (!platform::testing::kOwnsTheSystem) return;
    const InjectedFault missing("GetProcAddress", 1, ERROR_PROC_NOT_FOUND);
    answers_ = {false};
    EXPECT_EQ(Reveal(folder_, {}, NamesAreRelative::No, S_OK),
              "ShellExecuteW " + ToUtf8(folder_) + "\n");
}

TEST_F(RevealItemsTest, SaysThatMemoryRanOut) {
    test_support::FailEachAllocation([this](const auto& hasFailed) {
        const ShellRecorder recorder;
        Array<const WCHAR*> names;
        const WCHAR* const name = TEXT("a");
        const bool isListed = names.Add(name);
        const HRESULT result = RevealItems(folder_.c_str(), names, NamesAreRelative::Yes);
        const bool isWhole =
            recorder.Requests().size() == 1 && recorder.Requests()[0].items.size() == 1;
        // Some requests are tried again with less.
        EXPECT_TRUE(hasFailed() || (isListed && result == S_OK && isWhole));
        EXPECT_TRUE(result == S_OK || result == E_OUTOFMEMORY);
    });
}

}  // namespace
