#include "cab/create_item.h"

#include "cab/data_array.h"
#include "cab/data_dictionary.h"
#include "cab/data_number.h"
#include "cab/data_object.h"
#include "cab/data_stream.h"
#include "cab/data_string.h"

namespace AUX::CAB {

namespace {

template <class T>
DataItem* Make() noexcept {
    return new (std::nothrow) T;
}

struct Maker {
    Kind kind;
    DataItem* (*make)() noexcept;
};
constexpr Maker kMakers[] = {
    {Kind::Bool, Make<DataBool>},
    {Kind::Int, Make<DataInt>},
    {Kind::Int64, Make<DataInt64>},
    {Kind::Double, Make<DataDouble>},
    {Kind::String, Make<DataString>},
    {Kind::Stream, Make<DataStream>},
    {Kind::Object, Make<DataObject>},
    {Kind::Array, Make<DataArray>},
    {Kind::Dictionary, Make<DataDictionary>},
};

std::unique_ptr<DataItem> MakeOfKind(Kind kind) noexcept {
    for (const Maker& maker : kMakers) {
        if (maker.kind == kind) return std::unique_ptr<DataItem>(maker.make());
    }
    return nullptr;
}

bool IsStoredObject(DataReader& reader) noexcept {
    return reader.GetKind() == Kind::Dictionary && reader.ChildByKey(kObjectKey);
}

bool ReadArray(DataArray& array, DataReader& reader) noexcept {
    for (std::uint32_t i = 0; i < reader.GetCount(); ++i) {
        DataReader* const from = reader.ChildAt(i);
        const ItemSpec* const own = array.GetSpec();
        const bool isTyped = own && own->entries;
        DataItem* const child = from ? array.InsertAt(-1, isTyped                 ? Kind::None
                                                          : IsStoredObject(*from) ? Kind::Object
                                                                                  : from->GetKind())
                                     : nullptr;
        if (child && !ReadItem(*child, *from)) array.DropAt(array.GetCount() - 1);
    }
    return true;
}

bool ReadDictionary(DataDictionary& dictionary, DataReader& reader) noexcept {
    for (std::uint32_t i = 0; i < reader.GetCount(); ++i) {
        DataReader* const from = reader.ChildAt(i);
        if (!from) continue;
        const WStringView key = reader.KeyAt(i);
        DataItem* const present = dictionary.Find(key);
        if (present) {
            (void)ReadItem(*present, *from);  // What does not fit stays at its default.
            continue;
        }
        const Kind kind = IsStoredObject(*from) ? Kind::Object : from->GetKind();
        DataItem* const child =
            dictionary.GetOrAdd(key.data(), static_cast<std::int64_t>(key.size()), kind);
        if (child && !ReadItem(*child, *from)) dictionary.Drop(key);
    }
    return true;
}

bool ReadObject(DataObject& object, DataReader& reader) noexcept {
    const std::unique_ptr<DataItem> stored =
        CreateItem(nullptr, nullptr, nullptr, nullptr, Kind::Dictionary);
    return stored && ReadDictionary(*stored->AsDictionary(), reader) &&
           object.LoadFrom(*stored->AsDictionary());
}

template <class T>
bool ReadNumber(DataItem& item, DataReader& reader, bool (DataReader::*read)(T&) noexcept,
                bool (DataItem::*set)(const T*, std::uint32_t) noexcept) noexcept {
    T value{};
    return (reader.*read)(value) && (item.*set)(&value, 0);
}

}  // namespace

bool ReadItem(DataItem& item, DataReader& reader) noexcept {
    if (item.GetFlags() & ItemTransient) return false;
    if (item.IsType(Kind::Object)) return ReadObject(static_cast<DataObject&>(item), reader);
    WStringView text;
    Stream* stream = nullptr;
    switch (reader.GetKind()) {
        case Kind::Bool:
            return ReadNumber(item, reader, &DataReader::ReadBool, &DataItem::SetBool);
        case Kind::Int:
            return ReadNumber(item, reader, &DataReader::ReadInt, &DataItem::SetInt);
        case Kind::Int64:
            return ReadNumber(item, reader, &DataReader::ReadInt64, &DataItem::SetInt64);
        case Kind::Double:
            return ReadNumber(item, reader, &DataReader::ReadDouble, &DataItem::SetDouble);
        case Kind::String:
            return reader.ReadString(text) && item.SetText(text);
        case Kind::Stream:
            return reader.ReadStream(stream) && item.SetStream(stream, false);
        case Kind::Array:
            return item.AsArray() && ReadArray(*item.AsArray(), reader);
        case Kind::Dictionary:
            return item.AsDictionary() && ReadDictionary(*item.AsDictionary(), reader);
        default:
            return false;
    }
}

std::unique_ptr<DataItem> CreateItem(DataRoot* root, DataItem*, const ItemSpec* spec,
                                     DataReader* reader, Kind kind) noexcept {
    if (spec) kind = spec->kind;
    if (reader) {
        const bool staysAsked =
            (kind == Kind::Object || kind == Kind::Dictionary) && IsStoredObject(*reader);
        if (kind == Kind::None) {
            kind = IsStoredObject(*reader) ? Kind::Object : reader->GetKind();
        } else if (!staysAsked && reader->GetKind() != kind) {
            reader = nullptr;
        }
    }
    std::unique_ptr<DataItem> item = MakeOfKind(kind);
    if (!item) return nullptr;
    if (!item->StartWithSpec(spec) || !item->SetRoot(root, false)) return nullptr;
    if (!reader || item->GetFlags() & ItemTransient) return item;
    if (!ReadItem(*item, *reader)) return nullptr;
    // What was read is what the store has; only an object counts as set anew.
    if (!item->IsType(Kind::Object)) item->SetFlags(0, ItemDirty);
    return item;
}

}  // namespace AUX::CAB
