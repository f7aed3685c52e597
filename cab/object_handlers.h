#pragma once

#include "platform/com.h"

namespace AUX::CAB {
class DataDictionary;

/// An object of a bag that can travel through a store.
struct IBagPersist : public IUnknown {
    /// The class that ObjectHandler makes it from again.
    virtual HRESULT STDMETHODCALLTYPE GetClassID(CLSID* classId) noexcept = 0;
};

/// Turns the objects of one class into dictionaries and back.
class ObjectHandler {
public:
    /// \param object  Gets a reference, which the caller releases.
    [[nodiscard]] virtual HRESULT Load(const CLSID& classId, DataDictionary& from,
                                       IUnknown** object) noexcept = 0;
    [[nodiscard]] virtual HRESULT Save(const CLSID& classId, IUnknown& object,
                                       DataDictionary& to) noexcept = 0;

protected:
    ~ObjectHandler() = default;
};

/// The process's table of handlers. Begins empty. Handlers are added at start-up, before the table
/// is read by several threads; a handler lives as long as it stands in the table.
/// \return false if the class has a handler already, or memory runs out.
[[nodiscard]] bool AddObjectHandler(const CLSID& classId, ObjectHandler& handler) noexcept;
void RemoveObjectHandler(const CLSID& classId) noexcept;
[[nodiscard]] ObjectHandler* FindObjectHandler(const CLSID& classId) noexcept;

/// The handler of an object that can save itself, and its class; null if it cannot.
[[nodiscard]] ObjectHandler* HandlerOf(IUnknown* object, CLSID& classId) noexcept;

/// Units of an id in registry form, braces included.
inline constexpr std::size_t kGuidTextUnits = 38;

/// Writes {XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}, with a terminator.
void FormatGuid(const GUID& id, WCHAR (&text)[kGuidTextUnits + 1]) noexcept;
/// Reads that form, in either case. \return false, with `id` unchanged, for any other text.
[[nodiscard]] bool ParseGuid(const WCHAR* text, std::size_t length, GUID& id) noexcept;

}  // namespace AUX::CAB

QVD_INTERFACE_ID(AUX::CAB::IBagPersist, 0x6f0d2c51, 0x93b4, 0x4a1e,
                 {0x8b, 0x57, 0x2e, 0xc9, 0x14, 0x7d, 0xa0, 0x63});
