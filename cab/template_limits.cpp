#include <algorithm>

#include "cab/template_reader.h"

namespace AUX::CAB {
namespace {

/// Counts the items that a dictionary is built with. A set that refers to itself from within is cut
/// off by the depth; the same entries are counted once.
class ItemCounter {
public:
    static constexpr std::uint64_t kTooMany = TemplateReader::kMaxItems + 1;

    /// \return kTooMany at most.
    [[nodiscard]] std::uint64_t Count(const ItemSpec* entries, std::int64_t count) {
        if (!entries || count <= 0) return 0;
        const Place place{entries, count};
        if (const auto found = known_.find(place); found != known_.end()) return found->second;
        if (depth_ == TemplateReader::kMaxDepth) return kTooMany;
        ++depth_;
        std::uint64_t sum = 0;
        for (std::int64_t i = 0; i < count && sum < kTooMany; ++i) {
            const ItemSpec& entry = entries[i];
            const bool isInclude = (entry.flags & SpecInclude) != 0;
            ++sum;  // An empty set that is included takes its time as well.
            // What a loose one or an array gets is built when it is added.
            const bool isBuilt = entry.kind == Kind::Dictionary && !entry.IsLoose();
            if (isInclude || isBuilt) sum += Count(entry.entries, entry.count);
        }
        --depth_;
        sum = std::min(sum, kTooMany);
        // Too much may be only too deep, from here.
        if (sum < kTooMany) known_.emplace(place, sum);
        return sum;
    }

private:
    using Place = std::pair<const ItemSpec*, std::int64_t>;

    std::map<Place, std::uint64_t, std::less<>,
             LibraryAllocator<std::pair<const Place, std::uint64_t>>>
        known_;
    int depth_ = 0;
};

}  // namespace

bool CanBeBuilt(const CompiledTemplate& compiled) {
    ItemCounter counter;
    const auto fits = [&](const SpecSet& set) {
        return counter.Count(set.entries.data(), set.Count()) < ItemCounter::kTooMany;
    };
    return std::all_of(compiled.sets.begin(), compiled.sets.end(),
                       [&](const auto& row) { return fits(row.second); }) &&
           std::all_of(compiled.anonymousSets.begin(), compiled.anonymousSets.end(), fits);
}

}  // namespace AUX::CAB
