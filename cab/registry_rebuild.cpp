#include "cab/registry_rebuild.h"

#include "cab/data_dictionary.h"
#include "cab/item_path.h"
#include "cab/registry_save.h"
#include "cab/registry_value.h"

namespace AUX::CAB {

namespace {

constexpr DWORD kKeyNameRoom = 260;

/// Terminated names, one behind the other.
class NameList {
public:
    [[nodiscard]] bool Add(WStringView name) noexcept {
        const std::uint32_t before = text_.Length();
        if (text_.Append(name) && text_.AppendRepeated(0, 1)) return true;
        (void)text_.SetLength(before);  // Shorter than it is.
        return false;
    }

    /// Calls `use` with each name. \return false if it does so once.
    template <class Use>
    bool Each(Use use) const noexcept {
        bool isWell = true;
        for (std::uint32_t at = 0; at < text_.Length();) {
            const WCHAR* const name = text_.Text() + at;
            isWell &= use(name);
            at += static_cast<std::uint32_t>(WStringView(name).size()) + 1;
        }
        return isWell;
    }

private:
    WString text_;
};

void MarkUnsaved(DataItem& item) noexcept {
    if (item.AsContainer()) {
        item.SetStamp(0);
    } else {
        item.SetFlags(ItemDirty, ItemDirty);
    }
}

/// Of a name that goes, the registry held the items that it names, whatever their capitals.
void MarkUnsaved(DataDictionary& dictionary, WStringView name) noexcept {
    for (std::uint32_t i = 0; i < dictionary.GetCount(); ++i) {
        if (EqualsIgnoringCase(dictionary.KeyAt(i), name)) MarkUnsaved(*dictionary.ItemAt(i));
    }
}

bool IsStaleKey(DataDictionary& dictionary, WStringView name) noexcept {
    DataItem* const item = FindPath(dictionary, name);
    // A leaf has no subkey; an object's is its own affair.
    const bool isStale = !item || (!item->AsContainer() && !item->IsType(Kind::Object));
    if (isStale) MarkUnsaved(dictionary, name);
    return isStale;
}

bool IsStaleValue(DataDictionary& dictionary, WStringView valueName) noexcept {
    const ValueName split = SplitValueName(valueName);
    DataItem* const item = FindPath(dictionary, split.name);
    const bool isStale =
        !item || (split.hasLetter && !item->IsType(split.kind) && !item->IsType(Kind::Object));
    if (!isStale) return false;
    MarkUnsaved(dictionary, split.name);
    // A value of an item without a name looks like one without a letter.
    if (!split.hasLetter) MarkUnsaved(dictionary, {});
    return true;
}

bool EmptyArrayKey(RegKey& key) noexcept {
    if (RegDeleteTreeW(key.Get(), nullptr) != ERROR_SUCCESS) return false;
    key.NoteChange();
    key.newKey = true;
    return true;
}

bool DropMarker(RegKey& key) noexcept {
    if (LoadKind(key.Get()) == Kind::Dictionary) return true;
    if (RegDeleteValueW(key.Get(), nullptr) != ERROR_SUCCESS) return false;
    key.NoteChange();
    return true;
}

}  // namespace

bool RebuildKey(DataItem& item, RegKey& key) noexcept {
    DataDictionary* const dictionary = item.AsDictionary();
    if (!dictionary && !item.AsArray()) return false;
    const LSTATUS opened = key.OpenForWriting(RegKey::IfMissing::Fail);
    if (opened != ERROR_SUCCESS) return key.newKey == true;  // There is nothing in it.
    if (!dictionary) return EmptyArrayKey(key);
    bool isWell =
        RegDeleteSubKeys(key, [&](WStringView name) { return IsStaleKey(*dictionary, name); });
    isWell &=
        RegDeleteSubValues(key, [&](WStringView name) { return IsStaleValue(*dictionary, name); });
    return DropMarker(key) && isWell;
}

bool RegDeleteSubKeys(RegKey& key, const NameTest& test) noexcept {
    NameList names;
    bool isWell = true;
    WCHAR name[kKeyNameRoom];
    LSTATUS status = ERROR_SUCCESS;
    for (DWORD index = 0; status == ERROR_SUCCESS; ++index) {
        DWORD units = kKeyNameRoom;
        status = RegEnumKeyExW(key.Get(), index, name, &units, nullptr, nullptr, nullptr, nullptr);
        if (status != ERROR_SUCCESS) break;
        if (test(WStringView(name, units))) isWell &= names.Add(WStringView(name, units));
    }
    if (status != ERROR_NO_MORE_ITEMS) isWell = false;
    return names.Each([&](const WCHAR* subkey) {
        if (RegDeleteTreeW(key.Get(), subkey) != ERROR_SUCCESS) return false;
        key.NoteChange();
        return true;
    }) && isWell;
}

bool RegDeleteSubValues(RegKey& key, const NameTest& test) noexcept {
    NameList names;
    NameRoom room;
    ValueReader values(key.Get(), ValueReader::Data::NamesOnly, room);
    if (values.Start() != ERROR_SUCCESS) return false;
    bool isWell = true;
    for (RegistryValue value; values.Next(value);) {
        if (test(value.name)) isWell &= names.Add(value.name);
    }
    isWell &= !values.HasSkipped();
    return names.Each([&](const WCHAR* valueName) {
        if (RegDeleteValueW(key.Get(), valueName) != ERROR_SUCCESS) return false;
        key.NoteChange();
        return true;
    }) && isWell;
}

}  // namespace AUX::CAB
