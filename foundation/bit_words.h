#pragma once

#include <cstddef>
#include <cstdint>

/// The word-wise loops, for registers of any width. Everything has internal linkage: each file that
/// includes this is compiled for its own processor, and shares no code with the others.
namespace {

using Word = std::uint64_t;

struct AndStep {
    static Word Apply(Word to, Word from) noexcept { return to & from; }
    template <class Registers>
    static auto Apply(typename Registers::Value to, typename Registers::Value from) noexcept {
        return Registers::And(to, from);
    }
};
struct AndNotStep {
    static Word Apply(Word to, Word from) noexcept { return to & ~from; }
    template <class Registers>
    static auto Apply(typename Registers::Value to, typename Registers::Value from) noexcept {
        return Registers::AndNot(to, from);
    }
};
struct OrStep {
    static Word Apply(Word to, Word from) noexcept { return to | from; }
    template <class Registers>
    static auto Apply(typename Registers::Value to, typename Registers::Value from) noexcept {
        return Registers::Or(to, from);
    }
};

/// The first and the last register, and those between them from where `to` is aligned: words that
/// two registers share are combined twice, which gives the same.
template <class Registers, class Step>
void CombineWords(Word* to, const Word* from, std::size_t count) noexcept {
    constexpr std::size_t kBytes = sizeof(typename Registers::Value);
    constexpr std::size_t kWords = kBytes / sizeof(Word);
    if (count < kWords) {
        for (std::size_t i = 0; i < count; ++i) to[i] = Step::Apply(to[i], from[i]);
        return;
    }
    const auto combine = [&](std::size_t i) noexcept {
        Registers::Store(to + i, Step::template Apply<Registers>(Registers::Load(to + i),
                                                                 Registers::Load(from + i)));
    };
    combine(0);
    std::size_t i = (kBytes - reinterpret_cast<std::uintptr_t>(to) % kBytes) / sizeof(Word);
    for (; i + 4 * kWords <= count; i += 4 * kWords) {
        for (std::size_t k = 0; k < 4; ++k) combine(i + k * kWords);
    }
    for (; i + kWords <= count; i += kWords) combine(i);
    combine(count - kWords);
}

}  // namespace
