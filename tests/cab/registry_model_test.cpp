#include <random>

#include "foundation/mem_stream.h"
#include "tests/cab/registry_support.h"

namespace {

using namespace bag_test;

/// A bag and its key under a random script of changes, saves, foreign edits and loads.
class Script {
public:
    Script(std::uint32_t seed, const ItemSpec* spec)
        : random_(seed), spec_(spec), bag_(MakeBag(spec)) {}

    void Step() {
        const std::uint32_t kind = Below(20);
        if (kind < 11) {
            Change();
        } else if (kind < 14) {
            EditOutside();
        } else if (kind < 18) {
            SaveIncrementally();
        } else if (kind == 18) {
            SaveWhole();
        } else {
            LoadAgain();
        }
    }

private:
    std::uint32_t Below(std::uint32_t end) { return static_cast<std::uint32_t>(random_()) % end; }
    DataItem& Root() { return *bag_->GetRootItem(); }

    DataItem& AnyContainer() {
        std::vector<DataItem*> found{&Root()};
        for (std::size_t i = 0; i < found.size(); ++i) {
            DataContainer& container = *found[i]->AsContainer();
            for (std::uint32_t c = 0; c < container.GetCount(); ++c) {
                DataItem* const child = container.ItemAt(c);
                if (child && child->AsContainer()) found.push_back(child);
            }
        }
        return *found[Below(static_cast<std::uint32_t>(found.size()))];
    }

    void SetAny(DataItem& item) {
        const std::int64_t value = Below(3);
        const auto narrow = static_cast<std::int32_t>(value);
        const double number = static_cast<double>(value) / 2;
        const bool truth = value != 0;
        const WCHAR* const texts[] = {TEXT(""), TEXT("x"), TEXT("a longer text")};
        (void)(item.SetInt(&narrow, 0) || item.SetInt64(&value, 0) || item.SetDouble(&number, 0) ||
               item.SetBool(&truth, 0));
        if (item.IsType(Kind::String)) {
            EXPECT_TRUE(item.SetText(texts[value]));
        }
        if (item.IsType(Kind::Stream)) {
            AUX::MemStream bytes;
            char data[] = "bytes";
            EXPECT_EQ(bytes.Open(data, value, AUX::kAccessRead), 0);
            EXPECT_TRUE(item.SetStream(&bytes, false));
        }
    }

    void Change() {
        constexpr const WCHAR* kNames[] = {TEXT("n"),   TEXT("text"), TEXT("x.y"), TEXT("000001"),
                                           TEXT("i.n"), TEXT("list"), TEXT("sub"), TEXT("tmp")};
        constexpr Kind kKinds[] = {Kind::Bool,   Kind::Int,    Kind::Int64, Kind::Double,
                                   Kind::String, Kind::Stream, Kind::Array, Kind::Dictionary};
        DataItem& item = AnyContainer();
        DataContainer& container = *item.AsContainer();
        const Kind kind = kKinds[Below(8)];
        const std::uint32_t index = Below(container.GetCount() + 1);
        DataItem* made = container.ItemAt(index);
        switch (Below(8)) {
            case 0:
                (void)container.RemoveAt(index);
                return;
            case 3:
                EXPECT_TRUE(!item.AsArray() || item.AsArray()->GrowTo(index + Below(3)));
                return;
            case 1:
                if (made) (void)made->Reset();
                return;
            case 2:
                if (item.AsArray()) made = item.AsArray()->ElementAt(index, kind);
                break;
            default:
                const WCHAR* const name = kNames[Below(8)];
                made = item.AsArray() ? item.AsArray()->InsertAt(index, kind)
                                      : item.AsDictionary()->GetOrAdd(name, -1, kind);
                if (made && item.AsDictionary() && name == kNames[7])
                    made->SetFlags(ItemTransient, ItemTransient);
        }
        if (made && Below(3)) SetAny(*made);
    }

