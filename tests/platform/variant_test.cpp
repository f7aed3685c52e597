#include <cstdlib>
#include <gtest/gtest.h>

#include "platform/com_object.h"
#include "platform/html_defaults.h"
#include "platform/unique_variant.h"
#include "tests/support/case_table.h"

namespace platform {
namespace {

class Element final : public ComObject<NotImplemented<IHTMLElement>> {};
class Bare final : public ComObject<IUnknown> {};

ULONG CountOf(IUnknown* object) {
    object->AddRef();
    return object->Release();
}

TEST(Variant, ChangesObjectsAndNothingElseToDispatch) {
    const ComPtr<Element> element = MakeObject<Element>();
    const ComPtr<Bare> bare = MakeObject<Bare>();
    UniqueVariant value;
    value.Change()->vt = VT_UNKNOWN;
    value.Change()->punkVal = ComPtr<IUnknown>(element.Get()).Detach();
    ASSERT_EQ(VariantChangeType(value.Change(), value.Change(), 0, VT_DISPATCH), S_OK);
    EXPECT_EQ(value.Get().vt, VT_DISPATCH);
    EXPECT_EQ(value.Get().pdispVal, static_cast<IDispatch*>(element.Get()));
    EXPECT_EQ(CountOf(element.Get()), 2u) << "the old reference went";
    {
        UniqueVariant copy;
        ASSERT_EQ(VariantChangeType(copy.Change(), value.Change(), 0, VT_DISPATCH), S_OK);
        EXPECT_EQ(CountOf(element.Get()), 3u);
    }
    EXPECT_EQ(CountOf(element.Get()), 2u);

    UniqueVariant text;
    text.Change()->vt = VT_BSTR;
    text.Change()->bstrVal = SysAllocString(TEXT("text"));
    EXPECT_EQ(VariantChangeType(value.Change(), text.Change(), 0, VT_DISPATCH),
              DISP_E_TYPEMISMATCH);
    UniqueVariant object;
    object.Change()->vt = VT_UNKNOWN;
    object.Change()->punkVal = ComPtr<IUnknown>(bare.Get()).Detach();
    EXPECT_TRUE(FAILED(VariantChangeType(value.Change(), object.Change(), 0, VT_DISPATCH)));
    EXPECT_EQ(value.Get().pdispVal, static_cast<IDispatch*>(element.Get())) << "stays";
    EXPECT_EQ(CountOf(bare.Get()), 2u);
    EXPECT_EQ(value.Put()->vt, VT_EMPTY);
    EXPECT_EQ(CountOf(element.Get()), 1u);
}

VARTYPE KindOf(const WideString& text) {
    return static_cast<VARTYPE>(std::strtoul(ToUtf8(text).c_str(), nullptr, 10));
}

// The source is made of its text and the value turned back to one, which other rows show.
TEST(Variant, ChangesNumbersAndTexts) {
    for (const auto& row : test_support::ReadCases(PLATFORM_CASES "variant_change.tsv", 5)) {
        SCOPED_TRACE(ToUtf8(row[0] + TEXT(" ") + row[1] + TEXT(" to ") + row[2]));
        UniqueVariant source, made, shown;
        source.Change()->vt = VT_BSTR;
        source.Change()->bstrVal = SysAllocString(row[1].c_str());
        const VARTYPE from = KindOf(row[0]);
        if (from == VT_EMPTY || from == VT_NULL) {
            source.Put()->vt = from;
        } else {
            ASSERT_EQ(VariantChangeType(source.Change(), source.Change(), 0, from), S_OK);
        }
        made.Change()->vt = VT_NULL;
        const HRESULT result = VariantChangeType(made.Change(), source.Change(), 0, KindOf(row[2]));
        const auto expected = std::strtoul(ToUtf8(row[3]).c_str(), nullptr, 16);
        EXPECT_EQ(result, static_cast<HRESULT>(static_cast<DWORD>(expected)));
        if (FAILED(result)) {
            EXPECT_EQ(made.Get().vt, VT_NULL) << "stays";
            continue;
        }
        ASSERT_EQ(VariantChangeType(shown.Change(), made.Change(), 0, VT_BSTR), S_OK);
        EXPECT_EQ(WideString(shown.Get().bstrVal), row[4]);
    }
}

}  // namespace
}  // namespace platform
