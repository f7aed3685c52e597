#include "capture/search_kernels.h"

#include <algorithm>

#include "capture/characters.h"
#include "capture/tag_start.h"
#include "platform/processor.h"

namespace {

bool HasStyleLetters(const WCHAR* tag, const WCHAR* close) noexcept {
    for (; close - tag >= 2; ++tag) {
        if (IsLetter(tag[0], 'y') && IsLetter(tag[1], 'l')) return true;
    }
    return false;
}

TagPlace FindTag(const WCHAR* from, const WCHAR* end) noexcept {
    for (;;) {
        const WCHAR* const open = std::find(from, end, TEXT('<'));
        if (open == end) return {};
        const WCHAR* const tag = open + 1;
        if (IsComment(tag, end)) return {open, nullptr};
        const WCHAR* const close = std::find(tag, end, TEXT('>'));
        if (close == end) return {};
        if (IsKnownTag(tag, end) || HasStyleLetters(tag, close)) return {open, close};
        from = close + 1;
    }
}

const WCHAR* FindSign(const WCHAR* from, const WCHAR* end, const SoughtSign& sought) noexcept {
    while (from != end && !(*from == sought.sign && HasOther(from, sought))) ++from;
    return from;
}

const WCHAR* FindValueEnd(const WCHAR* from, const WCHAR* end) noexcept {
    return std::find_if(from, end, [](WCHAR unit) {
        return unit == TEXT(')') || unit == TEXT('\\') || IsQuote(unit);
    });
}

const WCHAR* FindUnit(const WCHAR* from, const WCHAR* end, WCHAR unit) noexcept {
    return std::find(from, end, unit);
}

const WCHAR* FindSpecial(const WCHAR* from, const WCHAR* end) noexcept {
    return std::find_if_not(from, end, [](WCHAR unit) { return IsPlainAscii(unit); });
}

}  // namespace

const SearchKernels kPlainKernels = {FindTag, FindSign, FindValueEnd, FindUnit, FindSpecial};

constinit std::atomic<const SearchKernels*> chosenKernels{nullptr};

bool CanRun(const SearchKernels& kernels) noexcept {
    if (&kernels == &kAvx512Kernels) return platform::HasAvx512Bytes();
    if (&kernels == &kAvx2Kernels) {
        return IsProcessorFeaturePresent(PF_AVX2_INSTRUCTIONS_AVAILABLE) != FALSE;
    }
    return true;
}

const SearchKernels& ChooseKernels() noexcept {
    const SearchKernels* kernels = &kSse2Kernels;
    if (CanRun(kAvx2Kernels)) kernels = &kAvx2Kernels;
    if (CanRun(kAvx512Kernels)) kernels = &kAvx512Kernels;
    chosenKernels.store(kernels, std::memory_order_relaxed);
    return *kernels;
}
