#include "cab/bag_text.h"
#include "fuzz/units.h"
#include "platform/text.h"
#include "platform/unique_bstr.h"
#include "tests/cab/bag_support.h"

namespace {

using namespace bag_test;
using platform::WideString;

constexpr double kLimits[] = {0, 1000};

struct Limited {
    ValueSpec head;
    NumberRange ranges[2];
};
constexpr Limited kRange = {{nullptr, RangeList::Inclusive}, {{kLimits[0], kLimits[1]}, kRangeEnd}};

/// A declaration with each kind, below the keys "a" to "j".
const ItemSpec& Shape() {
    static const ItemSpec numbers[] = {Leaf(nullptr, Kind::Int, &kRange.head), {}};
    static const ItemSpec texts[] = {Leaf(nullptr, Kind::String), {}};
    static const ItemSpec inner[] = {
        Leaf(TEXT("a"), Kind::Double), Leaf(TEXT("b"), Kind::Bool), {}};
    static const ItemSpec set[] = {Leaf(TEXT("a"), Kind::Bool),
                                   Leaf(TEXT("b"), Kind::Int, &kRange.head),
                                   Leaf(TEXT("c"), Kind::Int64),
                                   Leaf(TEXT("d"), Kind::Double),
                                   Leaf(TEXT("e"), Kind::String),
                                   Leaf(TEXT("s"), Kind::Stream),
                                   Branch(TEXT("g"), Kind::Array, numbers, 1),
                                   Branch(TEXT("h"), Kind::Array, nullptr, 0),
                                   Branch(TEXT("i"), Kind::Dictionary, inner, 2),
                                   Branch(TEXT("j"), Kind::Dictionary, texts, 1, SpecLoose),
                                   {}};
    static const ItemSpec root = Branch(nullptr, Kind::Dictionary, set, 10);
    return root;
}

WideString Write(DataRoot& bag) {
    BSTR text = nullptr;
    fuzz::Require(ToJson(&bag, 0, &text) == S_OK);
    const platform::UniqueBstr owner(text);
    return text ? WideString(text, SysStringLen(text)) : WideString();
}

}  // namespace

/// Any text is taken into a bag or refused, twice over, and what the bag then holds goes into a
/// text and into another bag, and from there into the same text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<WCHAR> units = fuzz::MakeUnits(data, size);
    const WCHAR none = 0;
    const WStringView text(units.empty() ? &none : units.data(), units.size());
    for (const ItemSpec* const spec : {static_cast<const ItemSpec*>(nullptr), &Shape()}) {
        const Bag bag = MakeBag(spec);
        const HRESULT result = FromJson(bag.get(), text);
        fuzz::Require(result == S_OK || result == E_FAIL);
        fuzz::Require(FromJson(bag.get(), text) == result);
        const WideString written = Write(*bag);
        if (written.empty()) continue;  // It holds nothing but empty places.
        const Bag again = MakeBag(spec);
        fuzz::Require(FromJson(again.get(), WStringView(written)) == S_OK);
        const WideString settled = Write(*again);
        const Bag last = MakeBag(spec);
        fuzz::Require(FromJson(last.get(), WStringView(settled)) == S_OK);
        fuzz::Require(Write(*last) == settled);
    }
    return 0;
}
