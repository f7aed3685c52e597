#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "objects/array_objects.h"
#include "objects/operation_history.h"
#include "objects/paper_table.h"
#include "objects/root_object.h"
#include "objects/value_objects.h"
#include "platform/testing.h"
#include "platform/unique_bstr.h"
#include "tests/objects/host_objects.h"
#include "tests/support/com_rules.h"
#include "tests/support/fail_each_allocation.h"
#include "tests/support/test_profile.h"

namespace {

using namespace AUX;
using objects_test::Meter;
using objects_test::Step;
using platform::ComPtr;
using platform::InterfaceId;
using platform::MakeObject;
using platform::UniqueBstr;

class FamilyTest : public ::testing::Test {
protected:
    FamilyTest() { isStarted_ = StartObjects(nullptr); }
    ~FamilyTest() override { EndObjects(); }
    RootObject& root_ = Root();
    bool isStarted_ = false;
};

// Visits each maker, as one of its interface: visit.operator()<Interface>(make).
template <class Visit>
void ForEachMaker(RootObject& root, IProgress* meter, Visit visit) {
    const UniqueBstr spec(SysAllocString(TEXT("a:1|b:2"))), text(SysAllocString(TEXT("a b")));
    BSTR const words = spec.Get();
    visit.template operator()<IIntArray>([&](auto** to) { return root.NewIntArray(to); });
    visit.template operator()<IDoubleArray>([&](auto** to) { return root.NewDoubleArray(to); });
    visit.template operator()<IStringArray>([&](auto** to) { return root.NewStringArray(to); });
    visit.template operator()<IStringArray>(
        [&](auto** to) { return root.SplitWords(text.Get(), to); });
    visit.template operator()<IValueArray>([&](auto** to) { return root.NewValueArray(to); });
    visit.template operator()<IObjectsArray>([&](auto** to) { return root.NewObjectArray(to); });
    visit.template operator()<IObjectList>([&](auto** to) { return root.NewObjectList(to); });
    visit.template operator()<IText>([&](auto** to) { return root.NewText(words, to); });
    visit.template operator()<IBitSet>([&](auto** to) { return root.NewBitSet(99'999'999, to); });
    visit.template operator()<IMemoryBlock>([&](auto** to) { return root.NewMemoryBlock(5, to); });
    visit.template operator()<ISignal>([&](auto** to) { return root.NewSignal(to); });
    visit.template operator()<IOperationHistory>(
        [&](auto** to) { return root.NewOperationHistory(to); });
    visit.template operator()<IProgressSlice>(
        [&](auto** to) { return root.NewProgressSliceAll(meter, 1, to); });
    visit.template operator()<IKeywordTable>([&](auto** to) {
        return root.NewKeywordTable(words, 0, 9, 0, nullptr, VARIANT_FALSE, to);
    });
    visit.template operator()<IHashedKeywordTable>([&](auto** to) {
        return root.NewHashedKeywordTable(words, 0, 9, 0, words, VARIANT_FALSE, to);
    });
}

template <class Enum, class Array>
void ExpectEnumerator() {
    ComPtr<Enum> items, copy;
    const auto array = MakeObject<Array>();
    ASSERT_EQ(array->GetEnumerator(items.Put()), S_OK);
    test_support::ExpectComRules(items.Get(), {InterfaceId<Enum>()});
    EXPECT_EQ(items->Clone(copy.Put()), S_OK);
    EXPECT_EQ(items->Skip(0), S_OK);
    EXPECT_EQ(items->Skip(1), S_FALSE);
    EXPECT_EQ(items->Next(1, nullptr, nullptr), E_POINTER);
    EXPECT_EQ(items->Clone(nullptr), E_POINTER);
    EXPECT_EQ(items->Reset(), S_OK);
    array->AddRef();
    EXPECT_EQ(array->Release(), 3u) << "held by both";
}

TEST_F(FamilyTest, MakesObjectsThatKeepTheRulesOfCom) {
    ASSERT_TRUE(isStarted_);
    test_support::ExpectComRules(&root_, {InterfaceId<IRootObject>(), InterfaceId<IDispatch>()});
    const auto meter = MakeObject<Meter>();
    const auto expectMakes = [&]<class Interface>(auto make) {
        EXPECT_EQ(make(static_cast<Interface**>(nullptr)), E_POINTER);
        ComPtr<Interface> made;
        ASSERT_EQ(make(made.Put()), S_OK);
        const std::vector<IID> ids = {InterfaceId<Interface>(), InterfaceId<IDispatch>()};
        test_support::ExpectComRules(made.Get(), ids);
        made->AddRef();
        EXPECT_EQ(made->Release(), 1u);
    };
    ForEachMaker(root_, meter.Get(), expectMakes);
    ExpectEnumerator<IEnumInts, IntArrayObject>();
    ExpectEnumerator<IEnumDoubles, DoubleArrayObject>();
    ExpectEnumerator<IEnumTexts, StringArrayObject>();
    ExpectEnumerator<IEnumValues, ValueArrayObject>();
    ExpectEnumerator<IEnumArrayObjects, ObjectArrayObject>();
    ExpectEnumerator<IEnumListItems, ObjectListObject>();
    test_support::ExpectComRules(MakeObject<MessageEvent>().Get(),
                                 {InterfaceId<IMessageEvent>(), InterfaceId<IDispatch>()});
    ComPtr<IBitSet> none;
    EXPECT_EQ(root_.NewBitSet(0, none.Put()), E_INVALIDARG);
    EXPECT_EQ(root_.NewBitSet(100'000'000, none.Put()), E_INVALIDARG);
    ComPtr<IStringArray> words;
    EXPECT_EQ(root_.SplitWords(nullptr, words.Put()), S_FALSE);
    EXPECT_FALSE(words);
    ComPtr<IHashedKeywordTable> table;
    root_.SetKeywordHash(nullptr);
    EXPECT_EQ(root_.NewHashedKeywordTable(nullptr, 0, 9, 0, nullptr, 0, table.Put()), E_NOTIMPL);
    ComPtr<IUnknown> math, again;
    EXPECT_EQ(root_.GetMath(math.Put()), S_OK);
    EXPECT_EQ(root_.GetMath(again.Put()), S_OK);
    EXPECT_EQ(math.Get(), again.Get());
    ComPtr<IMessageHub> hub;
    EXPECT_EQ(root_.GetHub(hub.Put()), S_OK);
    test_support::ExpectComRules(hub.Get(), {InterfaceId<IMessageHub>()});
}

std::vector<ULONG> Content(IIntArray& array) {
    ComPtr<IEnumInts> items;
    EXPECT_EQ(array.GetEnumerator(items.Put()), S_OK);
    ULONG values[64], fetched = 0;
    EXPECT_EQ(items->Next(64, values, &fetched), S_FALSE);
    return {values, values + fetched};
}

TEST_F(FamilyTest, ArraysInsertRemoveAndRefuse) {
    const auto array = MakeObject<IntArrayObject>(), other = MakeObject<IntArrayObject>();
    const ULONG values[] = {1, 2, 3, 4};
    EXPECT_EQ(array->InsertRange(values, 4, 99), S_OK);
    EXPECT_EQ(array->Insert(9, 1), S_OK);
    EXPECT_EQ(Content(*array.Get()), (std::vector<ULONG>{1, 9, 2, 3, 4}));
    EXPECT_EQ(array->RemoveRange(5, 0), S_FALSE);
    EXPECT_EQ(array->RemoveRange(5, 1), E_INVALIDARG);
    EXPECT_EQ(array->RemoveRange(3, 0xFFFFFFFF), S_OK);
    EXPECT_EQ(array->InsertFrom(array.Get(), 0, 1, 0), E_INVALIDARG);
    EXPECT_EQ(array->Assign(array.Get()), E_INVALIDARG);
    EXPECT_EQ(other->InsertFrom(array.Get(), 1, 9, 0), S_OK);
    EXPECT_EQ(other->InsertFrom(array.Get(), 3, 1, 0), E_INVALIDARG);
    EXPECT_EQ(Content(*other.Get()), (std::vector<ULONG>{9, 2}));
    EXPECT_EQ(other->Assign(array.Get()), S_OK);
    EXPECT_EQ(Content(*other.Get()), (std::vector<ULONG>{1, 9, 2}));
    ULONG value = 7;
    EXPECT_EQ(array->GetItem(3, &value), E_INVALIDARG);
    EXPECT_EQ(array->SetItem(3, 1), E_INVALIDARG);
    array->Lock();
    EXPECT_EQ(array->SetItem(0, 5), E_FAIL);
    EXPECT_EQ(array->Insert(5, 0), E_FAIL);
    EXPECT_EQ(array->Assign(other.Get()), E_FAIL);
    EXPECT_EQ(array->Clear(), E_FAIL);
    array->Unlock();
    ComPtr<IEnumInts> items, copy;
    ASSERT_EQ(array->GetEnumerator(items.Put()), S_OK);
    EXPECT_EQ(items->Skip(2), S_OK);
    EXPECT_EQ(items->Clone(copy.Put()), S_OK);
    EXPECT_EQ(items->Skip(2), S_FALSE);
    EXPECT_EQ(copy->Next(1, &value, nullptr), S_OK);
    EXPECT_EQ(value, 2u);
}

TEST_F(FamilyTest, ObjectListsHoldSearchAndRemove) {
    const auto list = MakeObject<ObjectListObject>();
    const auto one = MakeObject<TextObject>(), two = MakeObject<TextObject>();
    for (IDispatch* object : std::initializer_list<IDispatch*>{one.Get(), two.Get(), one.Get()}) {
        EXPECT_EQ(list->Insert(object, 0xFFFFFFFF), S_OK);
    }
    LONG index = 0;
    EXPECT_EQ(list->Find(two.Get(), &index), S_OK);
    EXPECT_EQ(index, 1);
    EXPECT_EQ(list->FindFrom(one.Get(), 1, &index), S_OK);
    EXPECT_EQ(index, 2);
    ULONG removed = 0;
    EXPECT_EQ(list->RemoveAll(one.Get(), &removed), S_OK);
    EXPECT_EQ(removed, 2u);
    one->AddRef();
    EXPECT_EQ(one->Release(), 1u);
    EXPECT_EQ(list->Find(one.Get(), &index), S_FALSE);
    EXPECT_EQ(index, -1);
    EXPECT_EQ(list->Remove(nullptr), E_INVALIDARG);
}

TEST_F(FamilyTest, MakersGiveNothingWhenMemoryRunsOut) {
    const auto meter = MakeObject<Meter>();
    const auto made = test_support::FailEachAllocation([&](const auto& hasFailed) {
        const auto expectAllOrNothing = [&]<class Interface>(auto make) {
            const bool before = hasFailed();
            ComPtr<Interface> object;
            const HRESULT result = make(object.Put());
            EXPECT_EQ(SUCCEEDED(result), bool{object});
            // Of a keyword table the rest is kept.
            if (FAILED(result)) {
                EXPECT_EQ(result, E_OUTOFMEMORY);
                EXPECT_TRUE(hasFailed() && !before);
            }
        };
        ForEachMaker(root_, meter.Get(), expectAllOrNothing);
    });
    EXPECT_GT(made, 20u);
}

TEST_F(FamilyTest, ObjectsStayAsTheyWereWhenMemoryRunsOut) {
    const UniqueBstr word(SysAllocString(TEXT("word")));
    const auto run = test_support::FailEachAllocation([&](const auto& hasFailed) {
        bool before = false;
        const auto take = [&](HRESULT result) {
            const bool isNow = hasFailed() && !before;
            before = hasFailed();
            EXPECT_TRUE(result == S_OK || (result == E_OUTOFMEMORY && isNow)) << std::hex << result;
            return result == S_OK;
        };
        const auto texts = MakeObject<StringArrayObject>(), copy = MakeObject<StringArrayObject>();
        const auto list = MakeObject<ObjectListObject>();
        const auto text = MakeObject<TextObject>();
        const auto bits = MakeObject<BitSetObject>();
        const auto block = MakeObject<MemoryBlock>();
        const auto history = MakeObject<OperationHistory>();
        if (hasFailed()) return;
        ULONG expected = 0, count = 0;
        for (ULONG i = 0; i < 9; ++i) {
            expected += take(texts->Insert(word.Get(), 0));
            EXPECT_EQ(texts->GetCount(&count), S_OK);
            EXPECT_EQ(count, expected);
        }
        const bool isCopied = take(copy->Assign(texts.Get()));
        EXPECT_EQ(copy->GetCount(&count), S_OK);
        EXPECT_EQ(count, isCopied ? expected : 0);
        const bool isHeld = take(list->Insert(text.Get(), 0));
        text->AddRef();
        EXPECT_EQ(text->Release(), isHeld ? 2u : 1u);
        const bool isSet = take(text->SetText(word.Get()));
        EXPECT_EQ(text->GetLength(&count), S_OK);
        EXPECT_EQ(count, isSet ? 4u : 0u);
        const bool isGrown = take(bits->SetBitGrow(999, VARIANT_TRUE));
        EXPECT_EQ(bits->GetSize(&count), S_OK);
        EXPECT_EQ(count, isGrown ? 1000u : 0u);
        LONGLONG size = 0;
        const bool isWritten = take(block->WriteAt(5, "abc", 3));
        EXPECT_EQ(block->GetSize(&size), S_OK);
        EXPECT_EQ(size, isWritten ? 8 : 0);
        std::string log;
        bool isAdded = take(history->OpenGroup());
        for (const char name : {'a', 'b'}) {
            const auto step = MakeObject<Step>(log, name);
            if (!step) return;
            isAdded = take(history->Add(step.Get())) && isAdded;
        }
        isAdded = take(history->CloseGroup()) && isAdded;
        if (!isAdded) return;
        EXPECT_EQ(history->Undo(1, 0), S_OK);
        EXPECT_EQ(log, "-b-a");
    });
    EXPECT_GT(run, 10u);
}

TEST_F(FamilyTest, MemoryBlocksGrowReadAndWrite) {
    ComPtr<IMemoryBlock> block;
    ASSERT_EQ(root_.NewMemoryBlock(0, block.Put()), S_OK);
    LONGLONG size = 0, capacity = 0, read = 0;
    EXPECT_EQ(block->WriteAt(3, "abc", 3), S_OK);
    EXPECT_EQ(block->GetSize(&size), S_OK);
    EXPECT_EQ(block->GetCapacity(&capacity), S_OK);
    EXPECT_EQ(size, 6);
    EXPECT_EQ(capacity, 1024);
    char bytes[8] = {};
    EXPECT_EQ(block->ReadAt(2, bytes, 8, &read), S_OK);
    EXPECT_EQ(std::string(bytes, 4), std::string("\0abc", 4));
    EXPECT_EQ(read, 4);
    EXPECT_EQ(block->ReadAt(6, bytes, 1, &read), S_FALSE);
    for (const LONGLONG length : {0ll, -1ll}) {
        EXPECT_EQ(block->WriteAt(0, bytes, length), E_INVALIDARG);
    }
    EXPECT_EQ(block->WriteAt(-1, bytes, 1), E_INVALIDARG);
    EXPECT_EQ(block->ReserveMore(0x7FFFFFFFFFFFFFFF), E_OUTOFMEMORY);
    void* data = nullptr;
    for (int i = 0; i < 9; ++i) {
        EXPECT_EQ(block->GetData(&data), S_OK);
        EXPECT_EQ(block->Append(data, 6 << i), S_OK) << "its own bytes";
    }
    EXPECT_EQ(block->Compact(), S_OK);
    EXPECT_EQ(block->GetCapacity(&capacity), S_OK);
    EXPECT_EQ(capacity, 6 << 9);
}

TEST_F(FamilyTest, ReadOnlyBitSetsAndFillsOfNothingChangeNothing) {
    const auto set = MakeObject<BitSetObject>(), other = MakeObject<BitSetObject>();
    ASSERT_EQ(set->Create(10), S_OK);
    ASSERT_EQ(other->Create(10), S_OK);
    EXPECT_EQ(set->SetBit(10, VARIANT_TRUE), E_INVALIDARG);
    EXPECT_EQ(set->Fill(VARIANT_TRUE, 0, 0), S_FALSE);
    EXPECT_EQ(set->Fill(VARIANT_TRUE, 10, 1), S_FALSE);
    EXPECT_EQ(set->Fill(VARIANT_TRUE, 8, 99), S_OK);
    set->SetReadOnly(true);
    EXPECT_EQ(set->SetBit(0, VARIANT_TRUE), S_FALSE);
    EXPECT_EQ(set->Assign(other.Get()), S_FALSE);
    EXPECT_EQ(set->AndNot(set.Get()), S_FALSE);
    ULONG count = 0;
    EXPECT_EQ(set->CountRange(0, 99, &count), S_OK);
    EXPECT_EQ(count, 2u);
    VARIANT_BOOL answer = 0;
    EXPECT_EQ(other->Or(set.Get()), S_OK);
    EXPECT_EQ(other->IsEqual(set.Get(), &answer), S_OK);
    EXPECT_EQ(answer, VARIANT_TRUE);
    EXPECT_EQ(other->Or(nullptr), E_INVALIDARG);
}

TEST_F(FamilyTest, SlicesShowAShareOfTheirParent) {
    const auto meter = MakeObject<Meter>();
    meter->position = 20;
    ComPtr<IProgressSlice> slice;
    EXPECT_EQ(root_.NewProgressSlice(meter.Get(), -1, 0, 0, slice.Put()), E_INVALIDARG);
    EXPECT_EQ(root_.NewProgressSlice(meter.Get(), 40, 0x0F, 2 | 8, slice.Put()), S_OK);
    EXPECT_EQ(slice->SetRange(0), E_INVALIDARG);
    EXPECT_EQ(slice->SetRange(10), S_OK);
    EXPECT_EQ(slice->SetPosition(5), S_OK);
    EXPECT_DOUBLE_EQ(meter->position, 40);
    EXPECT_EQ(slice->SetPosition(99), S_OK);
    EXPECT_DOUBLE_EQ(meter->position, 60);
    slice->SetTitle(nullptr), slice->SetMessage(nullptr), slice->SetDetail(nullptr);
    slice->AddNote(nullptr), slice->Cancel(), slice->Refresh();
    EXPECT_EQ(meter->calls, "MDCR");
    EXPECT_EQ(slice->SetState(0xFF, 0x3C), S_OK);
    EXPECT_EQ(meter->state, 0x0Cu);
    EXPECT_EQ(slice->Suspend(), S_OK);
    EXPECT_EQ(slice->SetState(0, 0x04), S_OK);
    EXPECT_EQ(meter->state, 0x0Cu);
    EXPECT_EQ(slice->Resume(), S_OK);
    EXPECT_EQ(meter->state, 0x08u);
}

TEST_F(FamilyTest, HistoriesWalkGroupAndLimit) {
    constexpr HRESULT kLocked = OperationHistory::kStatusHistoryLocked;
    const auto history = MakeObject<OperationHistory>();
    std::string log;
    const auto add = [&](char name) {
        EXPECT_EQ(history->Add(MakeObject<Step>(log, name).Get()), S_OK);
    };
    EXPECT_EQ(history->Undo(1, 0), S_FALSE);
    add('a');
    EXPECT_EQ(history->OpenGroup(), S_OK);
    add('b'), add('c');
    EXPECT_EQ(history->Undo(1, 0), S_FALSE) << "in a group";
    EXPECT_EQ(history->CloseGroup(), S_OK);
    EXPECT_EQ(history->CloseGroup(), S_FALSE);
    EXPECT_EQ(history->Undo(9, 0), S_OK);
    EXPECT_EQ(history->Redo(2, 0), S_OK);
    EXPECT_EQ(history->Redo(1, 0), S_FALSE);
    EXPECT_EQ(log, "-c-b-a+a+b+c");
    history->Lock();
    EXPECT_EQ(history->Undo(1, 0), kLocked);
    EXPECT_EQ(history->SetCountLimit(1), kLocked);
    EXPECT_EQ(history->SetCountLimit(2), S_OK);
    EXPECT_EQ(history->Unlock(), S_OK);
    EXPECT_EQ(history->Unlock(), S_FALSE);
    HRESULT inside = S_OK;
    const auto meddler = MakeObject<Step>(log, 'm', [&] { inside = history->Clear(); });
    EXPECT_EQ(history->Add(meddler.Get()), S_OK);
    ULONG count = 0;
    LONG position = 0;
    EXPECT_EQ(history->GetCount(&count), S_OK);
    EXPECT_EQ(history->GetPosition(&position), S_OK);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(position, 1);
    UniqueBstr text;
    EXPECT_EQ(history->GetStepText(0, 2, text.Put()), S_OK);
    EXPECT_EQ(text.Get()[0], TEXT('2'));
    EXPECT_EQ(history->Undo(1, 0), S_OK);
    EXPECT_EQ(inside, kLocked);
    EXPECT_EQ(history->SetSizeLimit(10), S_OK);
    EXPECT_EQ(history->GetCount(&count), S_OK);
    EXPECT_EQ(count, 1u) << "of 20 and 10 bytes the first went";
}

TEST_F(FamilyTest, TellsStatusesAndPapersApart) {
    const struct {
        HRESULT (STDMETHODCALLTYPE RootObject::*test)(ULONG, VARIANT_BOOL*) noexcept;
        ULONG status;
        bool expected;
    } kCases[] = {{&RootObject::IsCanceledStatus, 0x800704C7, true},
                  {&RootObject::IsCanceledStatus, 0x83FF04C7, true},
                  {&RootObject::IsCanceledStatus, 0x800804C7, false},
                  {&RootObject::IsCanceledStatus, 0x000704C7, false},
                  {&RootObject::IsInvalidArgStatus, 0x80070057, true},
                  {&RootObject::IsInvalidArgStatus, 0x82020001, true},
                  {&RootObject::IsInvalidArgStatus, 0x80020001, false},
                  {&RootObject::IsNotImplementedStatus, 0x80004001, true},
                  {&RootObject::IsNotImplementedStatus, 0x820004B0, true}};
    for (const auto& c : kCases) {
        VARIANT_BOOL answer = 7;
        EXPECT_EQ((root_.*c.test)(c.status, &answer), S_OK);
        EXPECT_EQ(answer, c.expected ? VARIANT_TRUE : VARIANT_FALSE) << std::hex << c.status;
    }
    ULONG group = 0, key = 0;
    double width = 0, height = 0;
    EXPECT_EQ(root_.GetStandardPaper(4, &group, &width, &height), S_OK);
    EXPECT_NEAR(width, 595.2756, 1e-4);
    EXPECT_NEAR(height, 841.8898, 1e-4);
    EXPECT_EQ(root_.GetStandardPaper(49, &group, nullptr, &height), S_OK);
    EXPECT_EQ(height, 3024);
    EXPECT_EQ(root_.GetStandardPaper(50, &group, nullptr, nullptr), E_INVALIDARG);
    EXPECT_EQ(root_.GetDefaultPaper(&key), S_OK);
    EXPECT_TRUE(key == 3 || key == 4 || key == 11 || key == 18) << key;
}

TEST_F(FamilyTest, GivesMemoryThatItTakesBack) {
    void* block = &root_;
    for (const LONGLONG size : {0, -1}) {
        EXPECT_EQ(root_.Alloc(size, &block), E_INVALIDARG);
        EXPECT_EQ(block, nullptr);
    }
    EXPECT_EQ(root_.Alloc(1, nullptr), E_POINTER);
    EXPECT_EQ(root_.Alloc(INT64_MAX, &block), E_OUTOFMEMORY);
    ASSERT_EQ(root_.Alloc(4, &block), S_OK);
    std::memcpy(block, "abc", 4);
    void* larger = nullptr;
    ASSERT_EQ(root_.Resize(block, 5000, &larger), S_OK);
    EXPECT_STREQ(static_cast<const char*>(larger), "abc");
    for (const auto& [size, result] :
         {std::pair(LONGLONG{-1}, E_INVALIDARG), {INT64_MAX, E_OUTOFMEMORY}}) {
        block = nullptr;
        EXPECT_EQ(root_.Resize(larger, size, &block), result);
        EXPECT_EQ(block, larger) << "still the caller's";
    }
    EXPECT_EQ(root_.Resize(larger, 1, nullptr), E_POINTER);
    EXPECT_EQ(root_.Free(larger), S_OK);
    EXPECT_EQ(root_.Free(nullptr), E_INVALIDARG);
}

TEST_F(FamilyTest, RevealsFilesInTheirFolder) {
    const test_support::TestProfile profile;
    const platform::WideString file = profile.Path(TEXT("a"));
    ASSERT_TRUE(test_support::WriteWholeFile(file, "x"));
    const auto reveal = [&](std::initializer_list<platform::WideString> texts, bool isRelative) {
        const auto names = MakeObject<StringArrayObject>();
        for (const platform::WideString& text : texts) {
            EXPECT_EQ(names->Insert(UniqueBstr(SysAllocString(text.c_str())).Get(), 99), S_OK);
        }
        const platform::testing::ShellRecorder recorder;
        const HRESULT result = root_.RevealItems(names.Get(), ToVariantBool(isRelative));
        EXPECT_EQ(recorder.Requests().size(), SUCCEEDED(result) ? 1u : 0u);
        for (const auto& request : recorder.Requests()) {
            EXPECT_EQ(request.items, std::vector<platform::WideString>{file});
        }
        return result;
    };
    EXPECT_EQ(reveal({file}, false), S_OK);
    EXPECT_EQ(reveal({profile.Folder(), TEXT("a")}, true), S_OK) << "the folder comes first";
    EXPECT_EQ(reveal({}, false), E_INVALIDARG);
    EXPECT_EQ(reveal({}, true), E_INVALIDARG);
    EXPECT_EQ(root_.RevealItems(nullptr, VARIANT_FALSE), E_INVALIDARG);
}

TEST_F(FamilyTest, CiphersTakeBackWhatTheyMade) {
    ComPtr<IMemoryBlock> key, empty;
    ComPtr<IText> plain, hidden, back;
    const UniqueBstr words(SysAllocString(TEXT("some words")));
    ASSERT_EQ(root_.NewMemoryBlock(0, key.Put()), S_OK);
    ASSERT_EQ(root_.NewMemoryBlock(0, empty.Put()), S_OK);
    ASSERT_EQ(key->Assign("0123456789abcdef", 16), S_OK);
    ASSERT_EQ(root_.NewText(words.Get(), plain.Put()), S_OK);
    EXPECT_EQ(root_.EncryptText(empty.Get(), plain.Get(), hidden.Put()), E_INVALIDARG);
    EXPECT_EQ(root_.EncryptText(nullptr, plain.Get(), hidden.Put()), E_INVALIDARG);
    EXPECT_EQ(root_.EncryptBytes(key.Get(), "abc", 3, hidden.Put()), E_INVALIDARG);
    for (const bool asBytes : {false, true}) {
        ASSERT_EQ(asBytes ? root_.EncryptBytes(key.Get(), words.Get(), 20, hidden.Put())
                          : root_.EncryptText(key.Get(), plain.Get(), hidden.Put()),
                  S_OK);
        UniqueBstr envelope, text;
        EXPECT_EQ(hidden->GetText(envelope.Put()), S_OK);
        ASSERT_EQ(root_.DecryptString(key.Get(), envelope.Get(), back.Put()), S_OK);
        EXPECT_EQ(back->GetText(text.Put()), S_OK);
        EXPECT_EQ(WStringView(text.Get()), WStringView(words.Get()));
    }
    EXPECT_EQ(root_.DecryptString(key.Get(), nullptr, back.Put()), S_OK);
    EXPECT_FALSE(back);
}

}  // namespace
