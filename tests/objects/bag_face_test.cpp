#include "objects/bag_face.h"

#include <thread>

#include "platform/registry.h"
#include "platform/scope_exit.h"
#include "tests/objects/bag_clients.h"
#include "tests/support/com_rules.h"
#include "tests/support/fail_each_allocation.h"
#include "tests/support/test_profile.h"

namespace {

using namespace objects_test;
using platform::InterfaceId;

constexpr HRESULT kLost = E_FAIL;

TEST(BagFaces, KeepTheRulesOfCom) {
    const ComPtr<IBag> bag = NewBag();
    const ComPtr<IBagItem> item = RootOf(*bag.Get());
    ComPtr<IBagItem> missing;
    EXPECT_EQ(item->Item(Words(TEXT("a.b")).Get(), missing.Put()), S_FALSE);
    ComPtr<ITemplateSet> set;
    EXPECT_EQ(AUX::Root().NewTemplateSetFromStream(StreamOf(kTemplates).Get(), set.Put()), S_OK);
    const IID dispatch = InterfaceId<IDispatch>();
    test_support::ExpectComRules(bag.Get(),
                                 {InterfaceId<IBag>(), InterfaceId<IBagLocker>(), dispatch});
    test_support::ExpectComRules(item.Get(), {InterfaceId<IBagItem>(), dispatch});
    test_support::ExpectComRules(missing.Get(), {InterfaceId<IBagItem>(), dispatch});
    test_support::ExpectComRules(set.Get(), {InterfaceId<ITemplateSet>(), dispatch});
    EXPECT_EQ(RootOf(*bag.Get()).Get(), item.Get()) << "one object an item";
}

// Each way that an item goes leaves its object behind, which then fails.
TEST(BagFaces, OutliveTheirItems) {
    const LONG before = AUX::LiveObjects();
    const ComPtr<IUnknown> bytes = StreamOf("some bytes");
    using Act = void (*)(ComPtr<IBag>&, IBagItem&);
    const struct {
        const char* what;
        Act act;
    } kWays[] = {
        {"removed", [](ComPtr<IBag>&, IBagItem& root) { root.Remove(Words(TEXT("list")).Get()); }},
        {"reset", [](ComPtr<IBag>&, IBagItem& root) { EXPECT_EQ(root.Reset(), S_OK); }},
        {"rebuilt", [](ComPtr<IBag>& bag, IBagItem&) { EXPECT_EQ(bag->Rebuild(), S_OK); }},
        {"ended", [](ComPtr<IBag>& bag, IBagItem&) { bag.Reset(); }},
    };
    for (const auto& way : kWays) {
        SCOPED_TRACE(way.what);
        ComPtr<IBag> bag = NewBag();
        const ComPtr<IBagItem> root = RootOf(*bag.Get());
        ComPtr<IBagItem> list, element, missing, deeper;
        ASSERT_EQ(root->GetOrAdd(Words(TEXT("list")).Get(), kArray, list.Put()), S_OK);
        ASSERT_EQ(list->Append(2, element.Put()), S_OK);
        ASSERT_EQ(list->Item(UniqueVariant(4).Get(), missing.Put()), S_FALSE);
        ASSERT_EQ(missing->Item(Words(TEXT("x.y")).Get(), deeper.Put()), S_FALSE);
        way.act(bag, *root.Get());
        for (IBagItem* item : {list.Get(), element.Get(), missing.Get(), deeper.Get()}) {
            LONG number = 7;
            UniqueVariant value;
            VARIANT_BOOL flag = VARIANT_TRUE;
            ComPtr<IBagItem> found;
            const HRESULT results[] = {
                item->GetKind(&number),
                item->IsKind(2),
                item->PutInt(5),
                item->GetValue(value.Put()),
                item->GetIntAt(TEXT("a"), 3, &number),
                item->SetIntAt(TEXT("a"), 3),
                item->Item(UniqueVariant().Get(), found.Put()),
                item->Append(2, found.Put()),
                item->EnsureItem(Words(TEXT("a")).Get(), 2, found.Put()),
                item->IsEqual(root.Get(), &flag),
                item->Assign(root.Get()),
                item->GetLastStatus(&number),
                item->SetTemplate(bytes.Get(), nullptr),
                item->PutStream(AsStream(bytes)),
                item->SaveRegistry(TEXT("HKCU\\Software\\Lost"), 0),
                item->Reset(),
            };
            for (const HRESULT& result : results)
                EXPECT_EQ(result, kLost) << way.what << &result - results;
            EXPECT_FALSE(found);
        }
    }
    EXPECT_EQ(AUX::LiveObjects(), before);
}

TEST(BagFaces, MissingItemsComeIntoBeingWhenTheyAreWritten) {
    const ComPtr<IBag> bag = NewBag();
    const ComPtr<IBagItem> root = RootOf(*bag.Get());
    const auto item = [](IBagItem& from, const WCHAR* path, HRESULT expected) {
        ComPtr<IBagItem> found;
        EXPECT_EQ(from.Item(Words(path).Get(), found.Put()), expected);
        return found;
    };
    const ComPtr<IBagItem> outer = item(*root.Get(), TEXT("a"), S_FALSE),
                           inner = item(*outer.Get(), TEXT("b.c"), S_FALSE),
                           twin = item(*root.Get(), TEXT("a.b.c"), S_FALSE),
                           other = item(*outer.Get(), TEXT("d"), S_FALSE);
    LONG number = 7;
    EXPECT_EQ(inner->IsPresent(&number), S_OK);
    EXPECT_EQ(number, 0);
    EXPECT_EQ(inner->GetInt(&number), E_INVALIDARG);
    EXPECT_EQ(inner->SetFlags(1), E_INVALIDARG);
    EXPECT_EQ(inner->GetKind(&number), S_OK);
    EXPECT_EQ(number, 0) << "made by no read";
    EXPECT_EQ(inner->PutInt(5), S_OK);
    EXPECT_EQ(JsonOf(*bag.Get()), R"({"a":{"b":{"c":5}}})");
    EXPECT_EQ(twin->GetInt(&number), S_OK) << "found by another that waited for it";
    EXPECT_EQ(number, 5);
    EXPECT_EQ(outer->GetCount(&number), S_OK);
    EXPECT_EQ(number, 1) << "the parent was made on the way";
    EXPECT_EQ(outer.Get() == item(*root.Get(), TEXT("a"), S_OK).Get(), false)
        << "the item has a face of its own";

    // What it is bound to is its item, even if another comes to stand at its place.
    EXPECT_EQ(root->Remove(Words(TEXT("a")).Get()), S_OK);
    EXPECT_EQ(root->SetIntAt(TEXT("a.b.c"), 6), S_OK);
    EXPECT_EQ(inner->GetInt(&number), kLost);
    EXPECT_EQ(twin->PutInt(1), kLost);
    EXPECT_EQ(other->PutInt(1), kLost) << "its parent was bound when it was asked for it";

    // A kind asked for is the kind made; what cannot be made is refused.
    const ComPtr<IBagItem> list = item(*root.Get(), TEXT("list"), S_FALSE),
                           leaf = item(*root.Get(), TEXT("a.b.c.x"), S_FALSE);
    EXPECT_EQ(list->IsKind(kArray), S_OK);
    EXPECT_EQ(leaf->PutInt(1), E_INVALIDARG) << "below a number";
    ComPtr<IBagItem> made;
    EXPECT_EQ(list->Append(5, made.Put()), S_OK);
    EXPECT_EQ(JsonOf(*bag.Get()), R"({"a":{"b":{"c":6}},"list":[""]})");

    // An empty place of an array is one that is missing.
    Fill(*bag.Get(), TEXT("{\"list\":[null,null,3]}"));
    const ComPtr<IBagItem> place = item(*list.Get(), TEXT("[1]"), S_FALSE);
    EXPECT_EQ(root->GetIntAt(TEXT("list[1]"), 8, &number), S_OK);
    EXPECT_EQ(number, 8);
    EXPECT_EQ(place->PutInt(2), S_OK);
    EXPECT_EQ(list->GetCount(&number), S_OK);
    EXPECT_EQ(number, 3);
    EXPECT_EQ(JsonOf(*bag.Get()), R"({"a":{"b":{"c":6}},"list":["",2,3]})");
}

TEST(BagFaces, AreMadeInTheShapeOfTemplates) {
    ComPtr<IBagFactory> factory;
    ASSERT_EQ(AUX::Root().QueryInterface(InterfaceId<IBagFactory>(),
                                         reinterpret_cast<void**>(factory.Put())),
              S_OK);
    const auto size = static_cast<LONG>(std::char_traits<char>::length(kTemplates));
    const ComPtr<IUnknown> held = StreamOf(kTemplates);
    ComPtr<ITemplateSet> set, broken;
    ASSERT_EQ(factory->CreateTemplateSetFromBuffer(kTemplates, size, set.Put()), S_OK);
    ASSERT_EQ(factory->CreateTemplateSetFromBuffer("<x", 2, broken.Put()), S_OK)
        << "what is wrong with a template shows when it is used";
    ComPtr<IBag> early;
    EXPECT_EQ(factory->CreateBagFromTemplateSet(set.Get(), nullptr, early.Put()), E_UNEXPECTED)
        << "none is selected";
    ASSERT_EQ(set->SelectRoot(TEXT("Shape")), S_OK);
    const ComPtr<IBag> stranger = NewBag();
    const auto ofSet = [&](IUnknown* from, const WCHAR* root) {
        return [=, &factory](IBag** bag) {
            return factory->CreateBagFromTemplateSet(from, root, bag);
        };
    };
    const auto ofBuffer = [&](const char* bytes, LONG count, const WCHAR* root) {
        return [=, &factory](IBag** bag) {
            return factory->CreateBagFromBuffer(bytes, count, root, bag);
        };
    };
    const struct {
        const char* what;
        std::function<HRESULT(IBag**)> make;
        HRESULT expected;
        const char* json;
    } kCases[] = {
        {"selected root", ofSet(set.Get(), TEXT("")), S_OK, R"({"width":210})"},
        {"a root", ofSet(set.Get(), TEXT("Other")), S_OK, R"({"depth":3})"},
        {"still the selected one", ofSet(set.Get(), nullptr), S_OK, R"({"width":210})"},
        {"buffer", ofBuffer(kTemplates, size, TEXT("Other")), S_OK, R"({"depth":3})"},
        {"stream",
         [&](IBag** bag) {
             return factory->CreateBagFromStream(AsStream(held), TEXT("Shape"), bag);
         },
         S_OK, R"({"width":210})"},
        {"free", [&](IBag** bag) { return factory->CreateBag(bag); }, S_OK, "{}"},
        {"no such root", ofSet(set.Get(), TEXT("No")), E_INVALIDARG, nullptr},
        {"nothing loaded", ofSet(broken.Get(), nullptr), E_UNEXPECTED, nullptr},
        {"no set", ofSet(nullptr, nullptr), E_INVALIDARG, nullptr},
        {"another thing", ofSet(stranger.Get(), nullptr), E_NOINTERFACE, nullptr},
        {"no buffer", ofBuffer(nullptr, 5, nullptr), E_INVALIDARG, nullptr},
        {"no bytes", ofBuffer(kTemplates, 0, nullptr), E_INVALIDARG, nullptr},
        {"no stream",
         [&](IBag** bag) { return factory->CreateBagFromStream(nullptr, nullptr, bag); },
         E_INVALIDARG, nullptr},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.what);
        ComPtr<IBag> bag(stranger);
        EXPECT_EQ(c.make(bag.Put()), c.expected);
        ASSERT_EQ(static_cast<bool>(bag), c.json != nullptr);
        if (bag) {
            EXPECT_EQ(JsonOf(*bag.Get()), c.json);
        }
        EXPECT_EQ(c.make(nullptr), E_POINTER);
    }
}

