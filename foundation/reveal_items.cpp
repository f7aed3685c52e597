#include <cstddef>

#include "foundation/location_kind.h"
#include "foundation/open_location.h"
#include "foundation/paths.h"
#include "platform/com_ptr.h"
#include "platform/modules.h"
#include "platform/shell.h"

namespace AUX {
namespace {

using SelectItems = decltype(SHOpenFolderAndSelectItems);

constexpr WStringView kFtp = TEXT("ftp");

// Item lists of the shell, given back to its allocator.
class ItemLists {
public:
    ItemLists() = default;
    ItemLists(const ItemLists&) = delete;
    ItemLists& operator=(const ItemLists&) = delete;
    ~ItemLists() {
        platform::ComPtr<IMalloc> allocator;
        if (lists_.IsEmpty() || FAILED(SHGetMalloc(allocator.Put()))) return;
        for (const LPITEMIDLIST list : lists_) allocator->Free(list);
    }

    // \return what the shell says of the path, E_OUTOFMEMORY if there is no room for its list.
    HRESULT Add(const WCHAR* path) noexcept {
        if (!lists_.Grow(1)) return E_OUTOFMEMORY;
        LPITEMIDLIST list = nullptr;
        const HRESULT result = SHILCreateFromPath(path, &list, nullptr);
        return SUCCEEDED(result) && !lists_.Add(list) ? E_OUTOFMEMORY : result;
    }

    UINT Count() const noexcept { return lists_.Count(); }
    const LPITEMIDLIST* Data() const noexcept { return lists_.Data(); }

private:
    Array<LPITEMIDLIST> lists_;
};

WStringView Stripped(WStringView text) noexcept {
    constexpr WStringView kBlanks = TEXT("\t\n\r ");
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first == WStringView::npos
               ? WStringView()
               : text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

bool IsFtp(WStringView scheme) noexcept {
    if (scheme.size() != kFtp.size()) return false;
    for (std::size_t i = 0; i < kFtp.size(); ++i) {
        if ((scheme[i] | 0x20) != kFtp[i]) return false;
    }
    return true;
}

HRESULT FindFolder(const WCHAR* given, const Array<const WCHAR*>& names,
                   NamesAreRelative namesAreRelative, WString& folder) noexcept {
    if (!folder.Assign(Stripped(given))) return E_OUTOFMEMORY;
    if (!folder.IsEmpty()) return S_OK;
    if (names.IsEmpty() || namesAreRelative == NamesAreRelative::Yes) return E_INVALIDARG;
    return ParentFolderOf(names[0], folder) ? S_OK : E_INVALIDARG;
}

HRESULT Select(SelectItems* selectItems, const WString& folder, const Array<const WCHAR*>& names,
               NamesAreRelative namesAreRelative) noexcept {
    ItemLists folderList;
    ItemLists items;
    if (const HRESULT result = folderList.Add(folder.Text()); FAILED(result)) return result;
    for (const WCHAR* name : names) {
        if (!name || !*name) continue;
        WString whole;
        if (namesAreRelative == NamesAreRelative::Yes) {
            if (!CombinePath(name, folder.Text(), whole)) continue;
            name = whole.Text();
        }
        if (items.Add(name) == E_OUTOFMEMORY) return E_OUTOFMEMORY;
    }
    auto* lists = const_cast<LPCITEMIDLIST*>(items.Data());
    return selectItems(folderList.Data()[0], items.Count(), lists, 0);
}

}  // namespace

HRESULT RevealItems(const WCHAR* folder, const Array<const WCHAR*>& names,
                    NamesAreRelative namesAreRelative) noexcept {
    WString place;
    if (const HRESULT result = FindFolder(folder, names, namesAreRelative, place); result != S_OK) {
        return result;
    }
    WString scheme;
    if (HasFlag(ClassifyLocation(place.Text(), &scheme), LocationKind::HasScheme) &&
        !IsFtp(scheme)) {
        return OpenLocation(place.Text(), UseBrowser::No) ? S_OK : S_FALSE;
    }
    const platform::ModuleHandle shell(LoadLibraryW(TEXT("shell32.dll")));
    auto* selectItems =
        platform::ProcedureOf<SelectItems>(shell.Get(), "SHOpenFolderAndSelectItems");
    if (selectItems) return Select(selectItems, place, names, namesAreRelative);
    ShellExecuteW(nullptr, TEXT("explore"), place.Text(), nullptr, nullptr, SW_SHOWNORMAL);
    return S_OK;
}

}  // namespace AUX
