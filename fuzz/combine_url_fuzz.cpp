// The layer's joining of addresses: a base and a relative address, on two lines.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "foundation/urls.h"
#include "fuzz/exact_text.h"
#include "platform/urls.h"

using namespace AUX;

namespace {

void Require(bool holds) {
    if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::uint8_t* const end = std::find(data, data + size, '\n');
    const auto baseSize = static_cast<std::size_t>(end - data);
    const std::size_t skipped = std::min(baseSize + 1, size);
    const std::unique_ptr<WCHAR[]> base = fuzz::ExactText(data, baseSize);
    const std::unique_ptr<WCHAR[]> relative = fuzz::ExactText(data + skipped, size - skipped);

    WString joined;
    if (!CombineUrl(base.get(), relative.get(), joined)) {
        Require(joined.IsEmpty());
        return 0;
    }
    DWORD length = joined.Length();  // one unit too few
    Require(UrlCombineW(base.get(), relative.get(), joined.Data(), &length, 0) == E_POINTER);
    Require(length == joined.Length() + 1);

    // An address with a host stands for itself, whatever the base. Joining drops its dot segments,
    // which those of a base keep; after that nothing changes.
    const WStringView text = joined;
    if (text.find(TEXT("://")) < text.find(TEXT('/'))) {
        WString once;
        WString twice;
        Require(CombineUrl(TEXT("res://other/a/b"), joined.Text(), once));
        Require(CombineUrl(TEXT("res://other/a/b"), once.Text(), twice));
        Require(once == twice);
    }

    DWORD pathLength = MAX_PATH;
    WCHAR path[MAX_PATH];
    if (UrlIsW(joined.Text(), URLIS_FILEURL) &&
        PathCreateFromUrlW(joined.Text(), path, &pathLength, 0) == S_OK) {
        Require(path[pathLength] == 0);
        WCHAR url[2084];
        DWORD urlLength = 2084;
        const HRESULT result = UrlCreateFromPathW(path, url, &urlLength, 0);
        Require(FAILED(result) || url[urlLength] == 0);
    }
    return 0;
}
