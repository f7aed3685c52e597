#pragma once

#include <cstdint>

#include "cab/key_table.h"

namespace AUX::CAB {

/// Remembers where the keys of one sorted table were found, so that the next search need not go
/// down the table again. What it remembers is looked at before it is believed: it may be stale, and
/// nobody has to tell it of changes. Small tables do without, and so does one that memory does not
/// suffice for. Not thread-safe.
class KeyHints {
public:
    KeyHints() noexcept = default;
    ~KeyHints() { Free(places_); }
    KeyHints(const KeyHints&) = delete;
    KeyHints& operator=(const KeyHints&) = delete;

    /// As FindKey.
    template <class Value>
    [[nodiscard]] std::int32_t Find(const Array<KeyEntry<Value>>& table, WStringView key) noexcept {
        static_assert(sizeof(KeyEntry<Value>) == 24, "all tables share one search");
        if (table.Count() < kLeast) return FindKey(table, key.data(), KeyBytes(key));
        return FindIn(table.Data(), table.Count(), key.data(), KeyBytes(key));
    }

private:
    /// Fewer keys are found as fast without.
    static constexpr std::uint32_t kLeast = 16;

    [[nodiscard]] std::int32_t FindIn(const void* entries, std::uint32_t count, const void* key,
                                      std::uint32_t keyBytes) noexcept;
    [[nodiscard]] bool MakeRoomFor(std::uint32_t count) noexcept;

    std::uint32_t* places_ = nullptr;  // pairs, chosen by a hash; the first of each was found last
    std::uint32_t size_ = 0;           // a power of two
};

}  // namespace AUX::CAB
