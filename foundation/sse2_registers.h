#pragma once

#include <cstdint>
#include <emmintrin.h>

/// The registers of 128 bits, for the loops of bit_words.h.
namespace {

struct Sse2Registers {
    using Value = __m128i;
    static Value Load(const std::uint64_t* from) noexcept {
        return _mm_loadu_si128(reinterpret_cast<const Value*>(from));
    }
    static void Store(std::uint64_t* to, Value value) noexcept {
        _mm_storeu_si128(reinterpret_cast<Value*>(to), value);
    }
    static Value And(Value to, Value from) noexcept { return _mm_and_si128(to, from); }
    static Value AndNot(Value to, Value from) noexcept { return _mm_andnot_si128(from, to); }
    static Value Or(Value to, Value from) noexcept { return _mm_or_si128(to, from); }
};

}  // namespace
