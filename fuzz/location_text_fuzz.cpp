// What tells locations apart, escapes them and looks for them, on any text.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "foundation/location_kind.h"
#include "foundation/paths.h"
#include "foundation/urls.h"
#include "fuzz/exact_text.h"

using namespace AUX;

namespace {

void Require(bool holds) {
    if (!holds) std::abort();
}

void CheckKind(const WCHAR* text) {
    WString scheme;
    WString path;
    const LocationKind kind = ClassifyLocation(text, &scheme);
    Require(HasFlag(kind, LocationKind::HasScheme) != scheme.IsEmpty());
    Require(scheme.Length() <= 16);
    Require(kind == ClassifyLocation(text));
    const bool isLocal = LocalPathFromText(text, &path);
    Require(isLocal == HasFlag(kind, LocationKind::LocalPath) && isLocal != path.IsEmpty());
    if (isLocal) {  // What came out as a path goes in as one.
        WString again;
        Require(LocalPathFromText(path.Text(), &again) && again == path);
    }
}

void CheckEscape(const WCHAR* text, std::uint32_t flags) {
    WString escaped;
    if (!EscapeUrl(text, escaped, flags)) {
        Require(escaped == WStringView(text));
        return;
    }
    if (flags & kEscapeBrowserMode) return;
    for (const WCHAR unit : WStringView(escaped)) {
        Require(unit != TEXT(' '));
        if (flags & kEscapeSpacesOnly) continue;
        Require(unit > 0x20 && unit < 0x7F &&
                WStringView(TEXT("\"#$&+,;<=>?@[\\]^`{|}")).find(unit) == WStringView::npos);
    }
    WString twice;  // Nothing is left to escape, but for '%'.
    if (flags & kEscapePercent) return;
    Require(!EscapeUrl(escaped.Text(), twice, flags) || twice == escaped);
}

void CheckOnDisk(const WCHAR* text) {
    WIN32_FIND_DATAW found;
    const bool exists = PathExists(text, &found);
    Require(exists == (found.dwFileAttributes != 0));
    Require(exists == PathExists(text));
    if (WStringView(text).find_first_of(TEXT("\"*<>|")) != WStringView::npos) Require(!exists);
    WString folder;
    if (ParentFolderOf(text, folder)) Require(WStringView(text).starts_with(folder));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::unique_ptr<WCHAR[]> text = fuzz::ExactText(data, size);
    CheckKind(text.get());
    for (std::uint32_t flags = 0; flags < 8; ++flags) CheckEscape(text.get(), flags);
    CheckOnDisk(text.get());
    return 0;
}
