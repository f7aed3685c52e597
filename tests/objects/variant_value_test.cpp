#include "objects/variant_value.h"

#include <cstring>

#include "cab/create_item.h"
#include "tests/objects/bag_clients.h"

namespace {

using namespace objects_test;
using CAB::Kind;

VARIANT Of(VARTYPE kind, const void* payload, std::size_t size) {
    VARIANT value{};
    std::memcpy(&value.llVal, payload, size);
    value.vt = kind;
    return value;
}
template <class Payload>
VARIANT Of(VARTYPE kind, Payload payload) {
    return Of(kind, &payload, sizeof payload);
}

/// What an item that took a value shows as a text; "refused" if it did not take it.
std::string Taken(Kind kind, const VARIANT& value) {
    const std::unique_ptr<CAB::DataItem> item =
        CAB::CreateItem(nullptr, nullptr, nullptr, nullptr, kind);
    UniqueVariant given, text;
    if (!item || !AUX::PutVariant(*item, value)) return "refused";
    EXPECT_EQ(AUX::GiveVariant(*item, *given.Put()), S_OK);
    if (given.Get().vt == VT_UNKNOWN) return given.Get().punkVal ? "object" : "none";
    EXPECT_EQ(VariantChangeType(text.Put(), given.Change(), 0, VT_BSTR), S_OK);
    return platform::ToUtf8({text.Get().bstrVal, SysStringLen(text.Get().bstrVal)});
}

TEST(VariantValue, EachTypeHasItsKindAndIsTakenAlsoByReference) {
    const UniqueBstr twelve(SysAllocString(TEXT("12")));
    WCHAR thirteen[] = TEXT("13");
    UniqueVariant half;
    ASSERT_EQ(VariantChangeType(half.Put(), UniqueVariant(9).Change(), 0, VT_DECIMAL), S_OK);
    const ComPtr<IBag> bag = NewBag();
    IUnknown* const object = bag.Get();
    const struct {
        const char* what;
        VARIANT value;
        Kind kind;
        const char* taken;
        const char* asInt = nullptr;  // by an item of that kind, if it is not the same
    } kCases[] = {
        {"bool", Of(VT_BOOL, VARIANT_TRUE), Kind::Bool, "-1", "1"},
        {"i1", Of(VT_I1, static_cast<signed char>(-5)), Kind::Int, "-5"},
        {"ui1", Of(VT_UI1, BYTE{250}), Kind::Int, "250"},
        {"i2", Of(VT_I2, SHORT{-7}), Kind::Int, "-7"},
        {"ui2", Of(VT_UI2, USHORT{65535}), Kind::Int, "65535"},
        {"i4", Of(VT_I4, LONG{-70000}), Kind::Int, "-70000"},
        {"int", Of(VT_INT, LONG{8}), Kind::Int, "8"},
        {"ui4", Of(VT_UI4, ULONG{7}), Kind::Int, "7"},
        {"a large ui4", Of(VT_UI4, 4'000'000'000u), Kind::Int, "refused"},
        {"a large uint", Of(VT_UINT, 4'000'000'000u), Kind::Int, "refused"},
        {"i8", Of(VT_I8, LONGLONG{10'000'000'000}), Kind::Int64, "10000000000", "refused"},
        {"ui8", Of(VT_UI8, ULONGLONG{3}), Kind::Int64, "3"},
        {"a large ui8", Of(VT_UI8, ~ULONGLONG{0}), Kind::Int64, "refused"},
        {"r4", Of(VT_R4, 2.0f), Kind::Double, "2"},
        {"r8", Of(VT_R8, 0.5), Kind::Double, "0.5", "refused"},
        {"decimal", half.Get(), Kind::Double, "9"},
        {"bstr", Of(VT_BSTR, twelve.Get()), Kind::String, "12"},
        {"lpwstr", Of(VT_LPWSTR, &thirteen[0]), Kind::String, "13"},
        {"no bstr", Of(VT_BSTR, BSTR{}), Kind::String, "", "0"},
        {"empty", VARIANT{}, Kind::Object, "none", "refused"},
        {"null", Of(VT_NULL, 0), Kind::Object, "none", "refused"},
        {"unknown", Of(VT_UNKNOWN, object), Kind::Object, "object", "refused"},
        {"dispatch", Of(VT_DISPATCH, object), Kind::Object, "object", "refused"},
        {"no type", Of(VT_ERROR, DISP_E_PARAMNOTFOUND), Kind::None, "refused"},
        {"date", Of(VT_DATE, 1.0), Kind::None, "refused"},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.what);
        VARIANT copy = c.value;
        const bool isWhole = c.value.vt == VT_DECIMAL;
        VARIANT reference{}, variant{};
        reference.vt = static_cast<VARTYPE>(VT_BYREF | c.value.vt);
        reference.byref = isWhole ? static_cast<void*>(&copy) : &copy.llVal;
        variant.vt = VT_BYREF | VT_VARIANT;
        variant.byref = &copy;
        const bool hasReference = c.value.vt > VT_NULL && c.value.vt != VT_LPWSTR;
        const VARIANT* const forms[] = {&c.value, &variant, hasReference ? &reference : &c.value};
        for (const VARIANT* form : forms) {
            EXPECT_EQ(AUX::KindOf(*form), c.kind);
            if (c.kind != Kind::None) {
                EXPECT_EQ(Taken(c.kind, *form), c.taken);
            }
            EXPECT_EQ(Taken(Kind::Int, *form), c.asInt ? c.asInt : c.taken);
        }
    }
}

TEST(VariantValue, PathsAreTextsOrIndices) {
    const UniqueBstr text(SysAllocString(TEXT("a.b"))), digits(SysAllocString(TEXT("7")));
    const VARIANT missing = Of(VT_ERROR, DISP_E_PARAMNOTFOUND), number = Of(VT_I4, LONG{5});
    VARIANT reference{};
    reference.vt = VT_BYREF | VT_VARIANT;
    reference.byref = const_cast<VARIANT*>(&number);
    const struct {
        VARIANT value;
        const char* path;  // null: none
        LONG index;        // -9: none
    } kCases[] = {
        {VARIANT{}, "", 0},
        {Of(VT_NULL, 0), "", -9},
        {missing, "", -9},
        {number, "[5]", 5},
        {reference, "[5]", 5},
        {Of(VT_I2, SHORT{3}), "[3]", 3},
        {Of(VT_R8, 2.0), "[2]", 2},
        {Of(VT_BSTR, text.Get()), "a.b", -9},
        {Of(VT_BSTR, digits.Get()), "7", 7},
        {Of(VT_I8, LONGLONG{10'000'000'000}), "10000000000", -9},
        {Of(VT_DISPATCH, static_cast<IUnknown*>(nullptr)), nullptr, -9},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(&c - kCases);
        AUX::WString path;
        LONG index = -9;
        EXPECT_EQ(AUX::PathOf(c.value, path), c.path != nullptr);
        if (c.path) {
            EXPECT_EQ(platform::ToUtf8({path.Text(), path.Length()}), c.path);
        }
        EXPECT_EQ(AUX::IndexOf(c.value, index), c.index != -9);
        EXPECT_EQ(index, c.index);
    }
}

}  // namespace
