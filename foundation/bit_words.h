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

/// Four registers at a time, then word by word.
template <class Registers, class Step>
void CombineWords(Word* to, const Word* from, std::size_t count) noexcept {
    constexpr std::size_t kWords = sizeof(typename Registers::Value) / sizeof(Word);
    std::size_t i = 0;
    for (; i + 4 * kWords <= count; i += 4 * kWords) {
        for (std::size_t k = i; k < i + 4 * kWords; k += kWords) {
            const auto combined =
                Step::template Apply<Registers>(Registers::Load(to + k), Registers::Load(from + k));
            Registers::Store(to + k, combined);
        }
    }
    for (; i < count; ++i) to[i] = Step::Apply(to[i], from[i]);
}

}  // namespace
