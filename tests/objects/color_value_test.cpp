#include "objects/color_value.h"

#include "objects/root_object.h"
#include "platform/unique_bstr.h"
#include "tests/support/com_rules.h"
#include "tests/support/fail_each_allocation.h"

namespace {

using namespace AUX;
using platform::ComPtr;
using platform::InterfaceId;
using platform::MakeObject;
using platform::UniqueBstr;

ComPtr<IColorValue> Make(LONG kind) {
    ComPtr<IColorValue> color;
    EXPECT_EQ(Root().NewColor(kind, color.Put()), S_OK);
    return color;
}

/// A colour of a host's own, of any number of a kind.
class HostColor final : public DualObject<IColorValue> {
public:
    LONG kind = 0;
    HRESULT result = S_OK;

    HRESULT STDMETHODCALLTYPE GetKind(LONG* to) noexcept override { return Give(to, kind); }
    HRESULT STDMETHODCALLTYPE GetComponents(float* a, float* b, float* c,
                                            float* d) noexcept override {
        *a = 0.5f;
        *b = 9;
        *c = *d = 0;
        return result;
    }
    HRESULT STDMETHODCALLTYPE SetKind(LONG) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetText(BSTR*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetText(BSTR) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetColorRef(ULONG*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetColorRef(ULONG) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IsSpecial(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetRGB(float*, float*, float*) noexcept override { return S_OK; }
    HRESULT STDMETHODCALLTYPE SetRGB(float, float, float) noexcept override { return S_OK; }
    HRESULT STDMETHODCALLTYPE GetCMYK(float*, float*, float*, float*) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE SetCMYK(float, float, float, float) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetGray(float*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetGray(float) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Assign(IColorValue*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Clone(IColorValue**) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IsEqual(IColorValue*, VARIANT_BOOL*) noexcept override {
        return E_NOTIMPL;
    }
};

TEST(ColorValue, EachOperationGivesItsCode) {
    const ComPtr<IColorValue> made = Make(0);
    IColorValue& color = *made.Get();
    test_support::ExpectComRules(&color, {InterfaceId<IColorValue>(), InterfaceId<IDispatch>()});
    float one = 7, c3 = 7;
    EXPECT_EQ(color.GetComponents(nullptr, nullptr, nullptr, &c3), S_OK);
    EXPECT_EQ(c3, 1);
    LONG kind = 7;
    const ComPtr<IColorValue> special = Make(-3);
    const UniqueBstr letter(SysAllocString(TEXT("n"))), half(SysAllocString(TEXT("G(.5)"))),
        bad(SysAllocString(TEXT("RGB(1,0)")));
    ComPtr<IColorValue> none(special);
    const struct {
        const char* what;
        HRESULT result, expected;
    } kCases[] = {
        {"new, no place", Root().NewColor(0, nullptr), E_POINTER},
        {"new, kind too low", Root().NewColor(-4, none.Put()), E_INVALIDARG},
        {"new, kind too high", Root().NewColor(3, none.Put()), E_INVALIDARG},
        {"kind, no place", color.GetKind(nullptr), E_POINTER},
        {"same kind", color.SetKind(0), S_OK},
        {"no kind", color.SetKind(3), S_FALSE},
        {"no kind", color.SetKind(-4), S_FALSE},
        {"kind", color.SetKind(2), S_FALSE},
        {"text, no place", color.GetText(nullptr), E_POINTER},
        {"no text", color.SetText(nullptr), S_FALSE},
        {"bad text", color.SetText(bad.Get()), S_FALSE},
        {"good text", color.SetText(half.Get()), S_OK},
        {"letter", special->SetText(letter.Get()), S_FALSE},
        {"same letter", special->SetText(letter.Get()), S_OK},
        {"reference, no place", color.GetColorRef(nullptr), E_POINTER},
        {"special, no place", color.IsSpecial(nullptr), E_INVALIDARG},
        {"RGB, no place", color.GetRGB(nullptr, nullptr, nullptr), E_INVALIDARG},
        {"RGB, one place", color.GetRGB(nullptr, &one, nullptr), S_OK},
        {"CMYK, no place", color.GetCMYK(nullptr, nullptr, nullptr, nullptr), E_INVALIDARG},
        {"CMYK, one place", color.GetCMYK(nullptr, nullptr, nullptr, &one), S_OK},
        {"gray, no place", color.GetGray(nullptr), E_INVALIDARG},
        {"components, no place", color.GetComponents(nullptr, nullptr, nullptr, nullptr), S_OK},
        {"assign nothing", color.Assign(nullptr), E_INVALIDARG},
        {"clone, no place", color.Clone(nullptr), E_POINTER},
        {"equal, no place", color.IsEqual(special.Get(), nullptr), E_POINTER},
        {"still half gray", color.GetKind(&kind), S_OK},
    };
    for (const auto& c : kCases) EXPECT_EQ(c.result, c.expected) << c.what;
    EXPECT_EQ(none.Get(), nullptr);
    EXPECT_EQ(kind, 2);
    EXPECT_EQ(one, 0.5f);
}

TEST(ColorValue, TakesAndComparesColoursOfAHost) {
    const ComPtr<IColorValue> color = Make(-1), gray = Make(0);
    const auto host = MakeObject<HostColor>();
    VARIANT_BOOL isEqual = 7;
    host->kind = 5;
    EXPECT_EQ(color->Assign(host.Get()), E_INVALIDARG);
    EXPECT_EQ(color->IsEqual(host.Get(), &isEqual), E_INVALIDARG);
    EXPECT_EQ(isEqual, VARIANT_FALSE);
    host->kind = 0;
    host->result = E_ABORT;
    EXPECT_EQ(color->Assign(host.Get()), E_ABORT);
    VARIANT_BOOL isSpecial = VARIANT_FALSE;
    EXPECT_EQ(color->IsSpecial(&isSpecial), S_OK);
    EXPECT_EQ(isSpecial, VARIANT_TRUE) << "unchanged by what failed";
    host->result = S_OK;
    EXPECT_EQ(color->Assign(host.Get()), S_OK);
    EXPECT_EQ(gray->SetRGB(0.5f, 1, 0), S_OK);
    EXPECT_EQ(color->IsEqual(gray.Get(), &isEqual), S_OK);
    EXPECT_EQ(isEqual, VARIANT_TRUE);
    EXPECT_EQ(color->Assign(color.Get()), S_OK);
}

TEST(ColorValue, TellsWhenMemoryRunsOut) {
    EXPECT_GE(test_support::FailEachAllocation([](auto hasFailed) {
                  ComPtr<IColorValue> color, copy;
                  const HRESULT made = Root().NewColor(2, color.Put());
                  const HRESULT cloned = color ? color->Clone(copy.Put()) : made;
                  EXPECT_EQ(cloned, hasFailed() ? E_OUTOFMEMORY : S_OK);
                  EXPECT_EQ(copy.Get() == nullptr, hasFailed());
              }),
              2u);
}

}  // namespace
