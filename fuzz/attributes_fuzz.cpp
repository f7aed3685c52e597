#include <algorithm>

#include "capture/attributes.h"
#include "fuzz/rewriter_fuzz.h"

/// What is found is a stretch of the text between two equal quotes that holds none of them, is
/// found again in the text cut behind it, and is what a replacement takes out.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace rewriter_fuzz;
    const std::vector<WCHAR> text = MakeText(data, size);
    const WCHAR* const end = text.data() + text.size();
    for (const AUX::WStringView name : {TEXT("src"), TEXT("href"), TEXT("style")}) {
        const auto value = FindAttribute(text.data(), end, name.data(), name.size());
        if (!value) continue;
        const WCHAR* const last = value->data() + value->size();
        Require(value->data() > text.data() + name.size() && last < end);
        const WCHAR quote = *last;
        Require((quote == '"' || quote == '\'') && value->data()[-1] == quote);
        Require(std::find(value->data(), last, quote) == last);
        const auto again = FindAttribute(text.data(), last + 1, name.data(), name.size());
        Require(again && again->data() == value->data() && again->size() == value->size());
        TextSplicer splicer;
        splicer.Init(text.data(), end - 1);
        ReplaceQuotedValue(splicer, value->data(), value->size(), Marker::kMark);
        splicer.CopyUpTo(end);
        RequireOnlyMarksAreNew(View(text), splicer.Output, 1);
    }
    return 0;
}
