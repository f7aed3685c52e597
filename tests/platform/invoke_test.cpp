#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "platform/com_object.h"
#include "platform/modules.h"
#include "platform/text.h"
#include "platform/typeinfo.h"
#include "platform/unique_bstr.h"
#include "platform/unique_variant.h"
#include "tests/platform/generated/type_cases.h"

namespace platform {
namespace {

HRESULT LoadTypes(ITypeInfo** info) noexcept {
    WCHAR path[MAX_PATH];
    if (!GetModuleFileNameW(GetModuleHandleW(TEXT("probe.dll")), path, MAX_PATH)) return E_FAIL;
    ComPtr<ITypeLib> library;
    const HRESULT result = LoadTypeLib(path, library.Put());
    return FAILED(result) ? result : library->GetTypeInfoOfGuid(InterfaceId<ICalls>(), info);
}

/// What a value holds, as text.
std::string Shown(const VARIANT& value) {
    if (value.vt == VT_ERROR) return value.scode == DISP_E_PARAMNOTFOUND ? "missing" : "error";
    if (value.vt == VT_DISPATCH) return value.pdispVal ? "object" : "null";
    UniqueVariant text;
    if (FAILED(VariantChangeType(text.Change(), const_cast<VARIANT*>(&value), 0, VT_BSTR)))
        return "?";
    return ToUtf8(WideView(text.Get().bstrVal, SysStringLen(text.Get().bstrVal)));
}

class Calls final : public ComObject<ICalls> {
public:
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID,
                                            DISPID*) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) noexcept override {
        return E_NOTIMPL;
    }

