#pragma once

#include "platform/posix/com_types.h"

using VARTYPE = USHORT;
using DATE = double;

/// The kinds that the code meets.
enum VARENUM : VARTYPE {
    VT_EMPTY = 0,
    VT_NULL = 1,
    VT_I2 = 2,
    VT_I4 = 3,
    VT_R4 = 4,
    VT_R8 = 5,
    VT_CY = 6,
    VT_DATE = 7,
    VT_BSTR = 8,
    VT_DISPATCH = 9,
    VT_ERROR = 10,
    VT_BOOL = 11,
    VT_VARIANT = 12,
    VT_UNKNOWN = 13,
    VT_DECIMAL = 14,
    VT_I1 = 16,
    VT_UI1 = 17,
    VT_UI2 = 18,
    VT_UI4 = 19,
    VT_I8 = 20,
    VT_UI8 = 21,
    VT_INT = 22,
    VT_UINT = 23,
    VT_VOID = 24,
    VT_HRESULT = 25,
    VT_PTR = 26,
    VT_SAFEARRAY = 27,
    VT_USERDEFINED = 29,
    VT_LPSTR = 30,
    VT_LPWSTR = 31,
    VT_BYREF = 0x4000,
};

/// An integer of 96 bits over a power of ten.
struct DECIMAL {
    USHORT wReserved;  // lies where a VARIANT has its kind
    BYTE scale;        // 0 to 28
    BYTE sign;         // 0, or DECIMAL_NEG
    ULONG Hi32;
    ULONGLONG Lo64;
};
inline constexpr BYTE DECIMAL_NEG = 0x80;

/// A value that names its kind. Owns its text or reference only by agreement: VariantClear.
struct VARIANT {
    __extension__ union {
        __extension__ struct {
            VARTYPE vt;
            WORD wReserved1;
            WORD wReserved2;
            WORD wReserved3;
            union {
                LONG lVal;
                SHORT iVal;
                BYTE bVal;
                LONGLONG llVal;
                float fltVal;
                double dblVal;
                VARIANT_BOOL boolVal;
                SCODE scode;
                BSTR bstrVal;
                IUnknown* punkVal;
                IDispatch* pdispVal;
                PVOID byref;
                ULONGLONG room[2];
            };
        };
        DECIMAL decVal;
    };
};
using VARIANTARG = VARIANT;
static_assert(sizeof(VARIANT) == 24);

inline constexpr HRESULT DISP_E_BADVARTYPE = static_cast<HRESULT>(0x80020008);
inline constexpr HRESULT DISP_E_TYPEMISMATCH = static_cast<HRESULT>(0x80020005);
inline constexpr HRESULT DISP_E_EXCEPTION = static_cast<HRESULT>(0x80020009);
inline constexpr HRESULT DISP_E_OVERFLOW = static_cast<HRESULT>(0x8002000A);
inline constexpr HRESULT DISP_E_BADINDEX = static_cast<HRESULT>(0x8002000B);

/// Reads a decimal number with blanks around it, a sign and a fraction, which is rounded, or one of
/// base 16 or 8 behind "&H" or "&O". No separators of thousands, whatever the locale.
/// \return DISP_E_TYPEMISMATCH for another text, DISP_E_OVERFLOW for a number that does not fit.
HRESULT VarUI4FromStr(const WCHAR* text, LCID locale, ULONG flags, ULONG* result) noexcept;

/// Makes it empty, whatever it holds.
void VariantInit(VARIANTARG* value) noexcept;
/// Frees what it holds and makes it empty. DISP_E_BADVARTYPE for a kind that is not known.
HRESULT VariantClear(VARIANTARG* value) noexcept;
/// Puts `source`, as another kind, into `target`, which is cleared and may be `source` itself:
/// to the kind that it has, from VT_UNKNOWN and VT_DISPATCH to each other, and between numbers,
/// truth values and decimal texts. What is given by reference is read first.
/// \return DISP_E_TYPEMISMATCH for any other change, also when the object lacks the interface;
///         `target` then stays.
HRESULT VariantChangeType(VARIANTARG* target, const VARIANTARG* source, USHORT flags,
                          VARTYPE kind) noexcept;