TEST(BagFaces, GiveClientsOfTheTableWhatLiesInMemory) {
    const ComPtr<IBag> bag = NewBag();
    const ComPtr<IBagItem> root = RootOf(*bag.Get());
    void* raw = bag.Get();
    EXPECT_EQ(root->GetOrAddRaw(Words(TEXT("a.b")).Get(), kInt, nullptr), E_POINTER);
    ASSERT_EQ(root->GetOrAddRaw(Words(TEXT("a.b")).Get(), kInt, &raw), S_OK);
    const std::int32_t number = 5;
    EXPECT_TRUE(static_cast<CAB::DataItem*>(raw)->SetInt(&number, 0));
    EXPECT_EQ(JsonOf(*bag.Get()), R"({"a":{"b":5}})");
    EXPECT_EQ(root->GetOrAddRaw(Words(TEXT("a.b.c")).Get(), kInt, &raw), E_INVALIDARG);
    EXPECT_EQ(raw, nullptr);

    UniqueVariant value;
    EXPECT_EQ(root->GetValue(value.Put()), S_OK);
    EXPECT_EQ(value.Get().vt, VT_DISPATCH);
    EXPECT_EQ(ComPtr<IUnknown>(value.Get().pdispVal).Get(), root.As<IUnknown>().Get())
        << "a container is its own value";

    LPCWSTR text = TEXT("before");
    ComPtr<IBagItem> item;
    EXPECT_EQ(root->GetStringPointer(&text), E_INVALIDARG);
    EXPECT_EQ(text, nullptr);
    ASSERT_EQ(root->SetStringAt(TEXT("s"), UniqueBstr(SysAllocString(TEXT("own"))).Get()), S_OK);
    ASSERT_EQ(root->Item(Words(TEXT("s")).Get(), item.Put()), S_OK);
    ASSERT_EQ(item->GetStringPointer(&text), S_OK);
    EXPECT_EQ(platform::WideView(text), platform::WideView(TEXT("own")));
    EXPECT_EQ(item->GetStringPointer(nullptr), E_POINTER);

    const auto size = static_cast<LONG>(std::char_traits<char>::length(kTemplates));
    const ComPtr<IBag> shaped = NewBag(), second = NewBag();
    const ComPtr<IBagItem> shape = RootOf(*shaped.Get()), other = RootOf(*second.Get());
    EXPECT_EQ(shape->SetTemplateFromBuffer(nullptr, size, nullptr), E_INVALIDARG);
    EXPECT_EQ(shape->SetTemplateFromBuffer(kTemplates, 0, nullptr), E_INVALIDARG);
    EXPECT_EQ(shape->SetTemplateFromBuffer(kTemplates, size, TEXT("No")), E_INVALIDARG);
    ASSERT_EQ(shape->SetTemplateFromBuffer(kTemplates, size, TEXT("Shape")), S_OK);
    EXPECT_EQ(JsonOf(*shaped.Get()), R"({"width":210})");
    // The declaration outlives the bag that it came with.
    ASSERT_EQ(other->CopySpec(shape.Get()), S_OK);
    EXPECT_EQ(shape->SetTemplateFromBuffer(kTemplates, size, TEXT("Other")), S_OK);
    EXPECT_EQ(JsonOf(*shaped.Get()), R"({"depth":3})");
    EXPECT_EQ(JsonOf(*second.Get()), R"({"width":210})");
    EXPECT_EQ(other->SetIntAt(TEXT("none"), 1), E_INVALIDARG);
}

