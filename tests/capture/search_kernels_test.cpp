#include "capture/search_kernels.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <vector>

#include "platform/text.h"

namespace {

using Text = std::vector<WCHAR>;

// Mostly what the searches look for, with some of what only looks like it.
Text MakeText(std::mt19937& random) {
    static const platform::WideString kPieces[] = {
        TEXT("<"),    TEXT(">"),        TEXT("<a "),     TEXT("<A>"),    TEXT("<im"),
        TEXT("<li"),  TEXT("<link "),   TEXT("<SCript"), TEXT("<!--"),   TEXT("<!-"),
        TEXT("-->"),  TEXT("yl"),       TEXT("sTYLe"),   TEXT("9,"),     TEXT("url("),
        TEXT("u"),    TEXT("("),        TEXT("&"),       TEXT("'"),      TEXT("\""),
        TEXT("<\x1"), TEXT("<s"),       TEXT("c"),       TEXT("\x7F"),   TEXT("\x80"),
        TEXT("\\"),   TEXT(")"),        TEXT("\x13C"),   TEXT("\x813E"), TEXT("\xFF3C"),
        TEXT("\x1F"), TEXT("<a\x8020"),
    };
    Text text;
    const std::size_t filling = 1 + random() % 40;
    for (std::size_t pieces = random() % 30; pieces > 0; --pieces) {
        text.insert(text.end(), random() % filling, TEXT('x'));
        const platform::WideString& piece = kPieces[random() % std::size(kPieces)];
        text.insert(text.end(), piece.begin(), piece.end());
    }
    text.shrink_to_fit();  // A look behind its end leaves the block.
    return text;
}

class KernelsTest : public testing::TestWithParam<const SearchKernels*> {};

TEST_P(KernelsTest, FindWhatThePlainOnesFind) {
    if (!CanRun(*GetParam())) GTEST_SKIP() << "not on this processor";
    const SearchKernels& kernels = *GetParam();
    constexpr SoughtSign kSigns[] = {{'(', 'u', -3}, {'<', 'p', 6}, {'>', '-', -2}};
    std::mt19937 random(11);
    std::size_t places = 0;
    for (int run = 0; run < 4000; ++run) {
        const Text text = MakeText(random);
        const WCHAR* const end = text.data() + text.size();
        for (const WCHAR* from = text.data(); from;) {
            SCOPED_TRACE(testing::Message() << "run " << run << " from " << from - text.data());
            const TagPlace tag = kPlainKernels.findTag(from, end);
            const TagPlace found = kernels.findTag(from, end);
            ASSERT_EQ(found.open, tag.open);
            ASSERT_EQ(found.close, tag.close);
            ASSERT_EQ(kernels.findSpecial(from, end), kPlainKernels.findSpecial(from, end));
            ASSERT_EQ(kernels.findUnit(from, end, '('), kPlainKernels.findUnit(from, end, '('));
            ASSERT_EQ(kernels.findValueEnd(from, end), kPlainKernels.findValueEnd(from, end));
            for (const SoughtSign& sign : kSigns) {
                if (end - from < std::abs(sign.distance)) continue;
                const WCHAR* const first = from - std::min<std::ptrdiff_t>(sign.distance, 0);
                const WCHAR* const last = end - std::max<std::ptrdiff_t>(sign.distance, 0);
                ASSERT_EQ(kernels.findSign(first, last, sign),
                          kPlainKernels.findSign(first, last, sign));
            }
            from = tag.open ? tag.open + 1 : nullptr;
            places += tag.open != nullptr;
        }
    }
    EXPECT_GT(places, 4000u);
}

INSTANTIATE_TEST_SUITE_P(Vectors, KernelsTest,
                         testing::Values(&kSse2Kernels, &kAvx2Kernels, &kAvx512Kernels));

}  // namespace
