#pragma once

#include "platform/posix/com_types.h"

using VARTYPE = USHORT;

/// The kinds that the code meets.
enum VARENUM : VARTYPE {
    VT_EMPTY = 0,
    VT_NULL = 1,
    VT_I4 = 3,
    VT_BSTR = 8,
    VT_DISPATCH = 9,
    VT_UNKNOWN = 13,
};

/// A value that names its kind. Owns its text or reference only by agreement: VariantClear.
struct VARIANT {
    VARTYPE vt;
    WORD wReserved1;
    WORD wReserved2;
    WORD wReserved3;
    union {
        LONG lVal;
        BSTR bstrVal;
        IUnknown* punkVal;
        IDispatch* pdispVal;
        ULONGLONG room[2];
    };
};
using VARIANTARG = VARIANT;
static_assert(sizeof(VARIANT) == 24);

inline constexpr HRESULT DISP_E_BADVARTYPE = static_cast<HRESULT>(0x80020008);
inline constexpr HRESULT DISP_E_TYPEMISMATCH = static_cast<HRESULT>(0x80020005);
inline constexpr HRESULT DISP_E_BADINDEX = static_cast<HRESULT>(0x8002000B);

/// Makes it empty, whatever it holds.
void VariantInit(VARIANTARG* value) noexcept;
/// Frees what it holds and makes it empty. DISP_E_BADVARTYPE for a kind that is not known.
HRESULT VariantClear(VARIANTARG* value) noexcept;
/// Puts `source`, as another kind, into `target`, which is cleared and may be `source` itself. Here
/// only to the kind that it has, and from VT_UNKNOWN and VT_DISPATCH to each other.
/// \return DISP_E_TYPEMISMATCH for any other change, also when the object lacks the interface;
///         `target` then stays.
HRESULT VariantChangeType(VARIANTARG* target, const VARIANTARG* source, USHORT flags,
                          VARTYPE kind) noexcept;
