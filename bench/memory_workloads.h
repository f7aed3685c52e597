#pragma once

#include <atomic>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

/// What is measured, over any allocator of allocators.h. Sizes are bytes, spread evenly over those
/// that the library serves from its pages. One iteration is kSteps operations where not said
/// otherwise.
namespace bench {

inline constexpr std::uint32_t kSmallest = 8;
inline constexpr std::uint32_t kLargest = 1052;
inline constexpr int kSteps = 1000;

/// A quick sequence that is the same in every run (Marsaglia's xorshift of 64 bits).
class Random {
public:
    std::uint32_t Below(std::uint32_t limit) {
        state_ ^= state_ << 13;
        state_ ^= state_ >> 7;
        state_ ^= state_ << 17;
        return static_cast<std::uint32_t>((state_ >> 32) * limit >> 32);
    }
    std::uint32_t Size() { return kSmallest + Below(kLargest - kSmallest + 1); }

private:
    std::uint64_t state_ = 0x9E3779B97F4A7C15;
};

/// A block whose first byte has been written, as its user would.
template <class A>
void* Take(std::size_t size) {
    void* const block = A::Alloc(size);
    *static_cast<char*>(block) = 1;
    benchmark::DoNotOptimize(block);
    return block;
}

/// Live blocks of mixed sizes.
template <class A>
class Blocks {
public:
    explicit Blocks(std::size_t count) : blocks_(count), sizes_(count) {
        for (std::size_t i = 0; i < count; ++i) {
            sizes_[i] = random_.Size();
            blocks_[i] = Take<A>(sizes_[i]);
        }
    }
    ~Blocks() {
        for (void* block : blocks_) A::Free(block);
    }
    Blocks(const Blocks&) = delete;
    Blocks& operator=(const Blocks&) = delete;

    void Replace(int times) {
        for (int i = 0; i < times; ++i) {
            const std::uint32_t at = random_.Below(static_cast<std::uint32_t>(blocks_.size()));
            A::Free(blocks_[at]);
            sizes_[at] = random_.Size();
            blocks_[at] = Take<A>(sizes_[at]);
        }
    }
    [[nodiscard]] std::size_t LiveBytes() const {
        std::size_t bytes = 0;
        for (std::uint32_t size : sizes_) bytes += size;
        return bytes;
    }

private:
    Random random_;
    std::vector<void*> blocks_;
    std::vector<std::uint32_t> sizes_;
};

// One block over and over, while others of its size live or not: an allocator of pages gives a page
// back with its last block.
template <class A, bool isAlone>
void Pair(benchmark::State& state) {
    constexpr std::size_t kSize = 64;
    void* const other = isAlone ? nullptr : A::Alloc(kSize);
    for (auto _ : state) {
        for (int i = 0; i < kSteps; ++i) A::Free(Take<A>(kSize));
    }
    A::Free(other);
}

enum class Order { Lifo, Fifo };

template <class A, Order order>
void InOrder(benchmark::State& state) {
    std::vector<void*> blocks(kSteps);
    Random random;
    for (auto _ : state) {
        for (void*& block : blocks) block = Take<A>(random.Size());
        if constexpr (order == Order::Fifo) {
            for (void* block : blocks) A::Free(block);
        } else {
            for (auto at = blocks.rbegin(); at != blocks.rend(); ++at) A::Free(*at);
        }
    }
}

template <class A, std::size_t live>
void RandomMix(benchmark::State& state) {
    Blocks<A> blocks(live);
    blocks.Replace(static_cast<int>(live));
    for (auto _ : state) blocks.Replace(kSteps);
}

// Each thread replaces blocks of a set and swaps the set for another thread's, so that most frees
// are of another thread's blocks.
template <class A>
void Larson(benchmark::State& state) {
    constexpr std::size_t kLive = 1000;
    static std::atomic<Blocks<A>*> passed;
    if (state.thread_index() == 0) passed = new Blocks<A>(kLive);
    Blocks<A>* own = new Blocks<A>(kLive);
    for (auto _ : state) {
        own->Replace(kSteps);
        own = passed.exchange(own);
    }
    delete own;
    if (state.thread_index() == 0) delete passed.exchange(nullptr);
}

// One thread takes blocks and hands them over in bundles, the other gives them back.
template <class A>
void ProducerConsumer(benchmark::State& state) {
    constexpr unsigned kBundles = 16;
    struct Ring {
        void* bundles[kBundles][kSteps / 10];
        alignas(64) std::atomic<unsigned> filled{0};
        alignas(64) std::atomic<unsigned> emptied{0};
    };
    static Ring ring;
    Random random;
    for (auto _ : state) {
        for (int i = 0; i < 10; ++i) {
            if (state.thread_index() == 0) {
                const unsigned at = ring.filled.load(std::memory_order_relaxed);
                while (at - ring.emptied.load() == kBundles) std::this_thread::yield();
                for (void*& block : ring.bundles[at % kBundles]) {
                    block = Take<A>(random.Size());
                }
                ring.filled = at + 1;
            } else {
                const unsigned at = ring.emptied.load(std::memory_order_relaxed);
                while (ring.filled.load() == at) std::this_thread::yield();
                for (void* block : ring.bundles[at % kBundles]) A::Free(block);
                ring.emptied = at + 1;
            }
        }
    }
}

/// A set of texts that grow in turn by 16 bytes, to 2 KiB each; one iteration is one step of each.
template <class A, bool resizes>
void Grow(benchmark::State& state) {
    constexpr std::size_t kStep = 16;
    constexpr std::size_t kMost = 2048;
    std::vector<void*> texts(kSteps);
    std::size_t size = 0;
    for (auto _ : state) {
        size = size == kMost ? kStep : size + kStep;
        for (void*& text : texts) {
            if (size == kStep) {
                A::Free(text);
                text = nullptr;
            }
            text = resizes ? A::Resize(text, size) : A::Realloc(text, size);
            static_cast<char*>(text)[size - 1] = 1;
        }
    }
    for (void* text : texts) A::Free(text);
}

// A thread's whole life; half of its blocks outlive it. One iteration is one thread.
template <class A>
void ThreadChurn(benchmark::State& state) {
    std::vector<void*> blocks(100);
    for (auto _ : state) {
        std::thread([&blocks] {
            Random random;
            for (void*& block : blocks) block = Take<A>(random.Size());
            for (std::size_t i = 0; i < blocks.size(); i += 2) A::Free(blocks[i]);
        }).join();
        for (std::size_t i = 1; i < blocks.size(); i += 2) A::Free(blocks[i]);
    }
}

}  // namespace bench
