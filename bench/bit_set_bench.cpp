// Bit sets beside the containers of CRoaring for 65536 bits, a plain loop over the instruction that
// counts, and copying or reading the same bytes. A table at the end gives the times by the peer's.

#include <algorithm>
#include <cstring>
#include <immintrin.h>
#include <string>
#include <vector>

#include "bench/ratio_table.h"
#include "foundation/bit_set.h"

extern "C" {
#include <roaring/containers/bitset.h>
}

namespace {

using bench::RatioTable;
using Words = std::vector<std::uint64_t>;

constexpr std::uint32_t kContainerBits = 65536;
constexpr std::uint32_t kLargeBits = 1u << 31;  // 256 MiB, beyond the caches' good part

/// Every bit set with a chance of `eighths` in 8.
void Fill(AUX::BitSet& set, std::uint32_t bits, unsigned eighths) {
    if (!set.Create(bits)) std::abort();
    std::uint64_t random = 69;
    for (std::uint32_t i = 0; i < bits; ++i) {
        random = random * 6364136223846793005u + 1442695040888963407u;
        set.SetBit(i, random >> 61 < eighths);
    }
}

[[gnu::target("popcnt")]] std::uint64_t CountPlainly(const std::uint64_t* words,
                                                     std::size_t count) {
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < count; ++i) {
        sum += static_cast<std::uint64_t>(_mm_popcnt_u64(words[i]));
    }
    return sum;
}

template <std::uint32_t bits>
void CountSet(benchmark::State& state) {
    AUX::BitSet set;
    if (!set.Create(bits)) return state.SkipWithError("no memory");
    set.FillRange(true, 0, bits);
    for (auto _ : state) benchmark::DoNotOptimize(set.CountRange(0, bits - 1));
}
template <std::uint32_t bits>
void CountLoop(benchmark::State& state) {
    const Words words(bits / 64, ~std::uint64_t{0});
    for (auto _ : state) benchmark::DoNotOptimize(CountPlainly(words.data(), words.size()));
}
/// As fast as the machine reads: the sum of all words, in registers of 512 bits.
[[gnu::target("avx512f")]] std::uint64_t ReadAll(const std::uint64_t* words, std::size_t count) {
    __m512i a = _mm512_setzero_si512();
    __m512i b = a;
    for (std::size_t i = 0; i < count; i += 16) {
        a = _mm512_xor_si512(a, _mm512_loadu_si512(words + i));
        b = _mm512_xor_si512(b, _mm512_loadu_si512(words + i + 8));
    }
    alignas(64) std::uint64_t parts[8];
    _mm512_store_si512(parts, _mm512_xor_si512(a, b));
    return parts[0] ^ parts[7];
}
void ReadLarge(benchmark::State& state) {
    const Words words(kLargeBits / 64, ~std::uint64_t{0});
    for (auto _ : state) benchmark::DoNotOptimize(ReadAll(words.data(), words.size()));
}

struct Container {
    Container() : bits(bitset_container_create()) {}
    ~Container() { bitset_container_free(bits); }
    Container(const Container&) = delete;
    Container& operator=(const Container&) = delete;
    bitset_container_t* bits;
};

void CountContainer(benchmark::State& state) {
    const Container container;
    bitset_container_add_from_range(container.bits, 0, kContainerBits, 1);
    for (auto _ : state) {
        benchmark::DoNotOptimize(bitset_container_compute_cardinality(container.bits));
    }
}

enum class Combination { And, AndNot, Or };

template <Combination combination, std::uint32_t bits>
void CombineSets(benchmark::State& state) {
    AUX::BitSet to;
    AUX::BitSet from;
    if (!to.Create(bits) || !from.Create(bits)) return state.SkipWithError("no memory");
    from.FillRange(true, 0, bits);
    for (auto _ : state) {
        if constexpr (combination == Combination::And) to.And(from);
        if constexpr (combination == Combination::AndNot) to.AndNot(from);
        if constexpr (combination == Combination::Or) (void)to.Or(from);
        benchmark::ClobberMemory();
    }
}
void AndContainers(benchmark::State& state) {
    const Container to;
    const Container from;
    for (auto _ : state) {
        bitset_container_and_nocard(to.bits, from.bits, to.bits);
        benchmark::ClobberMemory();
    }
}
/// Moves two bytes for each byte of a set, where combining moves three.
template <std::uint32_t bits>
void CopyWords(benchmark::State& state) {
    const Words from(bits / 64, 1);
    Words to(bits / 64, 2);
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), bits / 8);
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
    }
}

