#include "objects/variant_value.h"

#include <cstring>

#include "foundation/wstring.h"
#include "platform/unique_variant.h"

namespace AUX {

using CAB::DataItem;
using CAB::Kind;

namespace {

/// A VARIANT without references: a view of the caller's, or of what it refers to. Owns nothing.
class Plain {
public:
    explicit Plain(const VARIANT& value) noexcept : found_(&value) {
        // The reference of a reference is what no rule allows; it ends here all the same.
        for (int i = 0; i < 2 && found_->vt == (VT_BYREF | VT_VARIANT); ++i) {
            found_ = static_cast<const VARIANT*>(found_->byref);
            if (!found_) found_ = &empty_;
        }
        if (found_->vt & VT_BYREF) Fetch(*found_);
    }
    [[nodiscard]] const VARIANT& operator*() const noexcept { return *found_; }
    [[nodiscard]] const VARIANT* operator->() const noexcept { return found_; }

private:
    static std::size_t BytesOf(VARTYPE kind) noexcept {
        switch (kind) {
            case VT_I1:
            case VT_UI1:
                return 1;
            case VT_I2:
            case VT_UI2:
            case VT_BOOL:
                return 2;
            case VT_I4:
            case VT_UI4:
            case VT_INT:
            case VT_UINT:
            case VT_R4:
            case VT_ERROR:
                return 4;
            default:
                return 8;
        }
    }

    void Fetch(const VARIANT& reference) noexcept {
        const auto kind = static_cast<VARTYPE>(reference.vt & ~VT_BYREF);
        empty_ = {};
        found_ = &empty_;
        if (!reference.byref) return;
        if (kind == VT_DECIMAL) {
            std::memcpy(&empty_.decVal, reference.byref, sizeof(DECIMAL));
        } else {
            std::memcpy(&empty_.llVal, reference.byref, BytesOf(kind));
        }
        empty_.vt = kind;
    }

