#include <gtest/gtest.h>

#include "platform/com_object.h"
#include "platform/html_defaults.h"
#include "platform/unique_variant.h"

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

}  // namespace
}  // namespace platform
