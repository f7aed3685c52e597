#include "cab/store.h"

#include <gtest/gtest.h>
#include <string>

#include "cab/data_object.h"
#include "cab/data_stream.h"
#include "cab/object_handlers.h"
#include "platform/com_object.h"
#include "platform/text.h"
#include "tests/cab/bag_support.h"
#include "tests/support/test_profile.h"

namespace {

using namespace bag_test;

// A store of one value: what is written is kept as items and read from them again.
class TreeStore final : public DataReader, public DataWriter {
public:
    Kind GetKind() noexcept override { return item ? item->GetType() : Kind::None; }
    std::uint32_t GetCount() noexcept override {
        return item && item->AsContainer() ? item->AsContainer()->GetCount() : 0;
    }
    DataReader* ChildAt(std::uint32_t index) noexcept override {
        return Child(item->AsContainer()->ItemAt(index));
    }
    WStringView KeyAt(std::uint32_t index) noexcept override {
        return item->AsDictionary()->KeyAt(index);
    }
    DataReader* ChildByKey(WStringView key) noexcept override {
        return Child(item && item->AsDictionary() ? item->AsDictionary()->Find(key) : nullptr);
    }
    bool ReadBool(bool& value) noexcept override { return item->GetBool(value); }
    bool ReadInt(std::int32_t& value) noexcept override { return item->GetInt(value); }
    bool ReadInt64(std::int64_t& value) noexcept override { return item->GetInt64(value); }
    bool ReadDouble(double& value) noexcept override { return item->GetDouble(value); }
    bool ReadString(WStringView& value) noexcept override {
        value = *item->GetString();
        return true;
    }
    bool ReadStream(AUX::Stream*& value) noexcept override { return (value = item->GetStream()); }

    bool PutBool(bool value) noexcept override { return Make(Kind::Bool)->SetBool(&value, 0); }
    bool PutInt(std::int32_t value) noexcept override { return SetInt(Make(Kind::Int), value); }
    bool PutInt64(std::int64_t value) noexcept override {
        return Make(Kind::Int64)->SetInt64(&value, 0);
    }
    bool PutDouble(double value) noexcept override {
        return Make(Kind::Double)->SetDouble(&value, 0);
    }
    bool PutString(WStringView value) noexcept override {
        return Make(Kind::String)->SetText(value);
    }
    bool PutStream(AUX::Stream& value) noexcept override {
        return Make(Kind::Stream)->SetStream(&value, false);
    }
    bool PutContainer(Kind kind) noexcept override { return Make(kind) != nullptr; }
    DataWriter* Add(WStringView key, Kind kind) noexcept override {
        DataItem* const child = item->AsArray()
                                    ? item->AsArray()->InsertAt(-1, kind)
                                    : item->AsDictionary()->GetOrAdd(
                                          key.data(), static_cast<std::int64_t>(key.size()), kind);
        return Child(child);
    }

    DataItem* item = nullptr;

private:
    // The top value is made by whoever asks; below it Add has done so.
    DataItem* Make(Kind kind) noexcept { return item && item->IsType(kind) ? item : nullptr; }
    TreeStore* Child(DataItem* of) noexcept {
        if (!of) return nullptr;
        if (!below_) below_ = std::make_unique<TreeStore>();
        below_->item = of;
        return below_.get();
    }

    std::unique_ptr<TreeStore> below_;
};

constexpr CLSID kClass = {0x12345678, 0x9abc, 0xdef0, {1, 2, 3, 4, 5, 6, 7, 8}};

class Persistent final : public platform::ComObject<IBagPersist> {
public:
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID* classId) noexcept override {
        *classId = kClass;
        return S_OK;
    }
    std::int32_t number = 0;
};

class Handler final : public ObjectHandler {
public:
    HRESULT Load(const CLSID& classId, DataDictionary& from, IUnknown** object) noexcept override {
        EXPECT_TRUE(classId == kClass);
        auto made = platform::MakeObject<Persistent>();
        made->number = IntOf(from.Find(TEXT("number")));
        *object = made.Detach();
        return S_OK;
    }
    HRESULT Save(const CLSID&, IUnknown& object, DataDictionary& to) noexcept override {
        if (fails) return E_FAIL;
        const auto& mine = static_cast<Persistent&>(static_cast<IBagPersist&>(object));
        return SetInt(to.GetOrAdd(TEXT("number"), -1, Kind::Int), mine.number) ? S_OK : E_FAIL;
    }
    bool fails = false;
};