    const VARIANT* found_;
    VARIANT empty_{};
};

/// Changes a value into another kind. \return whether it could be.
bool Change(const VARIANT& value, VARTYPE kind, platform::UniqueVariant& changed) noexcept {
    return SUCCEEDED(VariantChangeType(changed.Put(), const_cast<VARIANT*>(&value), 0, kind));
}

std::int64_t IntegerOf(const VARIANT& value) noexcept {
    switch (value.vt) {
        case VT_I1:
            return static_cast<signed char>(value.bVal);
        case VT_UI1:
            return value.bVal;
        case VT_I2:
            return value.iVal;
        case VT_UI2:
            return static_cast<USHORT>(value.iVal);
        case VT_UI4:
        case VT_UINT:
            return static_cast<ULONG>(value.lVal);
        case VT_I8:
        case VT_UI8:
            return value.llVal;
        default:
            return value.lVal;
    }
}

bool PutInteger(DataItem& item, std::int64_t number, bool isWide) noexcept {
    const auto narrow = static_cast<std::int32_t>(number);
    if (isWide || narrow != number) return item.SetInt64(&number, 0);
    return item.SetInt(&narrow, 0);
}

WStringView TextIn(const VARIANT& plain) noexcept {
    if (plain.vt == VT_LPWSTR) {
        const auto* const text = static_cast<const WCHAR*>(plain.byref);
        return WStringView(text ? text : TEXT(""));
    }
    if (plain.vt != VT_BSTR) return {};
    return WStringView(plain.bstrVal ? plain.bstrVal : TEXT(""), SysStringLen(plain.bstrVal));
}

}  // namespace

Kind KindOf(const VARIANT& value) noexcept {
    switch (Plain(value)->vt) {
        case VT_BOOL:
            return Kind::Bool;
        case VT_I1:
        case VT_UI1:
        case VT_I2:
        case VT_UI2:
        case VT_I4:
        case VT_UI4:
        case VT_INT:
        case VT_UINT:
            return Kind::Int;
        case VT_I8:
        case VT_UI8:
            return Kind::Int64;
        case VT_R4:
        case VT_R8:
        case VT_DECIMAL:
            return Kind::Double;
        case VT_BSTR:
        case VT_LPWSTR:
            return Kind::String;
        case VT_EMPTY:
        case VT_NULL:
        case VT_DISPATCH:
        case VT_UNKNOWN:
            return Kind::Object;
        default:
            return Kind::None;
    }
}

bool PutVariant(DataItem& item, const VARIANT& value) noexcept {
    const Plain plain(value);
    switch (KindOf(*plain)) {
        case Kind::Bool: {
            const bool flag = plain->boolVal != VARIANT_FALSE;
            return item.SetBool(&flag, 1);
        }
        case Kind::Int:
            return PutInteger(item, IntegerOf(*plain), false);
        case Kind::Int64:
            // The largest unsigned numbers have no signed type at all.
            if (plain->vt == VT_UI8 && plain->llVal < 0) return false;
            return PutInteger(item, plain->llVal, true);
        case Kind::Double: {
            platform::UniqueVariant changed;
            return Change(*plain, VT_R8, changed) && item.SetDouble(&changed.Get().dblVal, 0);
        }
        case Kind::String:
            return item.SetText(TextIn(*plain));
        case Kind::Object:
            return item.SetObject(
                plain->vt == VT_DISPATCH || plain->vt == VT_UNKNOWN ? plain->punkVal : nullptr);
        default:
            return false;
    }
}

HRESULT GiveVariant(DataItem& item, VARIANT& value) noexcept {
    VariantInit(&value);
    switch (item.GetType()) {
        case Kind::Bool: {
            bool flag = false;
            (void)item.GetBool(flag);
            value.boolVal = flag ? VARIANT_TRUE : VARIANT_FALSE;
            value.vt = VT_BOOL;
            return S_OK;
        }
        case Kind::Int: {
            std::int32_t number = 0;
            (void)item.GetInt(number);
            value.lVal = number;
            value.vt = VT_I4;
            return S_OK;
        }
        case Kind::Int64: {
            std::int64_t number = 0;
            (void)item.GetInt64(number);
            value.llVal = number;
            value.vt = VT_I8;
            return S_OK;
        }
        case Kind::Double:
            (void)item.GetDouble(value.dblVal);
            value.vt = VT_R8;
            return S_OK;
        case Kind::String: {
            const WString* const text = item.GetString();
            if (!text) return E_INVALIDARG;
            value.bstrVal = SysAllocStringLen(text->Text(), text->Length());
            if (!value.bstrVal) return E_OUTOFMEMORY;
            value.vt = VT_BSTR;
            return S_OK;
        }
        case Kind::Object:
            value.punkVal = item.GetObject();
            if (value.punkVal) value.punkVal->AddRef();
            value.vt = VT_UNKNOWN;
            return S_OK;
        case Kind::Stream:
            return E_FAIL;
        default:
            return E_INVALIDARG;
    }
}

bool IsMissing(const VARIANT& value) noexcept {
    const VARTYPE kind = Plain(value)->vt;
    return kind == VT_EMPTY || kind == VT_NULL || kind == VT_ERROR;
}

WStringView TextOf(const VARIANT& value) noexcept { return TextIn(*Plain(value)); }

bool IndexOf(const VARIANT& value, LONG& index) noexcept {
    const Plain plain(value);
    if (plain->vt == VT_I4) {
        index = plain->lVal;
        return true;
    }
    platform::UniqueVariant changed;
    if (!Change(*plain, VT_I4, changed)) return false;
    index = changed.Get().lVal;
    return true;
}

bool PathOf(const VARIANT& value, WString& path) noexcept {
    path.Clear();
    const Plain plain(value);
    if (IsMissing(*plain)) return true;
    if (plain->vt == VT_BSTR || plain->vt == VT_LPWSTR) return path.Assign(TextIn(*plain));
    LONG index = 0;
    if (IndexOf(*plain, index)) {
        return path.Format(TEXT("[%d]"), index);
    }
    platform::UniqueVariant text;
    return Change(*plain, VT_BSTR, text) && path.Assign(TextIn(text.Get()));
}

}  // namespace AUX
