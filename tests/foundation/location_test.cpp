#include <gtest/gtest.h>
#include <string>

#include "foundation/location_kind.h"
#include "foundation/paths.h"
#include "foundation/urls.h"
#include "platform/testing.h"
#include "tests/support/case_table.h"
#include "tests/support/fail_each_allocation.h"
#include "tests/support/test_profile.h"

namespace {

using namespace AUX;
using platform::ToUtf8;
using platform::WideString;
using test_support::FailEachAllocation;
using test_support::ReadCases;
using test_support::TestProfile;

std::string Text(const WString& text) { return ToUtf8(WStringView(text)); }

TEST(ClassifyLocation, FollowsTheTable) {
    const bool isWine = test_support::RunsUnderWine();
    for (const auto& row : ReadCases(FOUNDATION_CASES "locations.tsv", 4)) {
        if (isWine && row[3] == TEXT("not on wine")) continue;
        SCOPED_TRACE(ToUtf8(row[0]));
        WString scheme;
        ASSERT_TRUE(scheme.Assign(TEXT("old")));
        const LocationKind kind = ClassifyLocation(row[0].c_str(), &scheme);
        EXPECT_EQ(std::to_string(static_cast<unsigned>(kind)), ToUtf8(row[1]));
        EXPECT_EQ(Text(scheme), ToUtf8(row[2]));
    }
    EXPECT_EQ(ClassifyLocation(nullptr), LocationKind::None);
    WString text;
    ASSERT_TRUE(text.Assign(TEXT("tel:1")));
    EXPECT_EQ(ClassifyLocation(text.Text(), &text),
              LocationKind::Location | LocationKind::HasScheme);
    EXPECT_EQ(Text(text), "tel");
    EXPECT_EQ(FailEachAllocation([](const auto& hasFailed) {
                  WString scheme;
                  const LocationKind kind = ClassifyLocation(TEXT("tel:1"), &scheme);
                  EXPECT_EQ(kind == LocationKind::None, hasFailed());
              }),
              1u);
}

TEST(LocalPathFromText, TakesPathsAndTheirAddresses) {
    const WideString longAddress = TEXT("file:///C:/") + WideString(257, TEXT('x'));
    const struct {
        WideString text;
        const char* path;  // null: not local
    } kCases[] = {
        {TEXT("C:\\a b"), "C:\\a b"},
        {TEXT("c:"), "c:"},
        {TEXT("C:/a"), "C:/a"},
        {TEXT("C:a"), nullptr},
        {TEXT("1:\\a"), nullptr},
        {TEXT("\u00E9:\\a"), nullptr},
        {TEXT("\\\\s"), "\\\\s"},
        {TEXT("\\\\"), nullptr},
        {TEXT("\\a"), nullptr},
        {TEXT("a"), nullptr},
        {TEXT("http://h/"), nullptr},
        {TEXT("file:///C:/a%20b/c"), "C:\\a b\\c"},
        {TEXT("file://s/h/a"), "\\\\s\\h\\a"},
        {TEXT("file:a"), nullptr},
        {longAddress, nullptr},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(ToUtf8(c.text));
        WString path;
        ASSERT_TRUE(path.Assign(c.text.c_str()));
        bool exists = true;
        EXPECT_EQ(LocalPathFromText(path.Text(), &path, &exists), c.path != nullptr);
        EXPECT_EQ(Text(path), c.path ? c.path : "");
        EXPECT_FALSE(exists);
    }
    EXPECT_FALSE(LocalPathFromText(nullptr));
    EXPECT_EQ(FailEachAllocation([](const auto& hasFailed) {
                  WString path;
                  const bool isLocal = LocalPathFromText(TEXT("C:\\a"), &path);
                  EXPECT_NE(isLocal, hasFailed());
                  EXPECT_EQ(path.IsEmpty(), hasFailed());
              }),
              1u);
}

TEST(LocalPathFromText, FindsWhatExists) {
    TestProfile profile;
    const WideString file = profile.Path(TEXT("a b.txt"));
    ASSERT_TRUE(test_support::WriteWholeFile(file, "hello"));
    WideString address = TEXT("file:///") + profile.Path(TEXT("a%20b.txt"));
    for (const WideString& text : {file, address}) {
        SCOPED_TRACE(ToUtf8(text));
        WString path;
        bool exists = false;
        WIN32_FIND_DATAW found = {};
        EXPECT_TRUE(LocalPathFromText(text.c_str(), &path, &exists, &found, CheckExists::Yes));
        EXPECT_TRUE(exists);
        EXPECT_EQ(Text(path), ToUtf8(file));
        EXPECT_EQ(found.nFileSizeLow, 5u);
        // Without a look at the disk nothing is said of it.
        EXPECT_TRUE(LocalPathFromText(text.c_str(), &path, &exists, &found));
        EXPECT_FALSE(exists);
        EXPECT_EQ(found.nFileSizeLow, 0u);
    }
    WString path;
    bool exists = true;
    const WideString missing = profile.Path(TEXT("none"));
    EXPECT_TRUE(LocalPathFromText(missing.c_str(), &path, &exists, nullptr, CheckExists::Yes));
    EXPECT_FALSE(exists);
    // A relative name is local once it is found.
    EXPECT_TRUE(LocalPathFromText(TEXT("."), &path, &exists, nullptr, CheckExists::Yes));
    EXPECT_TRUE(exists);
    EXPECT_FALSE(LocalPathFromText(TEXT("none such"), &path, &exists, nullptr, CheckExists::Yes));
    EXPECT_TRUE(path.IsEmpty());
}

TEST(ParentFolderOf, EndsBehindTheLastSeparator) {
    const struct {
        const WCHAR* path;
        std::int64_t length;
        const char* folder;
    } kCases[] = {
        {TEXT("C:\\a\\b"), -1, "C:\\a\\"},
        {TEXT("a/b"), -1, "a/"},
        {TEXT("a/b\\"), -1, "a/b\\"},
        {TEXT("\\"), -1, "\\"},
        {TEXT("a"), -1, ""},
        {TEXT("C:"), -1, ""},
        {nullptr, -1, ""},
        {TEXT("a\\b\\c"), 3, "a\\"},
        {TEXT("a\\b"), 0, ""},
    };
    for (const auto& c : kCases) {
        WString folder;
        ASSERT_TRUE(folder.Assign(TEXT("old")));
        EXPECT_EQ(ParentFolderOf(c.path, folder, c.length), *c.folder != 0) << c.folder;
        EXPECT_EQ(Text(folder), c.folder);
    }
    WString own;
    ASSERT_TRUE(own.Assign(TEXT("a\\b")));
    EXPECT_TRUE(ParentFolderOf(own.Text(), own));
    EXPECT_EQ(Text(own), "a\\");
}

TEST(CombinePath, ResolvesANameInAFolder) {
    const WideString fits(254, TEXT('x'));
    const WideString tooLong(256, TEXT('x'));
    const struct {
        const WCHAR* name;
        const WCHAR* folder;
        WideString path;
    } kCases[] = {
        {TEXT("b"), TEXT("C:\\a"), TEXT("C:\\a\\b")},
        {TEXT("b\\"), TEXT("C:\\a\\"), TEXT("C:\\a\\b\\")},
        {TEXT("..\\b"), TEXT("C:\\a\\c"), TEXT("C:\\a\\b")},
        {TEXT("..\\..\\..\\b"), TEXT("C:\\a"), TEXT("C:\\b")},
        {TEXT("b\\.\\c"), TEXT("C:\\a"), TEXT("C:\\a\\b\\c")},
        {TEXT(".."), TEXT("C:\\a"), TEXT("C:\\")},
        {TEXT("\\b"), TEXT("C:\\a"), TEXT("C:\\b")},
        {TEXT("\\b"), TEXT("\\\\s\\h\\a"), TEXT("\\\\s\\h\\b")},
        {TEXT("D:\\b"), TEXT("C:\\a"), TEXT("D:\\b")},
        {TEXT("\\\\s\\h"), TEXT("C:\\a"), TEXT("\\\\s\\h")},
        {TEXT("x/y"), TEXT("C:\\a"), TEXT("C:\\a\\x/y")},
        {TEXT("b"), TEXT("a"), TEXT("a\\b")},
        {nullptr, TEXT("C:\\a"), TEXT("C:\\a")},
        {TEXT("b"), TEXT(""), TEXT("b")},
        {TEXT(""), nullptr, {}},
        {fits.c_str(), TEXT("C:\\a"), TEXT("C:\\a\\") + fits},
        {tooLong.c_str(), TEXT("C:\\a"), {}},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(ToUtf8(c.path));
        WString path;
        ASSERT_TRUE(path.Assign(TEXT("old")));
        EXPECT_EQ(CombinePath(c.name, c.folder, path), !c.path.empty());
        EXPECT_EQ(Text(path), ToUtf8(c.path));
    }
}

}  // namespace