template <unsigned eighths>
void WalkSet(benchmark::State& state) {
    AUX::BitSet set;
    Fill(set, kContainerBits, eighths);
    for (auto _ : state) {
        std::uint64_t sum = 0;
        for (std::int64_t i = set.NextSet(-1); i >= 0; i = set.NextSet(i)) {
            sum += static_cast<std::uint64_t>(i);
        }
        benchmark::DoNotOptimize(sum);
    }
}
template <unsigned eighths>
void WalkContainer(benchmark::State& state) {
    AUX::BitSet set;
    Fill(set, kContainerBits, eighths);
    const Container container;
    for (std::int64_t i = set.NextSet(-1); i >= 0; i = set.NextSet(i)) {
        bitset_container_set(container.bits, static_cast<std::uint16_t>(i));
    }
    for (auto _ : state) {
        std::uint64_t sum = 0;
        (void)bitset_container_iterate(
            container.bits, 0,
            [](std::uint32_t i, void* to) {
                *static_cast<std::uint64_t*>(to) += i;
                return true;
            },
            &sum);
        benchmark::DoNotOptimize(sum);
    }
}

struct Comparison {
    const char* workload;
    void (*own)(benchmark::State&);
    const char* peer;
    void (*others)(benchmark::State&);
    double aim;
};
constexpr double kTraffic = 1.5 / 0.95;  // three bytes moved where the copy moves two
constexpr Comparison kComparisons[] = {
    {"count_8K", CountSet<kContainerBits>, "plain", CountLoop<kContainerBits>, 1 / 2.5},
    {"count_1M", CountSet<1u << 23>, "plain", CountLoop<1u << 23>, 1 / 2.5},
    {"count_roaring", CountSet<kContainerBits>, "roaring", CountContainer, 0},
    {"count_256M", CountSet<kLargeBits>, "read", ReadLarge, 1 / 0.9},
    {"and_8K", CombineSets<Combination::And, kContainerBits>, "memcpy", CopyWords<kContainerBits>,
     kTraffic},
    {"and_roaring", CombineSets<Combination::And, kContainerBits>, "roaring", AndContainers, 0},
    {"and_64M", CombineSets<Combination::And, 1u << 29>, "memcpy", CopyWords<1u << 29>, kTraffic},
    {"or_64M", CombineSets<Combination::Or, 1u << 29>, "memcpy", CopyWords<1u << 29>, kTraffic},
    {"andnot_64M", CombineSets<Combination::AndNot, 1u << 29>, "memcpy", CopyWords<1u << 29>,
     kTraffic},
    {"walk_all", WalkSet<8>, "roaring", WalkContainer<8>, 1 / 1.5},
    {"walk_7of8", WalkSet<7>, "roaring", WalkContainer<7>, 1 / 1.5},
    {"walk_half", WalkSet<4>, "roaring", WalkContainer<4>, 1 / 1.5},
    {"walk_1of8", WalkSet<1>, "roaring", WalkContainer<1>, 0},
};

}  // namespace

int main(int count, char** arguments) {
    for (const Comparison& row : kComparisons) {
        RatioTable::Add(row.workload, "library", row.own);
        RatioTable::Add(row.workload, row.peer, row.others);
    }
    RatioTable table;
    if (!table.RunAll(count, arguments)) return 2;
    RatioTable::PrintHead("time by peer's", {"library", "peer"});
    for (const Comparison& row : kComparisons) {
        table.PrintRow(row.workload, {"library", row.peer}, row.peer, row.aim);
    }
}
