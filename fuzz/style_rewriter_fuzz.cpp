#include "fuzz/rewriter_fuzz.h"

/// Any style text can be rewritten, and only addresses change.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace rewriter_fuzz;
    const std::vector<WCHAR> text = MakeText(data, size);
    Marker marker;
    StyleRewriter rewriter;
    Require(rewriter.Rewrite(TEXT("http://h/"), View(text), marker));
    RequireOnlyMarksAreNew(View(text), rewriter.Splicer.Output, marker.count);
    AUX::WString output;
    for (const auto place : {StylePlace::DoubleQuotedValue, StylePlace::SingleQuotedValue}) {
        output.Clear();
        marker.count = 0;
        Require(rewriter.RewriteInto(output, TEXT("http://h/"), View(text), place, marker));
        RequireOnlyMarksAreNew(View(text), output, marker.count);
        // A value that did not end its attribute still does not.
        const WCHAR quote = place == StylePlace::DoubleQuotedValue ? WCHAR{'"'} : WCHAR{'\''};
        const bool wasWhole = View(text).find(quote) == AUX::WStringView::npos;
        Require(!wasWhole || AUX::WStringView(output).find(quote) == AUX::WStringView::npos);
    }
    return 0;
}
