#pragma once

#include <bit>
#include <cstring>
#include <xmmintrin.h>

#include "capture/search_kernels.h"
#include "capture/tag_start.h"

/// The searches over blocks of 64 characters, for any kind of vector. Internal to the search: each
/// file that includes it compiles its own copy, for its own processor, and must share no inline
/// function with the rest of the program.
namespace {

// Bit n of a mask speaks of the block's character n.
using Mask = std::uint64_t;

constexpr std::ptrdiff_t kBlock = 64;

/// The characters of a block that the search for tags asks for.
struct TagMasks {
    Mask open;    ///< '<'
    Mask close;   ///< '>'
    Mask first;   ///< What may begin a known tag's name: one of "ails!", and some signs.
    Mask second;  ///< What may follow it: one of " mic-", and some signs.
    Mask y;       ///< In both cases, as the next one.
    Mask l;
};

// Has the processor fetch the text some blocks further on, where its own reading ahead ends with
// each page of memory. That may lie behind the text: then nothing happens.
void ReadAhead(const WCHAR* block) noexcept {
    constexpr std::uintptr_t kLine = 64;  // bytes
    const std::uintptr_t ahead = reinterpret_cast<std::uintptr_t>(block) + 32 * kLine;
    _mm_prefetch(reinterpret_cast<const char*>(ahead), _MM_HINT_T0);
    _mm_prefetch(reinterpret_cast<const char*>(ahead + kLine), _MM_HINT_T0);
}

// A short text with zeros behind it, so that a whole block can be read.
class PaddedBlock {
public:
    const WCHAR* Fill(const WCHAR* from, const WCHAR* end) noexcept {
        std::memset(units_, 0, sizeof units_);
        std::memcpy(units_, from, static_cast<std::size_t>(end - from) * sizeof(WCHAR));
        return units_;
    }

private:
    WCHAR units_[kBlock];
};

// The searches whose way is short as a rule. Vector reads the masks of sixteen characters, of which
// eight may stand apart: ReadValueEnd, ReadUnit and ReadSpecial.
template <class Vector>
class HalvesSearch {
public:
    static const WCHAR* FindValueEnd(const WCHAR* from, const WCHAR* end) noexcept {
        if (end - from < kHalf) return kPlainKernels.findValueEnd(from, end);
        return FindInHalves(from, end, Vector::ReadValueEnd);
    }

    static const WCHAR* FindUnit(const WCHAR* from, const WCHAR* end, WCHAR unit) noexcept {
        if (end - from < kHalf) return kPlainKernels.findUnit(from, end, unit);
        return FindInHalves(from, end, [unit](const WCHAR* first, const WCHAR* second) {
            return Vector::ReadUnit(first, second, unit);
        });
    }

    static const WCHAR* FindSpecial(const WCHAR* from, const WCHAR* end) noexcept {
        if (end - from < kHalf) return kPlainKernels.findSpecial(from, end);
        return FindInHalves(from, end, Vector::ReadSpecial);
    }

private:
    static constexpr std::ptrdiff_t kHalf = 8;

    // Reads eight characters and eight more at a time; there are eight at least.
    template <class Read>
    static const WCHAR* FindInHalves(const WCHAR* from, const WCHAR* end, Read read) noexcept {
        for (;; from += 2 * kHalf) {
            // The halves of the last step may overlap, and look at what has been looked at.
            const std::ptrdiff_t left = end - from;
            if (left < kHalf) from = end - kHalf;
            const WCHAR* const second = left < 2 * kHalf ? end - kHalf : from + kHalf;
            if (const unsigned mask = read(from, second)) {
                const int place = std::countr_zero(mask);
                return place < kHalf ? from + place : second + (place - kHalf);
            }
            if (left <= 2 * kHalf) return end;
        }
    }
};

// The other searches, and all of them. Vector reads the masks of a block: ReadTags and ReadSign.
// Near has the short ones.
template <class Vector, class Near>
class VectorSearch {
public:
    static TagPlace FindTag(const WCHAR* from, const WCHAR* end) noexcept {
        Mask inTag = 0;  // 1: the block begins within a tag.
        Mask openBefore = 0;
        TagMasks before = {};
        const WCHAR* lastOpen = nullptr;
        PaddedBlock rest;
        const WCHAR* next = from;
        for (const WCHAR* block = from; block != end; block = next) {
            next = end - block > kBlock ? block + kBlock : end;
            ReadAhead(block);
            const TagMasks masks =
                Vector::ReadTags(end - block >= kBlock ? block : rest.Fill(block, end));
            // The addition carries a bit from each '<' through all that follows to the next '>'. A
            // '<' that a carry passes over stands within a tag.
            const Mask others = ~masks.close;
            const Mask carried = others + inTag;
            const Mask sum = carried + masks.open;
            const Mask within = sum ^ others ^ masks.open;
            const Mask open = masks.open & ~within;
            const Mask name =
                masks.second & Behind(masks.first, before.first, 1) & Behind(open, openBefore, 2);
            const Mask style = masks.l & Behind(masks.y, before.y, 1) & within;
            for (Mask work = name | style; work; work &= work - 1) {
                const int place = std::countr_zero(work);
                const Mask opened = open & ((Mask{1} << place) - 1);
                const WCHAR* const tag =
                    opened ? block + (63 - std::countl_zero(opened)) : lastOpen;
                if (IsComment(tag + 1, end)) return {tag, nullptr};
                const bool isStyle = style & work & (~work + 1);
                if (isStyle || IsKnownTag(tag + 1, end)) {
                    const Mask close = masks.close & ~Mask{1} << place;
                    if (close) return {tag, block + std::countr_zero(close)};
                    return CloseBehind(tag, next, end);
                }
            }
            inTag = (carried < others) | (sum < carried);
            openBefore = open;
            before = masks;
            if (open) lastOpen = block + (63 - std::countl_zero(open));
        }
        return {};
    }

    // The sign should be rare, so that asking for the other character costs little.
    static const WCHAR* FindSign(const WCHAR* from, const WCHAR* end,
                                 const SoughtSign& sought) noexcept {
        for (; end - from >= kBlock; from += kBlock) {
            ReadAhead(from);
            for (Mask signs = Vector::ReadSign(from, sought.sign); signs; signs &= signs - 1) {
                const WCHAR* const place = from + std::countr_zero(signs);
                if (HasOther(place, sought)) return place;
            }
        }
        return kPlainKernels.findSign(from, end, sought);
    }

    static constexpr SearchKernels kKernels = {FindTag, FindSign, Near::FindValueEnd,
                                               Near::FindUnit, Near::FindSpecial};

private:
    // The places that lie a distance behind those of a mask, of which some are of the block before.
    static Mask Behind(Mask mask, Mask before, int distance) noexcept {
        return mask << distance | before >> (kBlock - distance);
    }

    static TagPlace CloseBehind(const WCHAR* open, const WCHAR* from, const WCHAR* end) noexcept {
        const WCHAR* const close = Near::FindUnit(from, end, '>');
        return close != end ? TagPlace{open, close} : TagPlace{};
    }
};

}  // namespace
