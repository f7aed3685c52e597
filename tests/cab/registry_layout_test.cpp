#include <sstream>

#include "tests/cab/registry_support.h"
#include "tests/support/case_table.h"

namespace {

using namespace bag_test;

class RegistryLayout : public testing::Test {
protected:
    static void Put(const WideString& below, const WCHAR* name, DWORD type, const void* data,
                    std::size_t size) {
        const RegistryKey key = OpenBagKey(below);
        EXPECT_EQ(RegSetValueExW(key.Get(), name, 0, type, static_cast<const BYTE*>(data),
                                 static_cast<DWORD>(size)),
                  ERROR_SUCCESS);
    }
    static void PutInt(const WCHAR* name, DWORD value, const WideString& below = {}) {
        Put(below, name, REG_DWORD, &value, sizeof value);
    }
    DataItem& Root() { return *bag_->GetRootItem(); }
    DataItem* Make(WStringView path, Kind kind) { return MakePath(Root(), path, kind); }
    std::string Saved(const WCHAR* name) const {
        const Lines lines = DumpBag();
        const auto found = lines.find(name);
        return found == lines.end() ? "" : found->second;
    }

    const test_support::TestProfile profile_;
    const Bag bag_ = MakeBag();
};

std::string Describe(DataItem* item) {
    if (!item) return "-";
    bool truth = false;
    std::int32_t integer = 0;
    std::int64_t integer64 = 0;
    double number = 0;
    switch (item->GetType()) {
        case Kind::Bool:
            return item->GetBool(truth) ? "Bool " + std::to_string(truth) : "";
        case Kind::Int:
            return item->GetInt(integer) ? "Int " + std::to_string(integer) : "";
        case Kind::Int64:
            return item->GetInt64(integer64) ? "Int64 " + std::to_string(integer64) : "";
        case Kind::Double: {
            std::ostringstream text;
            text << "Double " << (item->GetDouble(number) ? number : 99);
            return text.str();
        }
        case Kind::String: {
            std::string text = "String ";
            for (const WCHAR unit : WStringView(*item->GetString())) {
                text += unit == 0 ? '+' : unit < 127 ? static_cast<char>(unit) : '?';
            }
            return text;
        }
        default:
            return "Stream " + std::to_string(item->GetStream()->GetSize());
    }
}

TEST_F(RegistryLayout, WritesAndReadsTheExample) {
    const double zoom = 1.5;
    const bool grid = true;
    EXPECT_TRUE(Make(TEXT("Zoom"), Kind::Double)->SetDouble(&zoom, 0));
    EXPECT_TRUE(Make(TEXT("Title"), Kind::String)->SetText(TEXT("Hi")));
    EXPECT_TRUE(SetInt(Make(TEXT("Pages[0]"), Kind::Int), 3));
    EXPECT_TRUE(SetInt(Make(TEXT("Pages[1]"), Kind::Int), 7));
    EXPECT_TRUE(Make(TEXT("View.Grid"), Kind::Bool)->SetBool(&grid, 0));
    EXPECT_TRUE(Make(TEXT("Nothing"), Kind::Array) && Make(TEXT("Object"), Kind::Object));
    EXPECT_EQ(SaveToRegistry(Root(), nullptr, TEXT("hkcu\\Software\\Quvada bag"), false, false),
              S_OK);
    const Lines expected = {{TEXT("|d.Zoom"), "11:000000000000f83f"},
                            {TEXT("|t.Title"), "1:480069000000"},
                            {TEXT("Pages\\"), "key"},
                            {TEXT("Pages\\|"), "1:41000000"},
                            {TEXT("Pages\\|i.000000"), "4:03000000"},
                            {TEXT("Pages\\|i.000001"), "4:07000000"},
                            {TEXT("View\\"), "key"},
                            {TEXT("View\\|b.Grid"), "4:01000000"}};
    EXPECT_EQ(DumpBag(), expected);
    EXPECT_TRUE(Root().AsDictionary()->RemoveAt(5) && Root().AsDictionary()->RemoveAt(4));
    const Bag fresh = MakeBag();
    EXPECT_EQ(LoadFromRegistry(*fresh->GetRootItem(), nullptr,
                               TEXT("HKEY_CURRENT_USER\\Software\\Quvada bag")),
              S_OK);
    EXPECT_TRUE(fresh->GetRootItem()->Equals(&Root(), 0));
    ExpectNothingToSave(*fresh->GetRootItem());
    DataItem& pages = *FindPath(Root(), TEXT("Pages"));
    EXPECT_TRUE(pages.AsArray()->RemoveRange(0, 2));
    EXPECT_EQ(Save(pages, false), S_OK);
    EXPECT_EQ(DumpBag(), (Lines{{TEXT("|"), "1:41000000"}})) << "an empty array alone";
}

TEST_F(RegistryLayout, TakesWhatOthersWroteIfItFits) {
    constexpr std::pair<const WCHAR*, Kind> kPresent[] = {
        {TEXT("B"), Kind::Bool},   {TEXT("I"), Kind::Int},    {TEXT("L"), Kind::Int64},
        {TEXT("D"), Kind::Double}, {TEXT("T"), Kind::String}, {TEXT("S"), Kind::Stream}};
    for (const auto& row : test_support::ReadCases(CAB_CASES "registry_values.tsv", 4)) {
        const std::string wanted = platform::ToUtf8(row[3]);
        SCOPED_TRACE(platform::ToUtf8(row[0] + TEXT(" ") + row[1] + TEXT(" ") + row[2]));
        RegDeleteTreeW(HKEY_CURRENT_USER, kBagKey);
        std::vector<BYTE> data;
        for (std::size_t i = 0; i + 1 < row[2].size(); i += 2) {
            data.push_back(static_cast<BYTE>(
                std::strtoul(platform::ToUtf8(row[2].substr(i, 2)).c_str(), nullptr, 16)));
        }
        Put({}, row[0].c_str(), static_cast<DWORD>(std::atoi(platform::ToUtf8(row[1]).c_str())),
            data.data(), data.size());
        const Bag bag = MakeBag();
        DataItem& root = *bag->GetRootItem();
        for (const auto& [name, kind] : kPresent) {
            root.AsDictionary()->GetOrAdd(name, -1, kind)->SetFlags(0, ItemDirty);
        }
        ASSERT_EQ(Load(root), S_OK);
        const bool isRefused = wanted == "-";
        EXPECT_EQ((root.GetFlags() & ItemChildrenRemoved) != 0, isRefused);
        const WStringView key = SplitValueName(WStringView(row[0])).name;
        DataItem* const item = root.AsDictionary()->Find(key);
        if (!isRefused) {
            EXPECT_EQ(Describe(item), wanted);
            EXPECT_EQ(item->GetFlags() & ItemDirty, 0u);
        } else if (key.size() == 1 && key[0] != 'x') {
            EXPECT_EQ(Describe(item).back(), item->IsType(Kind::String) ? ' ' : '0');
        } else {
            EXPECT_EQ(item, nullptr);
        }
    }
}

TEST_F(RegistryLayout, TakesAwayWhatItsItemRefused) {
    const ItemSpec leaves[] = {
        Leaf(TEXT("empty"), Kind::String), Leaf(TEXT("text"), Kind::String), {}};
    const ItemSpec spec = Branch(nullptr, Kind::Dictionary, leaves, 2);
    const Bag bag = MakeBag(&spec);
    DataItem& root = *bag->GetRootItem();
    EXPECT_TRUE(FindPath(root, TEXT("text"))->SetText(TEXT("x")));
    PutInt(TEXT("t.empty"), 6);
    PutInt(TEXT("t.text"), 6);
    ASSERT_EQ(Load(root), S_OK);
    EXPECT_EQ(Save(root, true), S_OK);
    EXPECT_EQ(DumpBag(), (Lines{{TEXT("|t.text"), "1:78000000"}}));
    ExpectNothingToSave(root);
}

TEST_F(RegistryLayout, ClosesTheHolesOfArrays) {
    const struct {
        const char* why;
        std::vector<const WCHAR*> names;
        const WCHAR* subkey;
        std::size_t count;
        bool isComplete;
    } kCases[] = {
        {"a hole", {TEXT("i.000000"), TEXT("i.000002")}, nullptr, 2, false},
        {"no first", {TEXT("i.000001")}, nullptr, 1, false},
        {"all", {TEXT("i.000000"), TEXT("i.000001"), TEXT("000002")}, TEXT("000003"), 4, true},
        {"a place twice", {TEXT("i.000000"), TEXT("i.0")}, nullptr, 1, false},
        {"other digits", {TEXT("i.0"), TEXT("i.0000001")}, TEXT("2"), 3, false},
        {"no index", {TEXT("i.000000"), TEXT("i.x"), TEXT("i.-1")}, TEXT("1x"), 1, true},
        {"too large", {TEXT("i.000000"), TEXT("i.99999999999999999999999")}, nullptr, 1, false},
        {"the last index", {TEXT("i.000000"), TEXT("i.2147483646")}, nullptr, 2, false},
        {"refused", {TEXT("i.000000"), TEXT("t.000001")}, nullptr, 1, false},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.why);
        RegDeleteTreeW(HKEY_CURRENT_USER, kBagKey);
        for (const WCHAR* const name : c.names) PutInt(name, 5, TEXT("a"));
        Put(TEXT("a"), nullptr, REG_SZ, TEXT("A"), 4);
        if (c.subkey) OpenBagKey(WideString(TEXT("a\\")) + c.subkey);
        const Bag bag = MakeBag();
        DataItem& root = *bag->GetRootItem();
        ASSERT_EQ(Load(root), S_OK);
        DataItem& array = *root.AsDictionary()->Find(TEXT("a"));
        EXPECT_EQ(array.AsContainer()->GetCount(), c.count);
        EXPECT_EQ((array.GetFlags() & ItemChildrenRemoved) == 0, c.isComplete);
        bool complete = !c.isComplete;
        EXPECT_TRUE(LoadArray(*array.AsArray(), OpenBagKey(TEXT("a")).Get(), &complete));
        EXPECT_EQ(complete, c.isComplete);
        ASSERT_EQ(Load(root), S_OK);
        EXPECT_EQ(Save(root, true, true), c.isComplete ? S_FALSE : S_OK);
        if (!c.isComplete) {
            EXPECT_EQ(DumpBag(), LayoutOf(root));
        }
    }
}

