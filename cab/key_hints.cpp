#include "cab/key_hints.h"

#include <bit>
#include <cstring>

namespace AUX::CAB {
namespace {

/// So few keys share a pair that most stay remembered.
constexpr std::uint32_t kPlacesForKey = 4;
/// Above this a table is so large that its hints would not stay in the caches.
constexpr std::uint32_t kMostKeys = 1u << 26;

std::uint32_t HashOf(const void* key, std::uint32_t bytes) noexcept {
    constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15;
    const auto* at = static_cast<const unsigned char*>(key);
    std::uint64_t hash = bytes;
    const auto mix = [&](std::uint64_t part) {
        hash = (hash ^ part) * kFactor;
        hash ^= hash >> 32;
    };
    for (; bytes >= sizeof(std::uint64_t); bytes -= 8, at += 8) {
        std::uint64_t part = 0;
        std::memcpy(&part, at, sizeof part);
        mix(part);
    }
    if (bytes > 0) {
        std::uint64_t part = 0;
        std::memcpy(&part, at, bytes);
        mix(part);
    }
    return static_cast<std::uint32_t>(hash);
}

}  // namespace

bool KeyHints::MakeRoomFor(std::uint32_t count) noexcept {
    if (count > kMostKeys) return false;
    const std::uint32_t wanted = std::bit_ceil(count) * kPlacesForKey;
    if (size_ >= wanted) return true;
    auto* const places = static_cast<std::uint32_t*>(Alloc(wanted * sizeof(std::uint32_t)));
    if (!places) return size_ > 0;
    std::memset(places, 0, wanted * sizeof(std::uint32_t));
    Free(places_);
    places_ = places;
    size_ = wanted;
    return true;
}

std::int32_t KeyHints::FindIn(const void* entries, std::uint32_t count, const void* key,
                              std::uint32_t keyBytes) noexcept {
    const auto search = [&] { return key_table_detail::Find(entries, count, key, keyBytes, 0); };
    if (!MakeRoomFor(count)) return search();
    const auto* const rows = static_cast<const KeyEntry<void*>*>(entries);
    std::uint32_t* const pair = places_ + (HashOf(key, keyBytes) & (size_ - 2));
    for (int i = 0; i < 2; ++i) {
        const std::uint32_t place = pair[i];
        if (place < count && rows[place].keyBytes == keyBytes &&
            std::memcmp(rows[place].key, key, keyBytes) == 0) {
            return static_cast<std::int32_t>(place);
        }
    }
    const std::int32_t found = search();
    if (found >= 0) {
        pair[1] = pair[0];
        pair[0] = static_cast<std::uint32_t>(found);
    }
    return found;
}

}  // namespace AUX::CAB
