#include "platform/posix/name_pattern.h"

namespace platform {
namespace {

/// Goes back to the last `*` only, so the time is at most the product of the lengths.
bool Matches(WideView name, WideView pattern) noexcept {
    std::size_t n = 0;
    std::size_t p = 0;
    std::size_t star = WideView::npos;
    std::size_t resume = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            resume = n;
        } else if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == name[n])) {
            ++p;
            ++n;
        } else if (star != WideView::npos) {
            p = star + 1;
            n = ++resume;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == WideView::npos;
}

}  // namespace

bool MatchesPattern(WideView name, WideView pattern) noexcept {
    return pattern == TEXT("*.*") || Matches(name, pattern);
}

}  // namespace platform