// The key of an array comes back with the first one below it, and its own values only after that.
TEST_F(RegistryLayout, WritesAllBelowAnArrayThatItEmpties) {
    for (const WCHAR* const path :
         {TEXT("l[0][0].x"), TEXT("l[0][1]"), TEXT("l[0][2].y"), TEXT("l[1]"), TEXT("l[2].z")}) {
        EXPECT_TRUE(SetInt(Make(path, Kind::Int), 5));
    }
    for (const bool trustsStamps : {false, true}) {
        EXPECT_EQ(Save(Root(), false), S_OK);
        EXPECT_EQ(Load(Root()), S_OK) << "which makes stamps, inside transactions or not";
        EXPECT_TRUE(FindPath(Root(), TEXT("l"))->AsArray()->Move(1, 3, 1));
        EXPECT_EQ(Save(Root(), true, trustsStamps), S_OK);
        EXPECT_EQ(DumpBag(), LayoutOf(Root()));
    }
}

TEST_F(RegistryLayout, ReadsMarkers) {
    const DWORD kArray = 0x1001;
    const DWORD kInt = 2;
    const struct {
        DWORD type;
        const void* data;
        std::size_t size;
        Kind kind;
    } kCases[] = {
        {REG_SZ, TEXT("A"), 4, Kind::Array},
        {REG_SZ, TEXT("A"), 2, Kind::Array},
        {REG_SZ, TEXT("Array"), 12, Kind::Array},
        {REG_SZ, TEXT("a"), 4, Kind::Dictionary},
        {REG_SZ, TEXT("Dictionary"), 22, Kind::Dictionary},
        {REG_SZ, TEXT("Array, but a longer text"), 50, Kind::Dictionary},
        {REG_BINARY, TEXT("A"), 4, Kind::Dictionary},
        {REG_DWORD, &kArray, 4, Kind::Array},
        {REG_DWORD, &kInt, 4, Kind::Int},
        {REG_DWORD, &kArray, 2, Kind::Dictionary},
    };
    for (const auto& c : kCases) {
        Put(TEXT("k"), nullptr, c.type, c.data, c.size);
        EXPECT_EQ(LoadKind(OpenBagKey(TEXT("k")).Get()), c.kind) << &c - kCases;
        const Bag bag = MakeBag();
        EXPECT_EQ(Load(*bag->GetRootItem()), S_OK);
        DataItem* const item = bag->GetRootItem()->AsDictionary()->Find(TEXT("k"));
        EXPECT_EQ(item ? item->GetType() : Kind::Int, c.kind);
    }
    // A dictionary that takes an array's place takes its mark away.
    Put(TEXT("k"), nullptr, REG_SZ, TEXT("A"), 4);
    EXPECT_TRUE(Make(TEXT("k.n"), Kind::Int));
    EXPECT_EQ(Save(Root(), true), S_OK);
    EXPECT_EQ(DumpBag(), LayoutOf(Root()));
}

