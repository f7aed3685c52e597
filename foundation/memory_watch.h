#pragma once

#include <atomic>
#include <cstdint>

/// What AllocationWatch sees. With no watch only `on` is read, a constant to every processor's
/// cache.
namespace AUX::memory {

struct Watch {
    std::atomic<bool> on{false};
    std::atomic<std::uint64_t> requests{0};
    std::atomic<std::uint64_t> failures{0};
    std::atomic<std::uint64_t> failFirst{0};
    std::atomic<std::uint64_t> failLast{0};
    std::atomic<std::int64_t> liveBlocks{0};

    [[nodiscard]] bool IsOn() const noexcept { return on.load(std::memory_order_relaxed); }

    /// Counts a request; whether it has to fail.
    [[nodiscard]] bool MustFail() noexcept {
        const std::uint64_t number = requests.fetch_add(1) + 1;
        if (number < failFirst || number > failLast) return false;
        failures.fetch_add(1);
        return true;
    }
};

extern constinit Watch watch;

}  // namespace AUX::memory
