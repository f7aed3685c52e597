#include "platform/posix/name_pattern.h"

namespace platform {
namespace {

bool OnlyHolds(WideView text, WideView allowed) noexcept {
    return text.find_first_not_of(allowed) == WideView::npos;
}

/// The plain rules: `*` any text, `?` one unit or nothing at the end of the name. Goes back to the
/// last
/// `*` only, so the time is at most the product of the lengths.
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
    return OnlyHolds(pattern.substr(p), TEXT("*?"));
}

}  // namespace

bool MatchesPattern(WideView name, WideView pattern) noexcept {
    if (pattern == TEXT("*.*")) return true;
    if (pattern.size() > 1 && pattern.back() == '.') {
        const WideView stem = pattern.substr(0, pattern.size() - 1);
        return name.find('.') == WideView::npos && Matches(name, stem);
    }
    return Matches(name, pattern);
}

}  // namespace platform