TEST(BagFaces, ShareAndLendTheLockOfTheBag) {
    const ComPtr<IBag> bag = NewBag();
    ComPtr<IBagLocker> lender = bag.As<IBagLocker>();
    ASSERT_TRUE(lender);
    EXPECT_EQ(lender->GiveBack(), E_FAIL) << "not borrowed";
    EXPECT_EQ(lender->Borrow(), S_OK);
    EXPECT_EQ(lender->Borrow(), S_OK);
    std::thread other([&] {
        EXPECT_EQ(lender->GiveBack(), E_FAIL) << "borrowed by another thread";
        Fill(*bag.Get(), TEXT("{\"other\":1}"));
    });
    EXPECT_EQ(lender->GiveBack(), S_OK);
    const ComPtr<IBagItem> root = RootOf(*bag.Get());
    for (LONG i = 0; i < 1000; ++i) {
        EXPECT_EQ(root->SetIntAt(TEXT("a"), i), S_OK);
        EXPECT_EQ(JsonOf(*bag.Get()), "{\"a\":" + std::to_string(i) + "}");
    }
    EXPECT_EQ(lender->GiveBack(), S_OK);
    other.join();
    EXPECT_EQ(JsonOf(*bag.Get()), "{\"a\":999,\"other\":1}");
    EXPECT_EQ(lender->GiveBack(), E_FAIL);
    EXPECT_EQ(lender->Borrow(), S_OK) << "given back with the object";
}

