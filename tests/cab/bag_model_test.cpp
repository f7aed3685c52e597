#include <gtest/gtest.h>
#include <map>
#include <random>
#include <string>
#include <thread>

#include "tests/cab/bag_support.h"
#include "tests/support/fail_each_allocation.h"

namespace {

using namespace bag_test;
using Key = std::u16string;

// The reference: a dictionary of numbers and dictionaries, in the order of the real one.
struct Shorter {
    bool operator()(const Key& a, const Key& b) const {
        if (a.size() != b.size()) return a.size() < b.size();
        return CompareKeys(a.data(), static_cast<std::uint32_t>(a.size() * 2), b.data(),
                           static_cast<std::uint32_t>(b.size() * 2)) < 0;
    }
};
struct Node {
    std::int32_t number = 0;
    bool isNumber = false;
    std::map<Key, Node, Shorter> children;
};

const WCHAR* Units(const Key& key) { return reinterpret_cast<const WCHAR*>(key.c_str()); }

void Compare(DataItem& item, const Node& node, DataRoot* bag) {
    ASSERT_EQ(item.GetRoot(), bag);
    if (node.isNumber) {
        ASSERT_EQ(IntOf(&item), node.number);
        return;
    }
    DataDictionary* const dictionary = item.AsDictionary();
    ASSERT_TRUE(dictionary);
    ASSERT_EQ(dictionary->GetCount(), node.children.size());
    std::uint32_t index = 0;
    for (const auto& [key, child] : node.children) {
        ASSERT_EQ(dictionary->KeyAt(index), WStringView(Units(key)));
        Compare(*dictionary->ItemAt(index++), child, bag);
    }
}

// What an assignment without a template does.
void Merge(Node& to, const Node& from) {
    for (const auto& [key, child] : from.children) {
        const auto found = to.children.find(key);
        if (found == to.children.end() || found->second.isNumber) {
            Node copy;
            copy.isNumber = child.isNumber;
            copy.number = child.number;
            if (!child.isNumber) Merge(copy, child);
            to.children[key] = copy;
        } else if (!child.isNumber) {
            Merge(found->second, child);
        }
    }
}

TEST(BagModel, StaysAsTheReferenceTree) {
    for (const unsigned seed : {1u, 2u, 3u, 4u}) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const auto pick = [&](unsigned n) { return static_cast<unsigned>(random() % n); };
        const Bag bag = MakeBag();
        Node model;
        const Key keys[] = {u"b", u"aa", u"a", u"", u"Ab", u"ab", u"\u0100", u"\u00ff"};
        for (int step = 0; step < 1500; ++step) {
            DataItem* item = bag->GetRootItem();
            Node* node = &model;
            for (unsigned depth = pick(3); depth > 0 && !node->children.empty(); --depth) {
                const unsigned index = pick(static_cast<unsigned>(node->children.size()));
                const auto next = std::next(node->children.begin(), index);
                if (next->second.isNumber) break;
                item = item->AsDictionary()->ItemAt(index);
                node = &next->second;
            }
            DataDictionary& dictionary = *item->AsDictionary();
            const Key& key = keys[pick(std::size(keys))];
            const auto found = node->children.find(key);
            const bool isThere = found != node->children.end();
            const std::uint32_t count = bag->GetChangeCount();
            bool changes = true;
            switch (pick(12)) {
                case 0:
                case 1:
                case 2:
                case 3: {
                    DataItem* const child = dictionary.GetOrAdd(Units(key), -1, Kind::Int);
                    ASSERT_EQ(child != nullptr, !isThere || found->second.isNumber);
                    if (!child) {
                        changes = false;
                        break;
                    }
                    Node& mine = node->children[key];
                    mine.isNumber = true;
                    const auto value = static_cast<std::int32_t>(pick(4));
                    changes = !isThere || mine.number != value;
                    ASSERT_TRUE(SetInt(child, mine.number = value));
                    break;
                }
                case 4:
                case 5:
                    changes = !isThere;
                    ASSERT_EQ(dictionary.GetOrAdd(Units(key), -1, Kind::Dictionary) != nullptr,
                              !isThere || !found->second.isNumber);
                    if (!isThere) node->children[key];
                    break;
                case 6:
                case 7:
                    changes = !node->children.empty();
                    ASSERT_EQ(dictionary.RemoveAt(std::int64_t{dictionary.GetCount()} - 1),
                              changes);
                    if (changes) node->children.erase(std::prev(node->children.end()));
                    ASSERT_TRUE(!changes || dictionary.GetFlags() & ItemChildrenRemoved);
                    break;
                case 8:
                    changes = !node->children.empty();
                    if (pick(4) != 0) {
                        changes = false;
                        break;
                    }
                    ASSERT_TRUE(dictionary.Reset());
                    node->children.clear();
                    ASSERT_FALSE(dictionary.GetFlags() & ItemValueSet);
                    break;
                default: {  // From anywhere: also from above and below.
                    DataItem* source = bag->GetRootItem();
                    Node from = model;
                    if (pick(2) && !model.children.empty()) {
                        const unsigned index = pick(static_cast<unsigned>(model.children.size()));
                        source = source->AsDictionary()->ItemAt(index);
                        from = std::next(model.children.begin(), index)->second;
                    }
                    if (pick(8) != 0) {
                        changes = false;
                        break;
                    }
                    ASSERT_EQ(dictionary.Assign(source, false, false), !from.isNumber);
                    if (from.isNumber) {
                        changes = false;
                        break;
                    }
                    if (source != &dictionary) Merge(*node, from);
                    changes = bag->GetChangeCount() != count;
                }
            }
            Compare(*bag->GetRootItem(), model, bag.get());
            if (HasFatalFailure()) return;
            ASSERT_EQ(bag->GetChangeCount() != count, changes) << "step " << step;
        }
    }
}

