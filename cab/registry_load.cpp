#include "cab/registry_load.h"

#include <iterator>
#include <optional>

#include "cab/reg_key.h"
#include "cab/registry_value.h"
#include "platform/user.h"

namespace AUX::CAB {

namespace {

using platform::RegistryKey;

constexpr DWORD kKeyNameRoom = 260;

/// What the name of an element says.
struct ElementName {
    std::int64_t index = 0;  ///< -1 is one that no array can have.
    bool isOwn = false;      ///< A save gives this name: at least six digits, no more than needed.
};

/// Reads a name of decimal digits. \return false if it is none.
bool ReadName(WStringView text, ElementName& name) noexcept {
    constexpr std::size_t kDigits = 6;
    for (const WCHAR unit : text) {
        if (unit < '0' || unit > '9') return false;
        if (name.index >= 0) name.index = name.index * 10 + (unit - '0');
        if (name.index > 0x7FFFFFFE) name.index = -1;
    }
    name.isOwn = text.size() == kDigits || (text.size() > kDigits && text[0] != '0');
    return !text.empty();
}

/// The elements that were read of an array, in the order of their indices. Owns them.
class Elements {
public:
    Elements() noexcept = default;
    ~Elements() {
        for (const Element& element : list_) delete element.item;
    }
    Elements(const Elements&) = delete;
    Elements& operator=(const Elements&) = delete;

    /// Takes an element over; of two at one index the later one with the name that a save gives.
    /// \return false, with the element deleted, when memory runs out.
    [[nodiscard]] bool Put(ElementName name, std::unique_ptr<DataItem> item) noexcept {
        const auto index = static_cast<std::uint32_t>(name.index);
        std::uint32_t place = list_.Count();
        isInStep_ &= name.isOwn;
        // They mostly come in order.
        if (place && list_[place - 1].index >= index) place = Find(index);
        if (place < list_.Count() && list_[place].index == index) {
            isInStep_ = false;
            if (!name.isOwn) return true;
            delete list_[place].item;
            list_[place].item = item.release();
            return true;
        }
        if (!list_.InsertAt(place, {index, item.get()})) return false;
        (void)item.release();  // The list owns it now.
        return true;
    }

    /// Whether there is every index from 0 on, each once and under the name that a save gives: a
    /// save would write beside another name.
    [[nodiscard]] bool HasAll() const noexcept {
        return isInStep_ &&
               (list_.IsEmpty() || list_[list_.Count() - 1].index + 1 == list_.Count());
    }

    /// Gives the elements to an array, closing the holes. \return false when memory runs out.
    [[nodiscard]] bool MoveTo(DataArray& array) noexcept {
        Array<DataItem*> items;
        if (!items.EnsureCapacity(list_.Count())) return false;
        for (const Element& element : list_) (void)items.Add(element.item);  // There is room.
        list_.Clear();
        array.SetElements(items);
        return true;
    }

private:
    struct Element {
        std::uint32_t index;
        DataItem* item;
    };

    [[nodiscard]] std::uint32_t Find(std::uint32_t index) const noexcept {
        std::uint32_t low = 0;
        std::uint32_t high = list_.Count();
        while (low < high) {
            const std::uint32_t middle = low + (high - low) / 2;
            if (list_[middle].index < index) {
                low = middle + 1;
            } else {
                high = middle;
            }
        }
        return low;
    }

    Array<Element> list_;
    bool isInStep_ = true;
};

/// One loading. Its buffers serve all levels, so that a level needs little of the stack.
class Loader {
public:
    bool Load(DataItem& item, HKEY key) noexcept;
    bool LoadDictionary(DataDictionary& dictionary, HKEY key, bool& complete) noexcept;
    bool LoadElements(DataArray& array, HKEY key, bool& complete) noexcept;

private:
    /// Calls `take` with the name of each subkey and the opened key. \return false if one could not
    /// be read, which those that have just vanished do not count as.
    template <class Take>
    bool EachSubkey(HKEY key, Take take) noexcept;
    bool TakeSubkey(DataDictionary& dictionary, WStringView name, HKEY subkey) noexcept;
    bool TakeElement(DataArray& array, Elements& elements, WStringView name, HKEY subkey) noexcept;

