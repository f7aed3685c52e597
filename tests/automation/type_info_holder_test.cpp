#include "automation/type_info_holder.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "platform/com_object.h"
#include "platform/object_pointer.h"
#include "platform/shell.h"
#include "platform/text.h"
#include "platform/unique_bstr.h"
#include "platform/unique_variant.h"
#include "tests/automation/generated/holder_cases.h"

namespace AUX {
namespace {

using platform::ComPtr;

HRESULT LoadTypes(ITypeInfo** info) noexcept {
    ComPtr<ITypeLib> library;
    const auto path = platform::FromUtf8(HOLDER_CASES);
    const HRESULT result = LoadTypeLib(path.c_str(), library.Put());
    if (FAILED(result)) return result;
    return library->GetTypeInfoOfGuid(platform::InterfaceId<ITexts>(), info);
}

class Texts final : public platform::ComObject<ITexts> {
public:
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) noexcept override {
        return holder.GetTypeInfoCount(count);
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID, ITypeInfo** info) noexcept override {
        return holder.GetTypeInfo(index, info);
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID,
                                            DISPID* ids) noexcept override {
        return holder.GetIDsOfNames(reserved, names, count, ids);
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID reserved, LCID, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                     UINT* argumentError) noexcept override {
        return holder.Invoke(static_cast<ITexts*>(this), member, reserved, flags, parameters,
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
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_Label(LPWSTR key, LONG* result) override {
        *result = label_ + key[0];
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE put_Label(LPWSTR key, LONG value) override {
        label_ = value - key[0];
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Mixed(LPWSTR words, double a, float b, SHORT c, LONGLONG d, VARIANT e,
                                    LONG f, VARIANT g, double* sum) override {
        *sum = words[0] - '0' + a + 10 * b + 100 * c + 1000 * static_cast<double>(d) +
               10000 * e.lVal + 100000 * f + (g.vt == VT_NULL ? 1000000 : 0);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Other(LPWSTR, ITexts* other, ITexts** result) override {
        *result = ComPtr<ITexts>(other).Detach();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Raise(LPWSTR words, LONG* number) override {
        *number += words[0] - '0';
        return words[0] == '9' ? E_ACCESSDENIED : S_OK;
    }
    HRESULT STDMETHODCALLTYPE Plain(LONG a, LONG* result) override {
        *result = a + 1;
        return S_OK;
    }

    TypeInfoHolder holder{LoadTypes};

private:
    LONG label_ = 0;
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

std::string Shown(const VARIANT& value) {
    if (value.vt == VT_EMPTY) return "";
    if (value.vt == VT_DISPATCH) return value.pdispVal ? "object" : "null";
    platform::UniqueVariant text;
    if (FAILED(VariantChangeType(text.Change(), const_cast<VARIANT*>(&value), 0, VT_BSTR)))
        return "?";
    return platform::ToUtf8(text.Get().bstrVal ? text.Get().bstrVal : TEXT(""));
}

TEST(TypeInfoHolder, CallsThroughTheTableWhatTheStockCallRefuses) {
    const ComPtr<Texts> texts = platform::MakeObject<Texts>();
    const platform::UniqueBstr one(SysAllocString(TEXT("1"))), zz(SysAllocString(TEXT("zz")));
    alignas(8) WCHAR plain[] = TEXT("1 plain text");
    VARIANT inner = Of(VT_BSTR, one.Get());
    LONG changed = 40;
    const VARIANT text = Of(VT_BSTR, one.Get()), bad = Of(VT_BSTR, zz.Get());
    const VARIANT two = Number(2), self = Of(VT_DISPATCH, static_cast<IDispatch*>(texts.Get()));
    constexpr WORD kCall = DISPATCH_METHOD, kGet = DISPATCH_PROPERTYGET;
    const struct {
        const char* why;
        DISPID member;
        WORD flags;
        std::vector<VARIANT> arguments;
        HRESULT result;
        std::string shown;
        UINT argumentError;
        std::uint32_t stockCalls;
    } kCases[] = {
        {"stock", 6, kCall, {two}, S_OK, "3", 99, 1},
        {"stock again", 6, kCall, {two}, S_OK, "3", 99, 2},
        {"text in and out, first", 1, kCall, {text}, S_OK, "1!", 99, 3},
        {"then at once", 1, kCall, {text}, S_OK, "1!", 99, 3},
        {"in a reference", 1, kCall, {Of(VT_BYREF | VT_VARIANT, &inner)}, S_OK, "1!", 99, 3},
        {"a plain text", 1, kCall, {Of(VT_UNKNOWN, plain)}, S_OK, "1 plain text!", 99, 3},
        {"no text", 1, kCall, {Of(VT_UNKNOWN, nullptr)}, S_FALSE, "", 99, 3},
        {"an object is no text",
         1,
         kCall,
         {Of(VT_UNKNOWN, texts.Get())},
         DISP_E_TYPEMISMATCH,
         "",
         0,
         3},
        {"one is missing", 1, kCall, {}, DISP_E_BADPARAMCOUNT, "", 99, 3},
        {"one too many", 1, kCall, {text, two}, DISP_E_BADPARAMCOUNT, "", 99, 3},
        {"put", 2, DISPATCH_PROPERTYPUT, {text, two}, S_OK, "", 99, 4},
        {"call or get", 2, kCall | kGet, {text}, S_OK, "2", 99, 5},
        {"call or get at once", 2, kCall | kGet, {text}, S_OK, "2", 99, 5},
        {"all sorts", 3, kCall, {text, two, two, two, two, two, two, two}, S_OK, "222223", 99, 6},
        {"left out", 3, kCall, {text, two, two, two, two, two}, S_OK, "1522223", 99, 6},
        {"changed", 3, kCall, {text, text, text, text, text, text}, S_OK, "?", 99, 6},
        {"no number", 3, kCall, {text, two, two, bad, two, two}, DISP_E_TYPEMISMATCH, "", 3, 6},
        {"object", 4, kCall, {text, self}, S_OK, "object", 99, 7},
        {"no object", 4, kCall, {text, VARIANT{}}, S_OK, "null", 99, 7},
        {"number for object", 4, kCall, {text, two}, DISP_E_TYPEMISMATCH, "", 1, 7},
        {"by reference", 5, kCall, {text, Of(VT_BYREF | VT_I4, &changed)}, S_OK, "", 99, 8},
        {"nobody", 77, kCall, {text}, DISP_E_MEMBERNOTFOUND, "", 99, 9},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.why);
        std::vector<VARIANT> arguments(c.arguments.rbegin(), c.arguments.rend());
        DISPID put = DISPID_PROPERTYPUT;
        const bool isPut = c.flags == DISPATCH_PROPERTYPUT;
        DISPPARAMS parameters{arguments.data(), isPut ? &put : nullptr,
                              static_cast<UINT>(arguments.size()), isPut ? 1u : 0u};
        platform::UniqueVariant result;
        UINT argumentError = 99;
        EXPECT_EQ(texts->Invoke(c.member, IID{}, 0, c.flags, &parameters, result.Put(), nullptr,
                                &argumentError),
                  c.result);
        if (c.shown != "?") {
            EXPECT_EQ(Shown(result.Get()), c.shown);
        }
        EXPECT_EQ(argumentError, c.argumentError);
        EXPECT_EQ(texts->holder.StockCalls(), c.stockCalls);
    }
    EXPECT_EQ(changed, 41);
    EXPECT_EQ(texts->AddRef(), 2u) << "no reference is left";
    texts->Release();
}

TEST(ObjectPointer, TellsObjectsFromTexts) {
    const ComPtr<Texts> texts = platform::MakeObject<Texts>();
    alignas(8) const WCHAR aligned[] = TEXT("a");
    alignas(8) const WCHAR zeros[8] = {};
    const void* ownTable[4] = {zeros, zeros, zeros, zeros};
    const void* notCode = ownTable;
    EXPECT_TRUE(platform::IsObjectPointer(static_cast<ITexts*>(texts.Get())));
    for (const void* each : {static_cast<const void*>(nullptr), static_cast<const void*>(aligned),
                             static_cast<const void*>(aligned + 1), static_cast<const void*>(zeros),
                             static_cast<const void*>(&notCode)}) {
        EXPECT_FALSE(platform::IsObjectPointer(each));
    }
}

TEST(IdMap, FindsEachIdAfterItHasGrown) {
    static_assert(HashOfId(0) == 0x4D25767F9DCE13F5);
    IdMap<std::uint32_t> map;
    EXPECT_EQ(map.Find(1), nullptr);
    for (std::uint32_t id = 0; id < 100; ++id) ASSERT_NE(map.Add(id * 0x01010101, id), nullptr);
    for (std::uint32_t id = 0; id < 100; ++id) {
        const std::uint32_t* found = map.Find(id * 0x01010101);
        ASSERT_NE(found, nullptr);
        EXPECT_EQ(*found, id);
    }
    EXPECT_EQ(map.Find(0x01010102), nullptr);
}

}  // namespace
}  // namespace AUX
