#pragma once

#include <cstring>
#include <sstream>
#include <string>

#include "automation/type_info_holder.h"
#include "platform/com_object.h"
#include "platform/shell.h"
#include "platform/text.h"
#include "platform/unique_bstr.h"
#include "platform/unique_variant.h"
#include "tests/automation/generated/holder_cases.h"

namespace holder_cases {

/// What a value holds, as text.
inline std::string Shown(const VARIANT& value) {
    if (value.vt == VT_EMPTY) return "";
    if (value.vt == VT_NULL) return "null";
    if (value.vt == VT_ERROR) return "missing";
    if (value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN) {
        return value.punkVal ? "object" : "none";
    }
    platform::UniqueVariant text;
    const HRESULT changed =
        VariantChangeType(text.Change(), const_cast<VARIANT*>(&value), 0, VT_BSTR);
    if (FAILED(changed)) return "?";
    return platform::ToUtf8(text.Get().bstrVal ? text.Get().bstrVal : TEXT(""));
}

inline std::string Shown(const WCHAR* text) { return text ? platform::ToUtf8(text) : "none"; }
/// A text of what is given, with blanks between.
template <class... Parts>
BSTR NewText(const Parts&... parts) {
    std::ostringstream text;
    const char* between = "";
    ((text << between << parts, between = " "), ...);
    return SysAllocString(platform::FromUtf8(text.str()).c_str());
}

/// Loads the description of ITexts or of an interface derived from it.
inline HRESULT LoadTypes(REFIID id, ITypeInfo** info) noexcept {
    static const platform::WideString path = platform::FromUtf8(HOLDER_CASES);
    platform::ComPtr<ITypeLib> library;
    const HRESULT result = LoadTypeLib(path.c_str(), library.Put());
    return FAILED(result) ? result : library->GetTypeInfoOfGuid(id, info);
}

/// An object whose members tell what reached them.
class Texts final : public platform::ComObject<IMoreTexts> {
public:
    explicit Texts(AUX::TypeInfoHolder& types) noexcept : types_(types) {}

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) noexcept override {
        return types_.GetTypeInfoCount(count);
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID, ITypeInfo** info) noexcept override {
        return types_.GetTypeInfo(index, info);
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID,
                                            DISPID* ids) noexcept override {
        return types_.GetIDsOfNames(reserved, names, count, ids);
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID reserved, LCID, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                     UINT* argumentError) noexcept override {
        return types_.Invoke(static_cast<ITexts*>(this), member, reserved, flags, parameters,
                             result, exception, argumentError);
    }

    HRESULT STDMETHODCALLTYPE Echo(LPWSTR words, LPWSTR* result) override {
        *result = nullptr;
        if (!words) return S_FALSE;
        const platform::WideString longer = platform::WideString(words) + TEXT("!");
        const std::size_t bytes = (longer.size() + 1) * sizeof(WCHAR);
        *result = static_cast<LPWSTR>(CoTaskMemAlloc(bytes));
        if (!*result) return E_OUTOFMEMORY;
        std::memcpy(*result, longer.c_str(), bytes);
        return words[0] == '9' ? E_ACCESSDENIED : S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_Label(LPWSTR key, LONG* result) override {
        if (!key) return E_INVALIDARG;
        *result = label_ + key[0];
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE put_Label(LPWSTR key, LONG value) override {
        if (!key) return E_INVALIDARG;
        label_ = value - key[0];
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Values(LPWSTR words, BYTE a, SHORT b, Sort c, LONGLONG d, float e,
                                     double f, VARIANT_BOOL g, BSTR h, VARIANT i, IUnknown* j,
                                     ITexts* k, DECIMAL l, UINT m, BSTR* all) override {
        VARIANT precise;
        precise.decVal = l;
        precise.vt = VT_DECIMAL;
        *all = NewText(Shown(words), int{a}, b, c, d, 100 * e, 100 * f, g, Shown(h), Shown(i),
                       j ? "object" : "none", k == this ? "self" : "none", Shown(precise), m);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE LeftOut(LPWSTR, LONG a, BSTR b, Sort c, VARIANT d, LPWSTR e, SHORT* f,
                                      VARIANT* g, BSTR* all) override {
        *all = NewText(a, Shown(b), c, Shown(d), Shown(e), ++*f, Shown(*g));
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Change(LPWSTR words, SHORT* a, BSTR* b, double* c, VARIANT* d,
                                     ITexts** e, ITexts** f, LONG* g, LPWSTR* h) override {
        ++*a;
        const platform::UniqueBstr old(*b);
        *b = NewText(Shown(old.Get()), Shown(words), *g, Shown(*h));
        *c = 2.5;
        (void)VariantClear(d);
        d->vt = VT_I2;
        d->iVal = 11;
        if (*e) (*e)->Release();
        *e = nullptr;
        *f = platform::ComPtr<ITexts>(this).Detach();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Plain(LONG a, LONG* result) override {
        *result = a + 1;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_Precise(LPWSTR digits, DECIMAL* result) override {
        platform::UniqueVariant made;
        made.Change()->vt = VT_BSTR;
        made.Change()->bstrVal = SysAllocString(digits);
        const HRESULT changed = VariantChangeType(made.Change(), made.Change(), 0, VT_DECIMAL);
        if (SUCCEEDED(changed)) *result = made.Get().decVal;
        result->wReserved = 0;  // where a value has its kind
        return changed;
    }
    HRESULT STDMETHODCALLTYPE get_Any(LPWSTR words, VARIANT* result) override {
        result->vt = VT_BSTR;
        result->bstrVal = SysAllocString(words);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE putref_Other(LPWSTR, ITexts* other) override {
        hasOther_ = other != nullptr;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_Other(LPWSTR, ITexts** result) override {
        *result = hasOther_ ? platform::ComPtr<ITexts>(this).Detach() : nullptr;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Needs(LONG, LONG, LPWSTR) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE Deep(LPWSTR, LONG**) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE put_Sparse(LPWSTR key, LPWSTR value) override {
        if (!value) return E_INVALIDARG;
        label_ = (key ? 1000 : 0) + value[0];
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE More(LPWSTR words, LONG* result) override {
        if (!words) return E_INVALIDARG;
        *result = 2 * words[0];
        return S_OK;
    }

private:
    void* AnswersAlso(REFIID id) noexcept override {
        const bool isBase = IsEqualIID(id, platform::InterfaceId<ITexts>());
        return isBase ? static_cast<ITexts*>(this) : nullptr;
    }

    AUX::TypeInfoHolder& types_;
    LONG label_ = 0;
    bool hasOther_ = false;
};

}  // namespace holder_cases