TEST_F(RegistryLayout, LetsALetterComeFirst) {
    PutInt(TEXT("foo"), 5);
    PutInt(TEXT("zoo"), 5);
    ASSERT_EQ(Load(Root()), S_OK);
    ExpectNothingToSave(Root());
    EXPECT_TRUE(SetInt(FindPath(Root(), TEXT("foo")), 6) &&
                SetInt(FindPath(Root(), TEXT("zoo")), 6));
    EXPECT_TRUE(Make(TEXT("gone"), Kind::Int) && Root().AsDictionary()->RemoveAt(2));
    EXPECT_EQ(Save(Root(), true), S_OK);
    EXPECT_EQ(Saved(TEXT("|foo")) + Saved(TEXT("|i.foo")), "4:050000004:06000000");
    const Bag fresh = MakeBag();
    ASSERT_EQ(Load(*fresh->GetRootItem()), S_OK);
    EXPECT_EQ(IntOf(FindPath(*fresh->GetRootItem(), TEXT("foo"))), 6);
    EXPECT_EQ(IntOf(FindPath(*fresh->GetRootItem(), TEXT("zoo"))), 6);
}

TEST_F(RegistryLayout, KeepsEveryNameThatAKeyCanHave) {
    const struct {
        const char* why;
        WideString name;
        bool forKeys;
        bool forValues;
    } kCases[] = {
        {"255 units", WideString(255, u'n'), true, true},
        {"256 units", WideString(256, u'n'), false, true},
        {"10000 units", WideString(10'000, u'n'), false, true},
        {"16382 units", WideString(16'382, u'n'), false, false},
        {"dots", TEXT("i.b..c."), true, true},
        {"separators", TEXT("\\a\\\\b\\"), false, true},
        {"brackets, blanks", TEXT(" a[1]="), true, true},
        {"U+0000", WideString(TEXT("a\0b"), 3), false, false},
        {"half a pair", WideString{0xD800, 'x'}, true, true},
    };
    for (const auto& c : kCases) {
        for (const bool isContainer : {false, true}) {
            SCOPED_TRACE(testing::Message() << c.why << isContainer);
            const Bag bag = MakeBag();
            DataDictionary& root = *bag->GetRootItem()->AsDictionary();
            DataItem* const item =
                root.GetOrAdd(c.name.data(), static_cast<std::int64_t>(c.name.size()),
                              isContainer ? Kind::Dictionary : Kind::Int);
            EXPECT_TRUE(SetInt(isContainer ? MakePath(*item, TEXT("n"), Kind::Int) : item, 4));
            EXPECT_TRUE(MakePath(root, TEXT("other"), Kind::Int));
            const bool isKept = isContainer ? c.forKeys : c.forValues;
            RegDeleteTreeW(HKEY_CURRENT_USER, kBagKey);
            EXPECT_EQ(Save(root, true), isKept ? S_OK : E_FAIL);
            EXPECT_EQ(Save(root, true), isKept ? S_FALSE : E_FAIL) << "it is tried again";
            EXPECT_EQ(Saved(TEXT("|i.other")), "4:00000000");
            const Bag fresh = MakeBag();
            ASSERT_EQ(Load(*fresh->GetRootItem()), S_OK);
            EXPECT_EQ(fresh->GetRootItem()->Equals(&root, 0), isKept);
        }
    }
}

TEST_F(RegistryLayout, RefusesRootsAndMissingKeys) {
    for (const WCHAR* const path : {TEXT("HKCU"), TEXT("HKEY_LOCAL_MACHINE\\"), TEXT("HKXX\\a"),
                                    TEXT(""), TEXT("Software\\a"), TEXT("HKEY_CURRENT_USERS\\a")}) {
        EXPECT_EQ(SaveToRegistry(Root(), nullptr, path, false, false), E_INVALIDARG);
        EXPECT_EQ(SaveToRegistry(Root(), nullptr, path, true, false), E_INVALIDARG);
    }
    EXPECT_EQ(SaveToRegistry(Root(), HKEY_CURRENT_USER, nullptr, false, false), E_INVALIDARG);
    EXPECT_EQ(LoadFromRegistry(Root(), nullptr, TEXT("HKXX\\a")), E_INVALIDARG);
    EXPECT_EQ(Load(Root()), static_cast<HRESULT>(0x80070002));
    EXPECT_EQ(Root().GetFlags(), 0u);
    DataItem* const leaf = Make(TEXT("n"), Kind::Int);
    EXPECT_EQ(Load(*leaf), E_INVALIDARG);
    EXPECT_EQ(Save(*leaf, false), E_FAIL);
}

TEST_F(RegistryLayout, EndsAtTheDepthOfTheRegistry) {
    const std::uint32_t depth = platform::testing::kOwnsTheSystem ? kMaxKeyDepth + 20 : 60;
    DataItem* deepest = &Root();
    for (std::uint32_t i = 0; i < depth; ++i)
        deepest = MakePath(*deepest, TEXT("d"), Kind::Dictionary);
    EXPECT_TRUE(SetInt(MakePath(*deepest, TEXT("n"), Kind::Int), 1));
    const bool fits = depth <= kMaxKeyDepth;
    EXPECT_EQ(Save(Root(), false), fits ? S_OK : E_FAIL);
    WideString path;
    for (std::uint32_t i = 0; i < depth; ++i) path += i ? TEXT("\\d") : TEXT("d");
    PutInt(TEXT("i.n"), 1, path);
    const Bag fresh = MakeBag();
    ASSERT_EQ(Load(*fresh->GetRootItem()), S_OK);
    EXPECT_EQ(fresh->GetRootItem()->Equals(&Root(), 0), fits);
}

}  // namespace