TEST(BagFaces, SaveToKeysAndLoadFromThem) {
    const test_support::TestProfile profile;
    const ComPtr<IBag> bag = NewBag();
    const ComPtr<IBagItem> root = RootOf(*bag.Get());
    Fill(*bag.Get(), TEXT("{\"a\":{\"b\":[1,true,\"x\"]},\"c\":0.5}"));
    ComPtr<IBagItem> inner, loadedInner;
    ASSERT_EQ(root->Item(Words(TEXT("a")).Get(), inner.Put()), S_OK);
    platform::RegistryKey key;
    ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, TEXT("Software\\Faces"), 0, nullptr, 0,
                              KEY_ALL_ACCESS, nullptr, key.Put(), nullptr),
              ERROR_SUCCESS);
    const LONGLONG handle = static_cast<LONGLONG>(reinterpret_cast<std::intptr_t>(key.Get()));
    const struct {
        const WCHAR* path;
        LONGLONG key;
    } kPlaces[] = {
        {nullptr, handle},
        {TEXT("Below\\It"), handle},
        {TEXT("HKCU\\Software\\Other"), 0},
        {TEXT("Software\\Third"), 0x80000001},
    };
    for (const auto& place : kPlaces) {
        SCOPED_TRACE(&place - kPlaces);
        EXPECT_EQ(bag->SaveRegistry(place.path, place.key), S_OK);
        // Saving again replaces what is there; an item's own values are what a key then holds.
        EXPECT_EQ(inner->SaveRegistry(place.path, place.key), S_OK);
        const ComPtr<IBag> loaded = NewBag();
        EXPECT_EQ(loaded->LoadRegistry(place.path, place.key), S_OK);
        EXPECT_EQ(JsonOf(*loaded.Get()), R"({"b":[1,true,"x"]})");
        // Only what has changed since it was saved here.
        EXPECT_EQ(root->SaveRegistryFlags(place.path, place.key, 0), S_OK);
        EXPECT_EQ(root->SetIntAt(TEXT("a.d"), 8), S_OK);
        EXPECT_EQ(bag->SaveRegistryFlags(place.path, place.key, 3), S_OK);
        const ComPtr<IBag> whole = NewBag();
        EXPECT_EQ(RootOf(*whole.Get())->LoadRegistry(place.path, place.key), S_OK);
        EXPECT_EQ(JsonOf(*whole.Get()), JsonOf(*bag.Get()));
        EXPECT_EQ(root->Remove(Words(TEXT("a.d")).Get()), E_INVALIDARG) << "a key, not a path";
        EXPECT_EQ(inner->Remove(Words(TEXT("d")).Get()), S_OK);
    }
    const ComPtr<IBag> none = NewBag();
    for (const WCHAR* path : {TEXT("HKCU\\Software\\None"), TEXT("None"), TEXT("")}) {
        EXPECT_TRUE(FAILED(none->LoadRegistry(path, 0))) << platform::ToUtf8(path);
    }
}