TEST(BagModel, LosesNothingWhenMemoryRunsOut) {
    ItemSpec word = Leaf(TEXT("s"), Kind::String);
    word.defaultString = TEXT("default");
    const ItemSpec inner[] = {Leaf(TEXT("x"), Kind::Int), word, {}};
    const ItemSpec set[] = {Branch(TEXT("d"), Kind::Dictionary, inner, 2),
                            Branch(TEXT("l"), Kind::Array, inner, 0),
                            Leaf(TEXT("t"), Kind::Stream),
                            {}};
    const ItemSpec rootSpec = Branch(nullptr, Kind::Dictionary, set, 3);
    const auto runs = test_support::FailEachAllocation([&](const auto& hasFailed) {
        const Bag bag = MakeBag(&rootSpec);
        const Bag other = MakeBag();
        if (!bag || !other) return;
        DataItem& root = *bag->GetRootItem();
        ASSERT_EQ(root.AsDictionary()->GetCount(), 3u) << "all of the template, or no bag";
        DataArray& list = *root.AsDictionary()->Find(TEXT("l"))->AsArray();
        for (std::int32_t i = 0; i < 3; ++i) (void)SetInt(list.InsertAt(-1, Kind::None), i);
        DataItem* const text = FindPath(root, TEXT("d.s"));
        const bool isSet = text->SetText(TEXT("kept"));
        EXPECT_EQ(text->GetFlags(), isSet ? ItemValueSet | ItemDirty : 0u);
        const bool isReset = text->Reset();
        EXPECT_EQ(text->IsDefault(), isReset || !isSet);
        const std::uint32_t before = list.GetCount();
        DataItem* const target = other->GetRootItem();
        const bool isAssigned = target->Assign(&root, true, true);
        if (!hasFailed()) {
            EXPECT_TRUE(isAssigned && target->Equals(&root, 0));
        }
        const std::uint32_t removed = list.GetCount();
        EXPECT_TRUE(list.Assign(&list, true, false));
        EXPECT_EQ(list.GetCount(), before);
        EXPECT_EQ(removed, before);
        const std::uint32_t keys = target->AsDictionary()->GetCount();
        if (!target->SetSpec(&rootSpec)) {
            EXPECT_EQ(target->GetSpec(), nullptr);
            EXPECT_EQ(target->AsDictionary()->GetCount(), keys);
        }
        EXPECT_TRUE(bag->Rebuild() || (hasFailed() && IntOf(list.ItemAt(0)) == 0));
    });
    EXPECT_GT(runs, 40u);
}

class Wrapper final : public ItemWrapper {
public:
    void OnTargetGone() noexcept override { ++gone; }
    int gone = 0;
};

TEST(BagModel, ServesTwoThreads) {
    Wrapper wrappers[2];
    std::atomic<int> installed = 0;
    {
        const Bag bag = MakeBag();
        const auto work = [&](int thread) {
            for (std::int32_t i = 0; i < 500; ++i) {
                const BagLockScope scope(*bag);
                DataItem* const item = MakePath(*scope.Root(), TEXT("n"), Kind::Int);
                ASSERT_TRUE(SetInt(item, IntOf(item) + 1));
            }
            installed += bag->GetRootItem()->ExchangeWrapper(nullptr, &wrappers[thread]);
        };
        std::thread first(work, 0);
        std::thread second(work, 1);
        first.join();
        second.join();
        EXPECT_EQ(IntOf(FindPath(*bag->GetRootItem(), TEXT("n"))), 1000);
        EXPECT_EQ(bag->LockDepth(), 0u);
    }
    EXPECT_EQ(installed, 1);
    EXPECT_EQ(wrappers[0].gone + wrappers[1].gone, 1) << "the one that was installed is told";
}

}  // namespace
