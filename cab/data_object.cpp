#include "cab/data_object.h"

#include "cab/create_item.h"
#include "cab/data_dictionary.h"
#include "cab/object_handlers.h"

namespace AUX::CAB {

namespace {

DataItem* GetOrAdd(DataDictionary& dictionary, WStringView key, Kind kind) noexcept {
    return dictionary.GetOrAdd(key.data(), static_cast<std::int64_t>(key.size()), kind);
}

}  // namespace

bool DataObject::Equals(DataItem* other, std::uint32_t equalFlags) noexcept {
    DataItem* const real = other ? other->Cast(Kind::Object) : nullptr;
    return real && (equalFlags & kEqualAnyObject || real->GetObject() == value.Get());
}

bool DataObject::SetObject(IUnknown* object) noexcept {
    if (object == value.Get()) return true;
    value = platform::ComPtr<IUnknown>(object);
    MarkSet();
    return true;
}

Kind DataObject::GetStoredType() noexcept {
    CLSID classId;
    return HandlerOf(value.Get(), classId) ? Kind::Dictionary : Kind::Object;
}

bool DataObject::SaveTo(DataDictionary& stored) noexcept {
    CLSID classId;
    ObjectHandler* const handler = HandlerOf(value.Get(), classId);
    DataItem* const content = handler ? GetOrAdd(stored, kObjectKey, Kind::Dictionary) : nullptr;
    if (!content || FAILED(handler->Save(classId, *value, *content->AsDictionary()))) return false;
    WCHAR text[kGuidTextUnits + 1];
    FormatGuid(classId, text);
    DataItem* const id = GetOrAdd(stored, kClassIdKey, Kind::String);
    return id && id->SetText({text, kGuidTextUnits});
}

bool DataObject::LoadFrom(DataDictionary& stored) noexcept {
    DataItem* const content = stored.Find(kObjectKey);
    DataItem* const id = stored.Find(kClassIdKey);
    const WString* const text = id ? id->GetString() : nullptr;
    DataDictionary* const dictionary = content ? content->AsDictionary() : nullptr;
    CLSID classId;
    if (!text || !dictionary || !ParseGuid(text->Text(), text->Length(), classId)) return false;
    ObjectHandler* const handler = FindObjectHandler(classId);
    platform::ComPtr<IUnknown> object;
    if (!handler || FAILED(handler->Load(classId, *dictionary, object.Put()))) return false;
    value = std::move(object);
    MarkSet();
    return true;
}

bool DataObject::WriteTo(DataWriter& sink, bool skipDefaults) noexcept {
    const std::unique_ptr<DataItem> stored =
        CreateItem(nullptr, nullptr, nullptr, nullptr, Kind::Dictionary);
    return stored && SaveTo(*stored->AsDictionary()) && stored->WriteTo(sink, skipDefaults);
}

bool DataObject::AssignValue(DataItem& source, bool) noexcept {
    DataItem* const real = source.Cast(Kind::Object);
    return real && SetObject(real->GetObject());
}

bool DataObject::ResetValue() noexcept {
    const bool hadObject = static_cast<bool>(value);
    value.Reset();
    return hadObject;
}

}  // namespace AUX::CAB
