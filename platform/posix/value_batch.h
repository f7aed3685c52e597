#pragma once

#include <cstdint>
#include <vector>

#include "platform/text.h"

namespace platform {

/// Values of a key that were read in one go, side by side in one block.
class ValueBatch {
public:
    /// Views are valid until the batch changes.
    struct Row {
        WideView folded;  // the name, by which values are in order
        WideView name;
        DWORD type = 0;
        const BYTE* data = nullptr;
        DWORD size = 0;
    };

    [[nodiscard]] std::size_t Count() const { return entries_.size(); }
    /// Of all names and data.
    [[nodiscard]] std::size_t Bytes() const { return bytes_.size(); }

    void Clear() {
        constexpr std::size_t kMostKept = 1024 * 1024;
        if (bytes_.capacity() > kMostKept) bytes_ = {};
        bytes_.clear();
        entries_.clear();
    }

    /// Bytes as a database has them, not aligned to anything.
    struct Stored {
        const void* bytes;
        DWORD size;
    };
    void Add(Stored folded, Stored name, DWORD type, Stored data) {
        constexpr DWORD kWholeUnits = ~DWORD{1};
        folded.size &= kWholeUnits;
        name.size &= kWholeUnits;
        entries_.push_back({bytes_.size(), folded.size / sizeof(WCHAR), name.size / sizeof(WCHAR),
                            type, data.size});
        for (const Stored& part : {folded, name, data}) {
            const auto* const first = static_cast<const BYTE*>(part.bytes);
            if (part.size) bytes_.insert(bytes_.end(), first, first + part.size);
        }
        if (data.size % sizeof(WCHAR)) bytes_.push_back(0);  // The next name is aligned.
    }

    [[nodiscard]] Row At(std::size_t place) const {
        const Entry& entry = entries_[place];
        const auto* const names = reinterpret_cast<const WCHAR*>(bytes_.data() + entry.start);
        const WCHAR* const end = names + entry.foldedUnits + entry.nameUnits;
        return {{names, entry.foldedUnits},
                {names + entry.foldedUnits, entry.nameUnits},
                entry.type,
                reinterpret_cast<const BYTE*>(end),
                entry.size};
    }

private:
    struct Entry {
        std::size_t start;
        std::size_t foldedUnits;
        std::size_t nameUnits;
        DWORD type;
        DWORD size;
    };

    std::vector<BYTE> bytes_;
    std::vector<Entry> entries_;
};

}  // namespace platform
