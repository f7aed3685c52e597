#include "cab/object_handlers.h"

#include <cstring>

#include "cab/key_table.h"
#include "platform/com_ptr.h"

namespace AUX::CAB {

namespace {

// Constant-initialised; freed when its last handler is taken out.
constinit Array<KeyEntry<ObjectHandler*>> handlers;

std::int32_t Find(const CLSID& classId) noexcept {
    return FindKey(handlers, &classId, sizeof classId);
}

// Where the digits of an id's bytes stand in its text, in the order of the bytes in memory.
constexpr std::uint8_t kDigitPlaces[16] = {7,  5,  3,  1,  12, 10, 17, 15,
                                           20, 22, 25, 27, 29, 31, 33, 35};

int DigitOf(WCHAR unit) noexcept {
    if (unit >= '0' && unit <= '9') return unit - '0';
    const int lower = unit | 0x20;
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

}  // namespace

bool AddObjectHandler(const CLSID& classId, ObjectHandler& handler) noexcept {
    const std::int32_t found = Find(classId);
    if (found >= 0) return false;
    void* const key = Alloc(sizeof classId);
    if (!key) return false;
    std::memcpy(key, &classId, sizeof classId);
    if (handlers.InsertAt(static_cast<std::uint32_t>(~found), {key, sizeof classId, &handler})) {
        return true;
    }
    Free(key);
    return false;
}

void RemoveObjectHandler(const CLSID& classId) noexcept {
    const std::int32_t found = Find(classId);
    if (found < 0) return;
    Free(handlers[static_cast<std::uint32_t>(found)].key);
    handlers.RemoveAt(static_cast<std::uint32_t>(found));
    if (handlers.IsEmpty()) handlers.Free();
}

ObjectHandler* FindObjectHandler(const CLSID& classId) noexcept {
    const std::int32_t found = Find(classId);
    return found >= 0 ? handlers[static_cast<std::uint32_t>(found)].value : nullptr;
}

ObjectHandler* HandlerOf(IUnknown* object, CLSID& classId) noexcept {
    platform::ComPtr<IBagPersist> persist;
    if (!object || FAILED(platform::QueryFor(object, persist))) return nullptr;
    return SUCCEEDED(persist->GetClassID(&classId)) ? FindObjectHandler(classId) : nullptr;
}

void FormatGuid(const GUID& id, WCHAR (&text)[kGuidTextUnits + 1]) noexcept {
    constexpr WCHAR kForm[] = TEXT("{00000000-0000-0000-0000-000000000000}");
    constexpr WCHAR kDigits[] = TEXT("0123456789ABCDEF");
    std::memcpy(text, kForm, sizeof kForm);
    std::uint8_t bytes[16];
    std::memcpy(bytes, &id, sizeof bytes);
    for (std::size_t i = 0; i < 16; ++i) {
        text[kDigitPlaces[i]] = kDigits[bytes[i] >> 4];
        text[kDigitPlaces[i] + 1] = kDigits[bytes[i] & 15];
    }
}

bool ParseGuid(const WCHAR* text, std::size_t length, GUID& id) noexcept {
    if (length != kGuidTextUnits || text[0] != '{' || text[37] != '}') return false;
    for (const std::size_t dash : {9, 14, 19, 24}) {
        if (text[dash] != '-') return false;
    }
    std::uint8_t bytes[16];
    for (std::size_t i = 0; i < 16; ++i) {
        const int high = DigitOf(text[kDigitPlaces[i]]);
        const int low = DigitOf(text[kDigitPlaces[i] + 1]);
        if (high < 0 || low < 0) return false;
        bytes[i] = static_cast<std::uint8_t>(high << 4 | low);
    }
    std::memcpy(&id, bytes, sizeof bytes);
    return true;
}

}  // namespace AUX::CAB
