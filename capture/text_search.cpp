#include "capture/text_search.h"

const WCHAR* FindText(const SearchText& sought, const WCHAR* from, const WCHAR* end) noexcept {
    const std::size_t size = sought.text.size();
    if (static_cast<std::size_t>(end - from) < size) return nullptr;
    const SearchKernels& kernels = FastestKernels();
    const WCHAR* const lastSign = end - (size - sought.signAt);
    for (const WCHAR* at = from + sought.signAt;; ++at) {
        at = kernels.findSign(at, lastSign + 1, sought.sign);
        if (at > lastSign) return nullptr;
        if (StartsIgnoringCase(at - sought.signAt, end, sought.text)) return at - sought.signAt;
    }
}
