#include <algorithm>

#include "capture/search_kernels.h"
#include "fuzz/rewriter_fuzz.h"

namespace {

using namespace rewriter_fuzz;

void RequireSamePlaces(const SearchKernels& kernels, const std::vector<WCHAR>& text) {
    const WCHAR* const end = text.data() + text.size();
    for (const WCHAR* from = text.data(); from;) {
        const TagPlace plain = kPlainKernels.findTag(from, end);
        const TagPlace found = kernels.findTag(from, end);
        Require(found.open == plain.open && found.close == plain.close);
        from = !plain.open ? nullptr : plain.close ? plain.close + 1 : plain.open + 1;
    }
}

bool HasScript(std::vector<WCHAR> text) {
    for (WCHAR& unit : text) unit = unit < 128 ? static_cast<WCHAR>(unit | 0x20) : unit;
    const platform::WideView name(TEXT("<script"));
    return std::search(text.begin(), text.end(), name.begin(), name.end()) != text.end();
}

}  // namespace

/// Any text can be rewritten; what is not taken out or replaced stays as it is, and the vector
/// searches find the tags that the plain one finds.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<WCHAR> text = MakeText(data, size);
    for (const SearchKernels* kernels : {&kSse2Kernels, &kAvx2Kernels, &kAvx512Kernels}) {
        if (CanRun(*kernels)) RequireSamePlaces(*kernels, text);
    }
    Marker marker;
    MarkupRewriter rewriter;
    Require(rewriter.Rewrite(TEXT("http://h/"), View(text), marker, marker));
    if (!HasScript(text)) {
        RequireOnlyMarksAreNew(View(text), rewriter.Splicer.Output, marker.count);
    }
    return 0;
}
