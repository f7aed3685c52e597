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
    for (const auto& row : ReadCases(FOUNDATION_CASES "local_paths.tsv", 2)) {
        SCOPED_TRACE(ToUtf8(row[0]));
        WString path;
        ASSERT_TRUE(path.Assign(row[0].c_str()));
        bool exists = true;
        EXPECT_EQ(LocalPathFromText(path.Text(), &path, &exists), !row[1].empty());
        EXPECT_EQ(Text(path), ToUtf8(row[1]));
        EXPECT_FALSE(exists);
    }
    for (const std::size_t units : {256u, 257u}) {  // 259 and 260 with the drive
        const WideString address = TEXT("file:///C:/") + WideString(units, TEXT('x'));
        EXPECT_EQ(LocalPathFromText(address.c_str()), units == 256);
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

TEST(CombinePath, FollowsTheTable) {
    for (const auto& row : ReadCases(FOUNDATION_CASES "combine_path.tsv", 3)) {
        SCOPED_TRACE(ToUtf8(row[2]));
        WString path;
        ASSERT_TRUE(path.Assign(row[1].c_str()));
        EXPECT_EQ(CombinePath(row[0].c_str(), path.Text(), path), !row[2].empty());
        EXPECT_EQ(Text(path), ToUtf8(row[2]));
    }
    WString path;
    EXPECT_TRUE(CombinePath(WideString(254, TEXT('x')).c_str(), TEXT("C:\\a"), path));
    EXPECT_FALSE(CombinePath(WideString(256, TEXT('x')).c_str(), TEXT("C:\\a"), path));
    EXPECT_TRUE(path.IsEmpty());
}

}  // namespace
