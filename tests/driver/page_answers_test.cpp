#include <gtest/gtest.h>

#include "driver/clean_title.h"
#include "driver/document_height.h"
#include "driver/protected_mode.h"
#include "tests/driver/command_test.h"

namespace {

using platform::WideString;

TEST(CleanTitle, KeepsWhatAFileNameMayHoldOfTheFirst41Characters) {
    const struct {
        const char* why;
        WideString title;
        WideString name;
    } kCases[] = {
        {"empty", TEXT(""), TEXT("")},
        {"all that is removed", TEXT("|\\?*<\":>+[]/-."), TEXT("")},
        {"the neighbours stay", TEXT("!#$%&'(),;=@^_`{}~"), TEXT("!#$%&'(),;=@^_`{}~")},
        {"mixed", TEXT(" a-b.c: d "), TEXT(" abc d ")},
        {"42 characters", WideString(42, 'x'), WideString(41, 'x')},
        {"removed ones count", WideString(40, '-') + TEXT("ab"), TEXT("a")},
        {"41 hyphens", WideString(41, '-') + TEXT("abc"), TEXT("")},
        {"length counts, not a zero", WideString({'a', 0, 'b'}), WideString({'a', 0, 'b'})},
    };
    AUX::WString name;
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.why);
        CleanTitle(c.title.data(), static_cast<std::uint32_t>(c.title.size()), name);
        EXPECT_EQ(WideString(AUX::WStringView(name)), c.name);
    }
    CleanTitle(nullptr, 0, name);
    EXPECT_TRUE(name.IsEmpty());
}

TEST(MeasureDocumentHeight, IsTheHigherOfRootAndBodyAndNeverNothing) {
    const struct {
        const char* why;
        std::optional<LONG> root, body;
        IID refused;
        std::uint32_t height;
    } kCases[] = {
        {"root higher", 2000, 1500, {}, 2000},
        {"body higher", 1500, 2000, {}, 2000},
        {"no root", {}, 3, {}, 3},
        {"no body", 3, {}, {}, 3},
        {"root out of reach", 5000, 700, platform::InterfaceId<IHTMLDocument3>(), 700},
        {"both nothing", 0, 0, {}, 800},
        {"less than nothing", -5, -7, {}, 800},
        {"elements without heights", 9, 9, platform::InterfaceId<IHTMLElement2>(), 800},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.why);
        fake::Page page;
        page.rootHeight = c.root;
        page.bodyHeight = c.body;
        page.refused = c.refused;
        const auto document = platform::MakeObject<fake::Document>(page);
        EXPECT_EQ(MeasureDocumentHeight(document.Get()), c.height);
        document->AddRef();
        EXPECT_EQ(document->Release(), 1u) << "a reference was kept";
    }
}

class ProtectedModeTest : public driver_test::CommandTest {};

TEST_F(ProtectedModeTest, KeepsAnAnswerThatIsOneAndAsksAgainAfterOthers) {
    const struct {
        const char* answer;
        HRESULT result;
        BOOL flag;
        bool isKept;
    } kCases[] = {
        {"1", S_OK, TRUE, true},           {"0", S_OK, FALSE, true},
        {nullptr, E_NOTIMPL, FALSE, true}, {"fail:80070005", E_ACCESSDENIED, FALSE, false},
        {"fail:1", S_FALSE, FALSE, false},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.answer ? c.answer : "none");
        driver_test::SetFreshProtectedAnswer(c.answer);
        BOOL flag = 7;
        EXPECT_EQ(IsProtectedMode(flag), c.result);
        EXPECT_EQ(flag, c.flag);
        // Another answer shows whether the first was kept.
        driver_test::SetProtectedAnswer(c.flag ? "0" : "1");
        EXPECT_EQ(IsProtectedMode(flag), c.isKept ? c.result : S_OK);
        EXPECT_EQ(flag, c.isKept ? c.flag : TRUE);
    }
    browserModule_.Reset();
    EXPECT_FALSE(GetModuleHandleW(TEXT("ieframe.dll"))) << "a use was not given back";
}

}  // namespace