    void EditOutside() {
        isTouched_ = true;
        std::vector<WideString> keys{{}};
        for (const auto& [name, line] : DumpBag()) {
            if (line == "key") keys.push_back(name.substr(0, name.size() - 1));
        }
        const WideString path = keys[Below(static_cast<std::uint32_t>(keys.size()))];
        const RegistryKey key = OpenBagKey(path);
        const WCHAR* const names[] = {TEXT("i.n"), TEXT("t.n"), TEXT("i.000001"),
                                      TEXT("new\\.key")};
        // None that is a default: one that others wrote stays while nobody changes it.
        const DWORD number = 3 + Below(5);
        switch (Below(4)) {
            case 0:
                RegDeleteTreeW(key.Get(), Below(2) ? TEXT("sub") : nullptr);
                return;
            case 1:
                RegDeleteValueW(key.Get(), names[Below(4)]);
                return;
            case 2:
                OpenBagKey(path.empty() ? TEXT("foreign") : path + TEXT("\\foreign"));
                [[fallthrough]];
            default:
                RegSetValueExW(key.Get(), names[Below(4)], 0, REG_DWORD,
                               reinterpret_cast<const BYTE*>(&number), sizeof number);
        }
    }

    void SaveIncrementally() {
        const bool trusts = !isTouched_ && Below(2);
        const Lines before = DumpBag();
        const HRESULT result = Save(Root(), true, trusts);
        ASSERT_TRUE(result == S_OK || (result == S_FALSE && DumpBag() == before));
        ExpectSaved();
        ExpectNothingToSave(Root(), trusts);
    }

    void SaveWhole() {
        const HRESULT result = Save(Root(), false);
        const Lines layout = LayoutOf(Root());
        ASSERT_EQ(result, layout.empty() ? S_FALSE : S_OK);
        ASSERT_EQ(DumpBag(), layout);
        ExpectSaved();
    }

    void ExpectSaved() {
        isTouched_ = false;
        const Lines layout = Values(LayoutOf(Root()), Root());
        ASSERT_EQ(Values(DumpBag(), Root()), layout);
        const Bag fresh = MakeBag(spec_);
        ASSERT_EQ(Load(*fresh->GetRootItem()), S_OK);
        ASSERT_EQ(Values(LayoutOf(*fresh->GetRootItem()), Root()),
                  Values(LayoutOf(Root(), Gaps::Closed), Root()));
        ASSERT_FALSE(fresh->GetRootItem()->GetFlags() & ItemChildrenRemoved);
    }

    void LoadAgain() {
        const HRESULT result = Load(Root());
        if (result == ResultOf(ERROR_FILE_NOT_FOUND)) return;
        ASSERT_EQ(result, S_OK);
        // What the key lacks stays, and what the bag refuses goes.
        SaveIncrementally();
    }

    std::mt19937 random_;
    const ItemSpec* spec_;
    Bag bag_;
    bool isTouched_ = false;
};

void RunScripts(const ItemSpec* spec, int steps) {
    const int seeds = platform::testing::kOwnsTheSystem ? 12 : 4;
    for (int seed = 1; seed <= seeds; ++seed) {
        SCOPED_TRACE(seed);
        const test_support::TestProfile profile;
        Script script(static_cast<std::uint32_t>(seed), spec);
        for (int i = 0; i < steps; ++i) {
            SCOPED_TRACE(i);
            script.Step();
            if (testing::Test::HasFailure()) return;
        }
    }
}

TEST(RegistryModel, HoldsWhatAFreeBagHolds) { RunScripts(nullptr, 150); }

TEST(RegistryModel, HoldsWhatATemplateLetsBe) {
    ItemSpec leaves[] = {Leaf(TEXT("n"), Kind::Int), Leaf(TEXT("x.y"), Kind::Double), {}};
    leaves[0].defaultInt = 2;
    const ItemSpec element[] = {Branch(nullptr, Kind::Dictionary, leaves, 2), {}};
    const ItemSpec text[] = {Leaf(nullptr, Kind::String), {}};
    const ItemSpec entries[] = {Branch(TEXT("list"), Kind::Array, element, 1),
                                Branch(TEXT("sub"), Kind::Dictionary, text, 1, SpecLoose),
                                Branch(TEXT("x.y"), Kind::Dictionary, leaves, 2),
                                Leaf(TEXT("text"), Kind::String),
                                Leaf(TEXT("n"), Kind::Bool),
                                {}};
    const ItemSpec root = Branch(nullptr, Kind::Dictionary, entries, 5);
    RunScripts(&root, 150);
}

}  // namespace