    HRESULT STDMETHODCALLTYPE Add(LONG a, LONG b, LONG* sum) override {
        *sum = a - 2 * b;  // So that the order counts.
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_Name(BSTR* value) override {
        *value = SysAllocString(name_.c_str());
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE put_Name(BSTR value) override {
        name_ = value ? value : TEXT("");
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Defaults(LONG a, LONG b, BSTR c, VARIANT d, BSTR* all) override {
        const std::string text =
            std::to_string(a) + " " + std::to_string(b) + " " + ToUtf8(c) + " " + Shown(d);
        *all = SysAllocString(FromUtf8(text).c_str());
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Change(LONG* number, BSTR* words, VARIANT* any) override {
        ++*number;
        const WideString longer = WideString(*words ? *words : TEXT("")) + TEXT("!");
        SysFreeString(*words);
        *words = SysAllocString(longer.c_str());
        VariantClear(any);
        any->vt = VT_I4;
        any->lVal = 11;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Fail(LONG code) override { return code; }
    HRESULT STDMETHODCALLTYPE WithoutId(Kind which, Kind* next) override {
        *next = static_cast<Kind>(which + 1);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE putref_Object(IDispatch* object) override {
        object_ = ComPtr<IDispatch>(object);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_Object(IDispatch** object) override {
        *object = ComPtr<IDispatch>(object_).Detach();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Mixed(BYTE a, SHORT b, LONGLONG c, float d, double e, VARIANT_BOOL f,
                                    VARIANT g, IUnknown* h, UINT i, DATE j, double* sum) override {
        *sum = a + b + static_cast<double>(c) + d + e + f + g.lVal + (h != nullptr) + i + j;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Say(LPWSTR) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE Self(ICalls* other, ICalls** result) override {
        *result = ComPtr<ICalls>(other).Detach();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_Item(LONG index, LONG* value) override {
        *value = 10 * index + item_;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE put_Item(LONG index, LONG value) override {
        item_ = value - index;
        return S_OK;
    }

private:
    WideString name_;
    ComPtr<IDispatch> object_;
    LONG item_ = 0;
};

VARIANT Number(LONG number) {
    VARIANT value{};
    value.vt = VT_I4;
    value.lVal = number;
    return value;
}
VARIANT Of(VARTYPE kind, void* pointer) {
    VARIANT value{};
    value.vt = kind;
    value.byref = pointer;
    return value;
}

class InvokeTest : public ::testing::Test {
protected:
    InvokeTest() { EXPECT_EQ(LoadTypes(types_.Put()), S_OK); }

    /// \param arguments  In their order; the first `names.size()` of them are named.
    HRESULT Call(DISPID member, WORD flags, std::vector<VARIANT> arguments,
                 std::vector<DISPID> names = {}) {
        std::reverse(arguments.begin() + static_cast<std::ptrdiff_t>(names.size()),
                     arguments.end());
        DISPPARAMS parameters{arguments.data(), names.data(), static_cast<UINT>(arguments.size()),
                              static_cast<UINT>(names.size())};
        exception_ = {};
        UniqueVariant result;
        const HRESULT status =
            types_->Invoke(static_cast<ICalls*>(calls_.Get()), member, flags, &parameters,
                           result.Put(), &exception_, &argumentError_);
        shown_ = Shown(result.Get());
        return status;
    }

    const ModuleHandle probe_{LoadLibraryW(FromUtf8(TEST_MODULES "\\probe.dll").c_str())};
    const ComPtr<Calls> calls_ = MakeObject<Calls>();
    ComPtr<ITypeInfo> types_;
    std::string shown_;
    EXCEPINFO exception_{};
    UINT argumentError_ = 99;
};

TEST_F(InvokeTest, CallsWithWhatFitsAndRefusesTheRest) {
    const UniqueBstr four(SysAllocString(TEXT("4"))), zz(SysAllocString(TEXT("zz")));
    LONG nine = 9;
    VARIANT inner = Number(3);
    const VARIANT one = Number(1), text = Of(VT_BSTR, four.Get()), bad = Of(VT_BSTR, zz.Get());
    const VARIANT byReference = Of(VT_BYREF | VT_I4, &nine);
    const VARIANT inVariant = Of(VT_BYREF | VT_VARIANT, &inner);
    VARIANT missing = Number(DISP_E_PARAMNOTFOUND);
    missing.vt = VT_ERROR;
    const VARIANT object = Of(VT_DISPATCH, calls_.Get()), nothing = Of(VT_DISPATCH, nullptr);
    const DISPID put = DISPID_PROPERTYPUT;
    constexpr WORD kCall = DISPATCH_METHOD, kGet = DISPATCH_PROPERTYGET;
    constexpr WORD kPut = DISPATCH_PROPERTYPUT;
    const struct {
        const char* why;
        DISPID member;
        WORD flags;
        std::vector<VARIANT> arguments;
        std::vector<DISPID> names;
        HRESULT result;
        std::string shown;
    } kCases[] = {
        {"numbers", 1, kCall, {Number(7), one}, {}, S_OK, "5"},
        {"a text for a number", 1, kCall, {text, one}, {}, S_OK, "2"},
        {"by reference", 1, kCall, {byReference, inVariant}, {}, S_OK, "3"},
        {"named", 1, kCall, {Number(3), Number(8)}, {1, 0}, S_OK, "2"},
        {"one of them named", 1, kCall, {Number(3), Number(8)}, {1}, S_OK, "2"},
        {"method or property", 1, kCall | kGet, {Number(7), one}, {}, S_OK, "5"},
        {"one too few", 1, kCall, {one}, {}, DISP_E_BADPARAMCOUNT, ""},
        {"one too many", 1, kCall, {one, one, one}, {}, DISP_E_BADPARAMCOUNT, ""},
        {"no number", 1, kCall, {one, bad}, {}, DISP_E_TYPEMISMATCH, ""},
        {"another kind of member", 1, kGet, {one, one}, {}, DISP_E_MEMBERNOTFOUND, ""},
        {"no such member", 77, kCall, {}, {}, DISP_E_MEMBERNOTFOUND, ""},
        {"defaults", 3, kCall, {one}, {}, S_OK, "1 7 text missing"},
        {"some left out", 3, kCall, {one, missing, text, one}, {}, S_OK, "1 7 4 1"},
        {"put", 2, kPut, {text}, {put}, S_OK, ""},
        {"get", 2, kGet, {}, {}, S_OK, "4"},
        {"put without the name for the new value", 2, kPut, {text}, {}, DISP_E_PARAMNOTFOUND, ""},
        {"put with an index", 0, kPut, {Number(50), Number(2)}, {put}, S_OK, ""},
        {"get with an index", 0, kGet, {Number(3)}, {}, S_OK, "78"},
        {"enumeration", 0x60020006, kCall, {Number(1)}, {}, S_OK, "2"},
        {"set an object", 7, DISPATCH_PROPERTYPUTREF, {object}, {put}, S_OK, ""},
        {"get it", 7, kGet, {}, {}, S_OK, "object"},
        {"take it away", 7, DISPATCH_PROPERTYPUTREF, {nothing}, {put}, S_OK, ""},
        {"an object of an own interface", 10, kCall, {object}, {}, S_OK, "object"},
        {"plain text", 9, kCall, {text}, {}, DISP_E_BADVARTYPE, ""},
        {"all sorts",
         8,
         kCall,
         {one, one, one, text, text, one, one, object, one, one},
         {},
         S_OK,
         "14"},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(Call(c.member, c.flags, c.arguments, c.names), c.result);
        EXPECT_EQ(shown_, c.shown);
    }
    EXPECT_EQ(calls_->AddRef(), 2u) << "no reference is left";
    calls_->Release();
}

TEST_F(InvokeTest, GivesBackWhatAMethodChanged) {
    LONG number = 41;
    BSTR words = SysAllocString(TEXT("so"));
    VARIANT any = Of(VT_BSTR, SysAllocString(TEXT("old")));
    ASSERT_EQ(Call(4, DISPATCH_METHOD,
                   {Of(VT_BYREF | VT_I4, &number), Of(VT_BYREF | VT_BSTR, &words),
                    Of(VT_BYREF | VT_VARIANT, &any)}),
              S_OK);
    EXPECT_EQ(number, 42);
    EXPECT_EQ(ToUtf8(UniqueBstr(words).Get()), "so!");
    EXPECT_EQ(Shown(any), "11");
    EXPECT_EQ(Call(5, DISPATCH_METHOD, {Number(E_ACCESSDENIED)}), DISP_E_EXCEPTION);
    EXPECT_EQ(exception_.scode, E_ACCESSDENIED);
    SysFreeString(exception_.bstrDescription);
    SysFreeString(exception_.bstrSource);
}

TEST_F(InvokeTest, KnowsNames) {
    WideString add = TEXT("ADD"), second = TEXT("b"), unknown = TEXT("Nobody");
    LPOLESTR names[] = {add.data(), second.data(), unknown.data()};
    DISPID ids[2] = {};
    EXPECT_EQ(types_->GetIDsOfNames(names, 2, ids), S_OK);
    EXPECT_EQ(ids[0], 1);
    EXPECT_EQ(ids[1], 1);
    EXPECT_EQ(types_->GetIDsOfNames(&names[2], 1, ids), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(ids[0], DISPID_UNKNOWN);
}

}  // namespace
}  // namespace platform
