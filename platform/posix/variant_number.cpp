#include "platform/posix/variant_number.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

#include "platform/posix/decimal.h"
#include "platform/posix/module_table.h"
#include "platform/text.h"

namespace platform {
namespace {

using Number = decltype(0.0L);  // holds each integer of 64 bits
static_assert(std::numeric_limits<Number>::digits >= 64);

HRESULT ReadText(BSTR text, Number& number) {
    const std::string narrow = ToUtf8(WideView(text ? text : TEXT(""), SysStringLen(text)));
    const std::size_t begin = narrow.find_first_not_of(" \t");
    const std::size_t end = narrow.find_last_not_of(" \t");
    if (begin == std::string::npos) return DISP_E_TYPEMISMATCH;
    const char* first = narrow.data() + begin;
    const char* const last = narrow.data() + end + 1;
    if (*first == '+' && last - first > 1 && first[1] != '-') ++first;
    // No "inf" and no "nan".
    const char start = *first == '-' && last - first > 1 ? first[1] : *first;
    if (start != '.' && (start < '0' || start > '9')) return DISP_E_TYPEMISMATCH;
    const auto [stopped, error] = std::from_chars(first, last, number);
    if (error == std::errc::result_out_of_range) return DISP_E_OVERFLOW;
    return error == std::errc() && stopped == last ? S_OK : DISP_E_TYPEMISMATCH;
}

HRESULT Read(const VARIANT& source, Number& number) {
    switch (source.vt) {
        case VT_EMPTY:
            number = 0;
            return S_OK;
        case VT_I1:
            number = static_cast<signed char>(source.bVal);
            return S_OK;
        case VT_UI1:
            number = source.bVal;
            return S_OK;
        case VT_I2:
        case VT_BOOL:
            number = source.iVal;
            return S_OK;
        case VT_UI2:
            number = static_cast<USHORT>(source.iVal);
            return S_OK;
        case VT_I4:
        case VT_INT:
            number = source.lVal;
            return S_OK;
        case VT_UI4:
        case VT_UINT:
            number = static_cast<ULONG>(source.lVal);
            return S_OK;
        case VT_I8:
            number = static_cast<Number>(source.llVal);
            return S_OK;
        case VT_UI8:
            number = static_cast<Number>(source.room[0]);
            return S_OK;
        case VT_R4:
            number = source.fltVal;
            return S_OK;
        case VT_R8:
        case VT_DATE:
            number = source.dblVal;
            return S_OK;
        case VT_DECIMAL:
            number = ToNumber(source.decVal);
            return S_OK;
        case VT_BSTR:
            return ReadText(source.bstrVal, number);
        default:
            return DISP_E_TYPEMISMATCH;
    }
}

template <class T>
HRESULT Round(Number number, T& made) {
    const Number rounded = std::nearbyint(number);
    const bool fits = rounded >= static_cast<Number>(std::numeric_limits<T>::min()) &&
                      rounded <= static_cast<Number>(std::numeric_limits<T>::max());
    if (!fits) return DISP_E_OVERFLOW;  // NaN as well
    made = static_cast<T>(rounded);
    return S_OK;
}

template <class T>
HRESULT RoundBits(Number number, VARIANT& made) {
    T value{};
    const HRESULT result = Round(number, value);
    made.room[0] = static_cast<ULONGLONG>(value);
    return result;
}

/// The digits of a number that has been read; VT_DATE has none.
std::string Digits(const VARIANT& source, Number number) {
    char text[64] = "";
    if (source.vt == VT_DECIMAL) return ToText(source.decVal);
    if (source.vt == VT_BSTR) return ToUtf8(WideView(source.bstrVal, SysStringLen(source.bstrVal)));
    if (source.vt == VT_R4) {
        std::snprintf(text, sizeof text, "%.7g", static_cast<double>(number));
    } else if (source.vt == VT_R8) {
        std::snprintf(text, sizeof text, "%.15g", static_cast<double>(number));
    } else if (source.vt != VT_EMPTY) {
        std::snprintf(text, sizeof text, "%.0Lf", number);
    }
    return text;
}

HRESULT WriteText(const VARIANT& source, Number number, VARIANT& made) {
    if (source.vt == VT_DATE) return DISP_E_TYPEMISMATCH;
    made.bstrVal = SysAllocString(FromUtf8(Digits(source, number)).c_str());
    return made.bstrVal ? S_OK : E_OUTOFMEMORY;
}

HRESULT WriteDecimal(const VARIANT& source, Number number, VARIANT& made) {
    const bool isNumber = source.vt != VT_DATE && std::isfinite(number);
    if (!isNumber) return source.vt == VT_DATE ? DISP_E_TYPEMISMATCH : DISP_E_OVERFLOW;
    if (!MakeDecimal(Digits(source, number), made.decVal)) return DISP_E_OVERFLOW;
    made.vt = VT_DECIMAL;
    return S_OK;
}

}  // namespace

HRESULT ChangeNumber(VARIANT& made, const VARIANT& source) {
    if (source.vt == VT_BSTR && made.vt == VT_BOOL) {
        const WideView text(source.bstrVal ? source.bstrVal : TEXT(""));
        made.boolVal = IsSameName(text, TEXT("True")) ? VARIANT_TRUE : VARIANT_FALSE;
        if (made.boolVal || IsSameName(text, TEXT("False"))) return S_OK;
    }
    Number number = 0;
    const HRESULT result = Read(source, number);
    if (FAILED(result)) return result;
    switch (made.vt) {
        case VT_I1:
            return RoundBits<signed char>(number, made);
        case VT_UI1:
            return RoundBits<BYTE>(number, made);
        case VT_I2:
            return RoundBits<SHORT>(number, made);
        case VT_UI2:
            return RoundBits<USHORT>(number, made);
        case VT_I4:
        case VT_INT:
            return RoundBits<LONG>(number, made);
        case VT_UI4:
        case VT_UINT:
            return RoundBits<ULONG>(number, made);
        case VT_I8:
            return RoundBits<LONGLONG>(number, made);
        case VT_UI8:
            return RoundBits<ULONGLONG>(number, made);
        case VT_BOOL:
            made.boolVal = number != 0 ? VARIANT_TRUE : VARIANT_FALSE;
            return S_OK;
        case VT_R4:
            if (std::fabs(number) > std::numeric_limits<float>::max()) return DISP_E_OVERFLOW;
            made.fltVal = static_cast<float>(number);
            return S_OK;
        case VT_R8:
        case VT_DATE:
            if (std::fabs(number) > std::numeric_limits<double>::max()) return DISP_E_OVERFLOW;
            made.dblVal = static_cast<double>(number);
            return S_OK;
        case VT_BSTR:
            return WriteText(source, number, made);
        case VT_DECIMAL:
            return WriteDecimal(source, number, made);
        default:
            return DISP_E_TYPEMISMATCH;
    }
}

}  // namespace platform
