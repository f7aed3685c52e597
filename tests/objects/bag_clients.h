#pragma once

#include "objects/bag_face.h"
#include "objects/root_object.h"
#include "platform/text.h"
#include "platform/unique_bstr.h"
#include "platform/unique_variant.h"
#include "tests/objects/host_objects.h"

/// What clients of bags do over and over.
namespace objects_test {

using platform::ComPtr;
using platform::UniqueBstr;
using platform::UniqueVariant;

inline constexpr LONG kInt = static_cast<LONG>(CAB::Kind::Int);
inline constexpr LONG kArray = static_cast<LONG>(CAB::Kind::Array);
inline constexpr LONG kDictionary = static_cast<LONG>(CAB::Kind::Dictionary);

inline constexpr const char* kTemplates =
    R"(<CabTemplate version="1.0"><Root id="Shape" type="Dictionary" itemSet="Page"/>)"
    R"(<Root id="Other" type="Dictionary" itemSet="Deep"/>)"
    R"(<ItemSet id="Page"><Item id="width" type="Int" defVal="210"/></ItemSet>)"
    R"(<ItemSet id="Deep"><Item id="depth" type="Int" defVal="3"/></ItemSet></CabTemplate>)";

/// A text as an argument of any kind.
class Words {
public:
    explicit Words(const WCHAR* text) {
        VARIANT& value = *value_.Change();
        value.vt = VT_BSTR;
        value.bstrVal = SysAllocString(text);
    }
    [[nodiscard]] const VARIANT& Get() const noexcept { return value_.Get(); }

private:
    UniqueVariant value_;
};

inline ComPtr<IBag> NewBag() {
    ComPtr<IBag> bag;
    (void)AUX::Root().NewBag(bag.Put());
    return bag;
}

inline ComPtr<IBagItem> RootOf(IBag& bag) {
    ComPtr<IBagItem> item;
    (void)bag.GetRootItem(item.Put());
    return item;
}

/// Of an object that the test still holds elsewhere.
inline IStream* AsStream(const ComPtr<IUnknown>& object) { return object.As<IStream>().Get(); }

inline std::string JsonOf(IBag& bag) {
    UniqueBstr text;
    if (FAILED(bag.ToJson(0, text.Put()))) return "none";
    return platform::ToUtf8({text.Get(), SysStringLen(text.Get())});
}

inline void Fill(IBag& bag, const WCHAR* json) {
    EXPECT_EQ(bag.FromJson(UniqueBstr(SysAllocString(json)).Get()), S_OK);
}

}  // namespace objects_test