TEST(Store, BringsABagBackWithItsObjects) {
    Handler handler;
    const Bag bag = MakeBag();
    DataItem& root = *bag->GetRootItem();
    const bool yes = true;
    const double half = 0.5;
    EXPECT_TRUE(MakePath(root, TEXT("d.b"), Kind::Bool)->SetBool(&yes, 0));
    EXPECT_TRUE(SetInt(MakePath(root, TEXT("l[0]"), Kind::Int), 3));
    EXPECT_TRUE(MakePath(root, TEXT("l[1]"), Kind::Double)->SetDouble(&half, 0));
    EXPECT_TRUE(MakePath(root, TEXT("s"), Kind::String)->SetText(TEXT("text")));
    AUX::Stream* const stream = MakePath(root, TEXT("bytes"), Kind::Stream)->GetStream();
    std::int64_t count = 0;
    ASSERT_EQ(stream->Write("bytes", 5, count), 0);
    auto object = platform::MakeObject<Persistent>();
    object->number = 42;
    EXPECT_TRUE(MakePath(root, TEXT("o"), Kind::Object)->SetObject(object.Get()));
    MakePath(root, TEXT("hidden"), Kind::Int)->SetFlags(ItemTransient, ItemTransient);

    const auto kept = CreateItem(nullptr, nullptr, nullptr, nullptr, Kind::Dictionary);
    TreeStore store;
    store.item = kept.get();
    EXPECT_FALSE(root.WriteTo(store, false)) << "no handler of the class";
    ASSERT_TRUE(AddObjectHandler(kClass, handler));
    EXPECT_FALSE(AddObjectHandler(kClass, handler));
    EXPECT_TRUE(kept->Reset());
    EXPECT_EQ(FindPath(root, TEXT("o"))->GetStoredType(), Kind::Dictionary);
    handler.fails = true;
    EXPECT_FALSE(root.WriteTo(store, false));
    handler.fails = false;
    EXPECT_TRUE(kept->Reset());
    ASSERT_TRUE(root.WriteTo(store, false));
    const WString* const id = FindPath(*kept, TEXT("o.$ClassID"))->GetString();
    EXPECT_EQ(platform::ToUtf8({id->Text(), id->Length()}),
              "{12345678-9ABC-DEF0-0102-030405060708}");

    const auto back = CreateItem(nullptr, nullptr, nullptr, &store, Kind::None);
    ASSERT_TRUE(back);
    EXPECT_EQ(FindPath(*back, TEXT("hidden")), nullptr);
    EXPECT_EQ(back->AsContainer()->GetCount(), 5u);
    EXPECT_TRUE(FindPath(*back, TEXT("bytes"))->Equals(FindPath(root, TEXT("bytes")), 0));
    DataItem* const loaded = FindPath(*back, TEXT("o"));
    ASSERT_TRUE(loaded && loaded->IsType(Kind::Object));
    EXPECT_EQ(static_cast<Persistent*>(static_cast<IBagPersist*>(loaded->GetObject()))->number, 42);
    EXPECT_FALSE(loaded->Equals(FindPath(root, TEXT("o")), 0)) << "another object";
    EXPECT_TRUE(loaded->Equals(FindPath(root, TEXT("o")), kEqualAnyObject));
    RemoveObjectHandler(kClass);
    EXPECT_EQ(FindObjectHandler(kClass), nullptr);
}

TEST(Store, PrefersTheKindThatIsAskedFor) {
    const auto kept = CreateItem(nullptr, nullptr, nullptr, nullptr, Kind::Int);
    ASSERT_TRUE(SetInt(kept.get(), 9));
    TreeStore store;
    store.item = kept.get();
    EXPECT_EQ(IntOf(CreateItem(nullptr, nullptr, nullptr, &store, Kind::None).get()), 9);
    EXPECT_EQ(IntOf(CreateItem(nullptr, nullptr, nullptr, &store, Kind::Int64).get()), 0);
    ItemSpec temporary = Leaf(TEXT("n"), Kind::Int);
    temporary.flags = SpecTemp;
    EXPECT_EQ(IntOf(CreateItem(nullptr, nullptr, &temporary, &store, Kind::None).get()), 0);
}

TEST(Store, ComparesTextsAndStreamsAsAsked) {
    const test_support::TestProfile profile;
    const auto a = CreateItem(nullptr, nullptr, nullptr, nullptr, Kind::String);
    const auto b = CreateItem(nullptr, nullptr, nullptr, nullptr, Kind::String);
    ASSERT_TRUE(a->SetText(TEXT("\u00c4b")) && b->SetText(TEXT("\u00e4B")));
    EXPECT_FALSE(a->Equals(b.get(), 0));
    EXPECT_TRUE(a->Equals(b.get(), kEqualIgnoreCase));
    const auto s = CreateItem(nullptr, nullptr, nullptr, nullptr, Kind::Stream);
    const auto t = CreateItem(nullptr, nullptr, nullptr, nullptr, Kind::Stream);
    std::int64_t count = 0;
    ASSERT_EQ(s->GetStream()->Write("x", 1, count), 0);
    EXPECT_FALSE(s->Equals(t.get(), 0));
    EXPECT_TRUE(s->Equals(t.get(), kEqualAnyStream));
    EXPECT_TRUE(t->Assign(s.get(), true, false) && t->Equals(s.get(), 0));
    EXPECT_TRUE(t->Reset());
    EXPECT_EQ(t->GetStream()->GetSize(), 0);
    // Large ones are copied to a file.
    for (const std::int64_t size : {kMaxBytesInMemory, kMaxBytesInMemory + 1}) {
        ASSERT_EQ(s->GetStream()->SetSize(size), 0);
        EXPECT_TRUE(t->Assign(s.get(), true, false) && t->Equals(s.get(), 0));
        EXPECT_EQ(t->GetStream()->GetStreamType() == AUX::StreamType::MappedFile,
                  size > kMaxBytesInMemory);
    }
    EXPECT_TRUE(t->Reset() && t->GetStream()->GetSize() == 0);
    EXPECT_FALSE(a->Equals(s.get(), ~0u) || a->Equals(nullptr, 0));
}

}  // namespace