    std::uint32_t depth_ = 0;
    WCHAR name_[kKeyNameRoom];
    NameRoom valueName_;
};

template <class Take>
bool Loader::EachSubkey(HKEY key, Take take) noexcept {
    bool isWell = true;
    for (DWORD index = 0;; ++index) {
        DWORD units = kKeyNameRoom;
        const LSTATUS status =
            RegEnumKeyExW(key, index, name_, &units, nullptr, nullptr, nullptr, nullptr);
        if (status != ERROR_SUCCESS) return isWell && status == ERROR_NO_MORE_ITEMS;
        RegistryKey subkey;
        const LSTATUS opened = RegOpenKeyExW(key, name_, 0, KEY_READ, subkey.Put());
        if (opened == ERROR_FILE_NOT_FOUND || opened == ERROR_KEY_DELETED) continue;
        isWell &= opened == ERROR_SUCCESS && take(WStringView(name_, units), subkey.Get());
    }
}

bool Loader::Load(DataItem& item, HKEY key) noexcept {
    // Read first: what others change meanwhile then makes the stamp an old one.
    const std::uint64_t time = ReadKeyTime(key);
    ++depth_;
    bool complete = false;
    DataArray* const array = item.AsArray();
    const bool isRead = array ? LoadElements(*array, key, complete)
                              : LoadDictionary(*item.AsDictionary(), key, complete);
    --depth_;
    item.SetStamp(isRead ? time : 0);
    item.SetFlags(isRead && complete ? 0 : ItemChildrenRemoved, ItemChildrenRemoved);
    return isRead;
}

/// What the key will not name is not saved there, whatever was so elsewhere.
void ForgetSaved(DataDictionary& dictionary) noexcept {
    for (std::uint32_t i = 0; i < dictionary.GetCount(); ++i) {
        DataItem& child = *dictionary.ItemAt(i);
        if (child.AsContainer()) {
            child.SetStamp(0);
        } else if (!child.IsDefault()) {
            child.SetFlags(ItemDirty, ItemDirty);
        }
    }
}

/// What a dictionary declares of a key; null if nothing.
const ItemSpec* DeclaredChild(DataDictionary& dictionary, DataItem* present) noexcept {
    if (present) return present->GetSpec();
    const ItemSpec* const own = dictionary.GetSpec();
    return own && own->IsLoose() ? SpecAt(*own, 0) : nullptr;
}

bool IsTransient(DataItem* present, const ItemSpec* declared) noexcept {
    return present ? (present->GetFlags() & ItemTransient) != 0
                   : declared && (declared->flags & SpecTemp);
}

bool Loader::TakeSubkey(DataDictionary& dictionary, WStringView name, HKEY subkey) noexcept {
    DataItem* const present = dictionary.Find(name);
    const ItemSpec* const declared = DeclaredChild(dictionary, present);
    if (IsTransient(present, declared)) return true;
    const Kind kind = declared ? declared->kind : LoadKind(subkey);
    if (!IsContainer(kind) || depth_ >= kMaxKeyDepth) return false;
    DataItem* const child =
        dictionary.GetOrAdd(name.data(), static_cast<std::int64_t>(name.size()), kind);
    // One that cannot be read says so itself: it has no stamp.
    if (child) (void)Load(*child, subkey);
    return child != nullptr;
}

/// Whether the key has, beside `present`, the value that a save writes for an item of this kind and
/// name.
bool HasLettered(HKEY key, Kind kind, WStringView name, WStringView present) noexcept {
    WString valueName;
    return MakeValueName(kind, name, valueName) && !EqualsIgnoringCase(valueName, present) &&
           RegQueryValueExW(key, valueName.Text(), nullptr, nullptr, nullptr, nullptr) ==
               ERROR_SUCCESS;
}

/// Of an item that did not take its value the next save writes its own, or none.
bool Refuse(DataDictionary& dictionary, WStringView name) noexcept {
    DataItem* const item = dictionary.Find(name);
    if (item && !item->AsContainer()) item->SetFlags(ItemDirty, ItemDirty);
    return false;
}

/// \return false if the bag has no use for the value.
bool TakeDictionaryValue(DataDictionary& dictionary, HKEY key,
                         const RegistryValue& value) noexcept {
    const ValueName split = SplitValueName(value.name);
    DataItem* const present = dictionary.Find(split.name);
    const ItemSpec* const declared = DeclaredChild(dictionary, present);
    if (IsTransient(present, declared)) return true;
    const Kind expected = split.hasLetter ? split.kind : present ? present->GetType() : Kind::None;
    ReadValue read;
    if (!ReadAs(value, expected, read)) return Refuse(dictionary, split.name);
    // A save has written the item anew beside the value that it was first read from.
    if (!split.hasLetter && HasLettered(key, read.kind, split.name, value.name)) return true;
    DataItem* const item = dictionary.GetOrAdd(
        split.name.data(), static_cast<std::int64_t>(split.name.size()), read.kind);
    if (!item) return false;
    if (TakeValue(*item, read)) return true;
    if (!present) dictionary.Drop(split.name);
    return Refuse(dictionary, split.name);
}

bool Loader::LoadDictionary(DataDictionary& dictionary, HKEY key, bool& complete) noexcept {
    complete = false;
    ForgetSaved(dictionary);
    bool isWell = EachSubkey(
        key, [&](WStringView name, HKEY subkey) { return TakeSubkey(dictionary, name, subkey); });
    ValueReader values(key, ValueReader::Data::Read, valueName_);
    if (values.Start() != ERROR_SUCCESS) return false;
    for (RegistryValue value; values.Next(value);) {
        isWell &= TakeDictionaryValue(dictionary, key, value);
    }
    complete = isWell && !values.HasSkipped();
    return true;
}

bool Loader::TakeElement(DataArray& array, Elements& elements, WStringView name,
                         HKEY subkey) noexcept {
    ElementName place;
    if (!ReadName(name, place)) return true;
    const ItemSpec* const declared = array.ElementSpec();
    if (IsTransient(nullptr, declared)) return true;
    const Kind kind = declared ? declared->kind : LoadKind(subkey);
    if (place.index < 0 || !IsContainer(kind) || depth_ >= kMaxKeyDepth) return false;
    std::unique_ptr<DataItem> element = array.NewElement(kind);
    if (!element) return false;
    (void)Load(*element, subkey);  // One that cannot be read has no stamp.
    return elements.Put(place, std::move(element));
}

bool TakeElementValue(DataArray& array, Elements& elements, const RegistryValue& value) noexcept {
    const ValueName split = SplitValueName(value.name);
    ElementName place;
    if (!ReadName(split.name, place)) return true;
    const ItemSpec* const declared = array.ElementSpec();
    if (IsTransient(nullptr, declared)) return true;
    const Kind expected = split.hasLetter ? split.kind : declared ? declared->kind : Kind::None;
    ReadValue read;
    if (place.index < 0 || !ReadAs(value, expected, read)) return false;
    std::unique_ptr<DataItem> element = array.NewElement(read.kind);
    return element && TakeValue(*element, read) && elements.Put(place, std::move(element));
}

bool Loader::LoadElements(DataArray& array, HKEY key, bool& complete) noexcept {
    complete = false;
    Elements elements;
    bool isWell = EachSubkey(key, [&](WStringView name, HKEY subkey) {
        return TakeElement(array, elements, name, subkey);
    });
    ValueReader values(key, ValueReader::Data::Read, valueName_);
    if (values.Start() != ERROR_SUCCESS) return false;
    for (RegistryValue value; values.Next(value);) {
        isWell &= TakeElementValue(array, elements, value);
    }
    complete = isWell && !values.HasSkipped() && elements.HasAll();
    return elements.MoveTo(array);
}

}  // namespace

bool LoadDic(DataDictionary& dictionary, HKEY key, bool* complete) noexcept {
    Loader loader;
    bool isComplete = false;
    const bool isRead = loader.LoadDictionary(dictionary, key, isComplete);
    if (complete) *complete = isComplete;
    return isRead;
}

bool LoadArray(DataArray& array, HKEY key, bool* complete) noexcept {
    Loader loader;
    bool isComplete = false;
    const bool isRead = loader.LoadElements(array, key, isComplete);
    if (complete) *complete = isComplete;
    return isRead;
}

HKEY SplitRoot(WStringView fullPath, WStringView& rest) noexcept {
    const struct {
        WStringView name;
        HKEY key;
    } kRoots[] = {
        {TEXT("HKEY_CLASSES_ROOT"), HKEY_CLASSES_ROOT},   {TEXT("HKCR"), HKEY_CLASSES_ROOT},
        {TEXT("HKEY_CURRENT_USER"), HKEY_CURRENT_USER},   {TEXT("HKCU"), HKEY_CURRENT_USER},
        {TEXT("HKEY_LOCAL_MACHINE"), HKEY_LOCAL_MACHINE}, {TEXT("HKLM"), HKEY_LOCAL_MACHINE},
    };
    const std::size_t end = fullPath.find(WCHAR{'\\'});
    const WStringView first = fullPath.substr(0, end);
    WCHAR upper[24];
    if (first.size() > std::size(upper)) return nullptr;
    first.copy(upper, first.size());
    CharUpperBuffW(upper, static_cast<DWORD>(first.size()));
    for (const auto& root : kRoots) {
        if (root.name != WStringView(upper, first.size())) continue;
        rest = end == WStringView::npos ? WStringView() : fullPath.substr(end + 1);
        return root.key;
    }
    return nullptr;
}

HRESULT LoadFromRegistry(DataItem& item, HKEY key, const WCHAR* path) noexcept {
    DataItem* const real = item.Target(Kind::None);
    if (!real || !real->AsContainer()) return E_INVALIDARG;
    WStringView rest(path);
    if (!key) key = SplitRoot(rest, rest);
    if (!key) return E_INVALIDARG;
    std::optional<BagLockScope> lock;
    if (DataRoot* const bag = real->GetRoot()) lock.emplace(*bag);
    RegistryKey opened;
    if (!rest.empty()) {
        // The rest ends where the path does.
        const LSTATUS status = RegOpenKeyExW(key, rest.data(), 0, KEY_READ, opened.Put());
        if (status != ERROR_SUCCESS) return ResultOf(status);
        key = opened.Get();
    }
    Loader loader;
    return loader.Load(*real, key) ? S_OK : E_FAIL;
}

}  // namespace AUX::CAB
