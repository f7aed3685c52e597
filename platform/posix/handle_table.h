#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace platform {

/// Objects under handles. A handle is a place in the table plus a count of the place's uses, so
/// that one that is kept too long is told from that of the next object. Not thread-safe.
template <class Object>
class HandleTable {
public:
    /// Takes an object; gives its handle, which is never a small number.
    std::uintptr_t Add(std::unique_ptr<Object> object) {
        std::size_t place = kFirstPlace;
        while (place < places_.size() && (places_[place].object || places_[place].uses == kMost)) {
            ++place;
        }
        if (place == places_.size()) places_.emplace_back();
        places_[place].object = std::move(object);
        return ++places_[place].uses << kPlaceBits | place;
    }

    /// Null if the handle is no object's, or no longer.
    [[nodiscard]] Object* Find(std::uintptr_t handle) const noexcept {
        const std::size_t place = handle & kPlaceMask;
        const bool isKnown = place < places_.size() && places_[place].uses == handle >> kPlaceBits;
        return isKnown ? places_[place].object.get() : nullptr;
    }

    bool Remove(std::uintptr_t handle) noexcept {
        if (!Find(handle)) return false;
        const std::unique_ptr<Object> last = std::move(places_[handle & kPlaceMask].object);
        return true;
    }

    /// The handles of those objects that pass a test.
    template <class Test>
    [[nodiscard]] std::vector<std::uintptr_t> HandlesOf(Test test) const {
        std::vector<std::uintptr_t> handles;
        for (std::size_t i = 0; i < places_.size(); ++i) {
            const Place& place = places_[i];
            if (place.object && test(*place.object)) {
                handles.push_back(place.uses << kPlaceBits | i);
            }
        }
        return handles;
    }

    [[nodiscard]] std::size_t Count() const noexcept {
        std::size_t count = 0;
        for (const Place& place : places_) count += place.object != nullptr;
        return count;
    }

private:
    static constexpr std::size_t kPlaceBits = 16;
    static constexpr std::size_t kPlaceMask = (std::size_t{1} << kPlaceBits) - 1;
    static constexpr std::size_t kFirstPlace = 16;
    static constexpr std::size_t kMost = 0x7FFF;

    struct Place {
        std::unique_ptr<Object> object;
        std::size_t uses = 0;
    };
    std::vector<Place> places_{kFirstPlace};
};

}  // namespace platform
