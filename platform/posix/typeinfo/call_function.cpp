#include <cstring>
#include <ffi.h>

#include "platform/typeinfo.h"

namespace {

constexpr UINT kMaxActuals = 62;

ffi_type* PassedAs(VARTYPE kind) noexcept {
    static ffi_type* words[] = {&ffi_type_uint64, &ffi_type_uint64, &ffi_type_uint64, nullptr};
    static ffi_type variant{24, 8, FFI_TYPE_STRUCT, words};
    static ffi_type decimal{16, 8, FFI_TYPE_STRUCT, &words[1]};
    switch (kind) {
        case VT_I1:
            return &ffi_type_sint8;
        case VT_UI1:
            return &ffi_type_uint8;
        case VT_I2:
        case VT_BOOL:
            return &ffi_type_sint16;
        case VT_UI2:
            return &ffi_type_uint16;
        case VT_I4:
        case VT_INT:
        case VT_ERROR:
            return &ffi_type_sint32;
        case VT_UI4:
        case VT_UINT:
            return &ffi_type_uint32;
        case VT_R4:
            return &ffi_type_float;
        case VT_R8:
        case VT_DATE:
            return &ffi_type_double;
        case VT_VARIANT:
            return &variant;
        case VT_DECIMAL:
            return &decimal;
        default:
            return &ffi_type_uint64;  // integers of 64 bits and pointers
    }
}

}  // namespace

HRESULT DispCallFunc(void* instance, ULONG_PTR offset, CALLCONV convention, VARTYPE resultKind,
                     UINT count, VARTYPE* kinds, VARIANTARG** values, VARIANT* result) noexcept {
    const bool isKnown = resultKind == VT_I4 || resultKind == VT_ERROR;
    if (!instance || convention != CC_STDCALL || count > kMaxActuals || !isKnown || !result) {
        return E_INVALIDARG;
    }
    ffi_type* types[kMaxActuals + 1] = {&ffi_type_pointer};
    void* places[kMaxActuals + 1] = {&instance};
    for (UINT i = 0; i < count; ++i) {
        types[i + 1] = PassedAs(kinds[i]);
        const bool isWhole = kinds[i] == VT_VARIANT || kinds[i] == VT_DECIMAL;
        places[i + 1] = isWhole ? static_cast<void*>(values[i]) : &values[i]->room;
    }
    ffi_cif interface;
    if (ffi_prep_cif(&interface, FFI_DEFAULT_ABI, count + 1, &ffi_type_sint32, types) != FFI_OK) {
        return E_UNEXPECTED;
    }
    const auto* table = *static_cast<const unsigned char* const*>(instance);
    void (*entry)() = nullptr;
    std::memcpy(&entry, table + offset, sizeof entry);
    ffi_arg returned = 0;
    ffi_call(&interface, entry, &returned, places);
    *result = {};
    result->vt = resultKind;
    result->lVal = static_cast<LONG>(returned);
    return S_OK;
}
