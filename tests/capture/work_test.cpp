// Counts the work of the rewriters. This program has its own copy of them, compiled to call the
// function below at each basic block: the count depends on the text alone, not on the machine.

#include <gtest/gtest.h>

#include "capture/markup_rewriter.h"
#include "foundation/memory_testing.h"
#include "platform/text.h"

namespace {

std::uint64_t blocksRun = 0;

}  // namespace

extern "C" void __sanitizer_cov_trace_pc() { ++blocksRun; }

namespace {

using platform::WideString;
using platform::WideView;

// Gives each address back, from one block of memory.
class SameAddress final : public MarkupUrlResolver, public StyleUrlResolver {
public:
    bool ResolveImage(AUX::WStringView url, AUX::WString& output) noexcept override {
        output.Clear();
        return output.Append(url);
    }
    bool ResolveLink(AUX::WStringView href, AUX::WStringView,
                     AUX::WString& output) noexcept override {
        return ResolveImage(href, output);
    }
    bool ResolveAnchor(AUX::WStringView url, AUX::WString& output) noexcept override {
        return ResolveImage(url, output);
    }
    bool ResolveStyleUrl(AUX::WStringView, AUX::WStringView url,
                         AUX::WString& output) noexcept override {
        return ResolveImage(url, output);
    }
};

struct Work {
    std::uint64_t blocks;
    std::uint64_t requests;  // For memory.
};

Work RewriteRepeated(WideView before, WideView piece, WideView after, int count) {
    WideString text(before);
    for (int i = 0; i < count; ++i) text += piece;
    text += after;
    SameAddress same;
    MarkupRewriter rewriter;
    const AUX::testing::AllocationWatch watch;
    const std::uint64_t start = blocksRun;
    EXPECT_TRUE(rewriter.Rewrite(TEXT("http://h/"), WideView(text), same, same));
    return {blocksRun - start, watch.Requests()};
}

TEST(Rewriting, TakesTimeInProportionToTheText) {
    const struct {
        const WCHAR* before;
        const WCHAR* piece;
        const WCHAR* after;
    } kHostile[] = {
        {TEXT(""), TEXT("<"), TEXT("")},
        {TEXT(""), TEXT("<"), TEXT(">")},
        {TEXT(""), TEXT(">"), TEXT("")},
        {TEXT(""), TEXT("<!--"), TEXT("")},
        {TEXT(""), TEXT("<!---->"), TEXT("")},
        {TEXT(""), TEXT("<script"), TEXT("")},
        {TEXT(""), TEXT("<script>"), TEXT("")},
        {TEXT("<script>"), TEXT("</scrip"), TEXT("</script>")},
        {TEXT(""), TEXT("<style>url("), TEXT("")},
        {TEXT(""), TEXT("<style>url(</style>"), TEXT("")},
        {TEXT("<style>"), TEXT("url(\""), TEXT("</style>")},
        {TEXT("<style>"), TEXT("url()"), TEXT("</style>")},
        {TEXT("<style>url("), TEXT("\\"), TEXT(")</style>")},
        {TEXT("<a href=\""), TEXT("&#"), TEXT("\">")},
        {TEXT("<a href=\"&#"), TEXT("1"), TEXT(";\">")},
        {TEXT("<a href=\""), TEXT("&#9;"), TEXT("\">")},
        {TEXT(""), TEXT("<a href='"), TEXT("")},
        {TEXT("<a "), TEXT("'\""), TEXT(">")},
        {TEXT("<a "), TEXT("hre"), TEXT(">")},
        {TEXT("<a "), TEXT("x=y "), TEXT("")},
        {TEXT(""), TEXT("<p style=''"), TEXT("")},
        {TEXT(""), TEXT("<p style='url(a)'>"), TEXT("")},
        {TEXT(""), TEXT("<b><i>"), TEXT("")},
        {TEXT(""), TEXT("<link type=a href='b'>"), TEXT("")},
    };
    constexpr int kCount = 3000;
    for (const auto& c : kHostile) {
        SCOPED_TRACE(platform::ToUtf8(WideString(c.before) + c.piece + c.after));
        const Work once = RewriteRepeated(c.before, c.piece, c.after, kCount);
        const Work twice = RewriteRepeated(c.before, c.piece, c.after, 2 * kCount);
        EXPECT_GT(once.blocks, 10u) << "nothing was counted";
        EXPECT_LE(static_cast<double>(twice.blocks), 2.3 * static_cast<double>(once.blocks));
        // Room is doubled where it grows, and nothing else is asked for piece by piece.
        EXPECT_LE(twice.requests, once.requests + 4);
    }
}

TEST(Rewriting, SetsItsOutputAsideOnce) {
    const WideView kPieces[] = {
        TEXT("<p>A page of several <a href='x.html'>links</a>, mostly text, though.</p>"),
        TEXT("<p style='background:url(picture.png)'>and styles</p><script>a<b</script>"),
        TEXT("<style>a { background: url(picture.png) } b { color: red }</style>"),
    };
    for (const WideView piece : kPieces) {
        SCOPED_TRACE(platform::ToUtf8(piece));
        // The base, the output and the address in hand: no request depends on the page's length.
        const Work small = RewriteRepeated({}, piece, {}, 10);
        EXPECT_EQ(RewriteRepeated({}, piece, {}, 10000).requests, small.requests);
        EXPECT_LE(small.requests, 5u);
    }
}

}  // namespace