TEST(BagFaces, EachFailedAllocationIsToldAndChangesNothing) {
    const test_support::TestProfile profile;
    constexpr const WCHAR* kBefore = TEXT("{\"a\":{\"b\":5,\"t\":\"x\"},\"list\":[1,2,3]}");
    const ComPtr<IUnknown> bytes = StreamOf("some bytes"), templates = StreamOf(kTemplates);
    const UniqueBstr text(SysAllocString(TEXT("a text that needs room")));
    const Words words(TEXT("a text that needs room")), path(TEXT("n.e.w"));
    const UniqueVariant first(0);
    const ComPtr<IBag> other = NewBag();
    Fill(*other.Get(), TEXT("{\"a\":{\"b\":6,\"t\":\"yy\"},\"more\":[\"text\",{\"k\":true}]}"));
    const ComPtr<IBagItem> otherRoot = RootOf(*other.Get());
    ComPtr<IBagItem> made;
    const struct {
        const char* what;
        std::function<HRESULT(IBag&, IBagItem&, IBagItem&)> call;
    } kCalls[] = {
        {"SetIntAt", [&](auto&, auto& root, auto&) { return root.SetIntAt(TEXT("x.y.z"), 1); }},
        {"SetStringAt",
         [&](auto&, auto& root, auto&) { return root.SetStringAt(TEXT("a.t"), text.Get()); }},
        {"SetStreamAt",
         [&](auto&, auto& root, auto&) { return root.SetStreamAt(TEXT("s"), AsStream(bytes)); }},
        {"GetIntAt",
         [&](auto&, auto& root, auto&) {
             LONG number = 0;
             return root.GetIntAt(TEXT("list[0]"), 1, &number);
         }},
        {"EnsureItem",
         [&](auto&, auto& root, auto&) { return root.EnsureItem(path.Get(), kInt, made.Put()); }},
        {"GetOrAdd",
         [&](auto&, auto& root, auto&) { return root.GetOrAdd(path.Get(), 5, made.Put()); }},
        {"GetOrAdd in a list",
         [&](auto&, auto&, auto& list) { return list.GetOrAdd(first.Get(), kArray, made.Put()); }},
        {"Append", [&](auto&, auto&, auto& list) { return list.Append(kDictionary, made.Put()); }},
        {"Remove", [&](auto&, auto&, auto& list) { return list.Remove(first.Get()); }},
        {"Move", [&](auto&, auto&, auto& list) { return list.Move(0, 3, 2); }},
        {"RemoveRange", [&](auto&, auto&, auto& list) { return list.RemoveRange(0, 2); }},
        {"Assign", [&](auto&, auto& root, auto&) { return root.Assign(otherRoot.Get()); }},
        {"SetTemplate",
         [&](auto&, auto& root, auto&) { return root.SetTemplate(templates.Get(), nullptr); }},
        {"SaveRegistry",
         [&](auto&, auto& root, auto&) { return root.SaveRegistry(TEXT("HKCU\\Software\\M"), 0); }},
        {"FromJson",
         [&](auto& bag, auto&, auto&) {
             return bag.FromJson(UniqueBstr(SysAllocString(TEXT("{\"n\":[1,2]}"))).Get());
         }},
        {"GetOrAddWithValue",
         [&](auto&, auto& root, auto&) {
             return root.GetOrAddWithValue(path.Get(), 0, words.Get(), made.Put());
         }},
        {"GetOrAddWithValue in a list",
         [&](auto&, auto&, auto& list) {
             return list.GetOrAddWithValue(first.Get(), 0, words.Get(), made.Put());
         }},
        {"SetStringAt a new place",
         [&](auto&, auto& root, auto&) { return root.SetStringAt(TEXT("new.t"), text.Get()); }},
        {"PutString to a missing item",
         [&](auto&, auto& root, auto&) {
             const HRESULT found = root.Item(Words(TEXT("a.w")).Get(), made.Put());
             return FAILED(found) ? found : made->PutString(text.Get());
         }},
        {"Rebuild", [&](auto& bag, auto&, auto&) { return bag.Rebuild(); }},
        {"PutValue",
         [&](auto&, auto& root, auto&) {
             const HRESULT found = root.Item(Words(TEXT("a.t")).Get(), made.Put());
             return FAILED(found) ? found : made->PutValue(words.Get());
         }},
    };
    std::string before;
    {
        const ComPtr<IBag> bag = NewBag();
        Fill(*bag.Get(), kBefore);
        before = JsonOf(*bag.Get());
    }
    for (const auto& c : kCalls) {
        SCOPED_TRACE(c.what);
        // These merge, and roll nothing back.
        const std::string what(c.what);
        const bool merges = what == "FromJson" || what == "Assign";
        std::vector<std::string> results;
        const auto met = test_support::FailEachAllocation([&](auto hasFailed) {
            const platform::ScopeExit drop([&] { made.Reset(); });
            const ComPtr<IBag> bag = NewBag();
            if (!bag) return;
            const HRESULT filled = bag->FromJson(UniqueBstr(SysAllocString(kBefore)).Get());
            if (FAILED(filled)) return;
            ComPtr<IBagItem> root = RootOf(*bag.Get()), list;
            if (root) (void)root->Item(Words(TEXT("list")).Get(), list.Put());
            if (hasFailed() || !list) return;
            const HRESULT result = c.call(*bag.Get(), *root.Get(), *list.Get());
            const bool wasMet = hasFailed();
            if (SUCCEEDED(result)) {  // What failed was of no account.
                const std::string json = JsonOf(*bag.Get());
                if (hasFailed() == wasMet) results.push_back(json);
                return;
            }
            EXPECT_EQ(result, E_OUTOFMEMORY);
            if (!merges) {
                EXPECT_EQ(JsonOf(*bag.Get()), before);
            }
        });
        EXPECT_GT(met, 0u);
        for (const std::string& result : results) EXPECT_EQ(result, results.back());
    }
}

}  // namespace
