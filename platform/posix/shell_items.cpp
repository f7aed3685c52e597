#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <sys/stat.h>

#include "platform/posix/desktop.h"
#include "platform/posix/faults.h"
#include "platform/posix/paths.h"
#include "platform/posix/shell_recorder.h"
#include "platform/shell.h"

namespace platform {
namespace {

constexpr HRESULT ResultOf(DWORD error) noexcept {
    return error ? static_cast<HRESULT>(0x80070000 | (error & 0xFFFF)) : S_OK;
}

/// One for all, so it counts no references.
struct ShellMalloc final : IMalloc {
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        if (!object) return E_POINTER;
        const bool isKnown = id == InterfaceId<IUnknown>() || id == InterfaceId<IMalloc>();
        *object = isKnown ? this : nullptr;
        return isKnown ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    void STDMETHODCALLTYPE Free(void* block) override { std::free(block); }
};

/// The path that an item list holds, behind its size.
WideString PathOf(LPCITEMIDLIST list) {
    const std::size_t bytes = list->mkid.cb - offsetof(SHITEMID, abID);
    WideString path(bytes / sizeof(WCHAR), 0);
    std::memcpy(path.data(), list->mkid.abID, bytes);
    return path;
}

}  // namespace
}  // namespace platform

HRESULT SHGetMalloc(IMalloc** allocator) noexcept {
    static constinit platform::ShellMalloc shared;
    if (!allocator) return E_INVALIDARG;
    *allocator = platform::InjectFault("SHGetMalloc") ? nullptr : &shared;
    return *allocator ? S_OK : E_FAIL;
}

HRESULT SHILCreateFromPath(LPCWSTR path, LPITEMIDLIST* list, DWORD*) noexcept {
    using namespace platform;
    if (!path || !list) return E_INVALIDARG;
    *list = nullptr;
    if (InjectFault("SHILCreateFromPath")) return ResultOf(GetLastError());
    std::string host;
    struct stat status {};
    if (const DWORD error = ToHostPath(path, host)) return ResultOf(error);
    if (stat(host.c_str(), &status) != 0) return ResultOf(PathError(errno, host));
    const std::size_t bytes = WideView(path).size() * sizeof(WCHAR);
    const std::size_t size = offsetof(SHITEMID, abID) + bytes;
    if (size > std::numeric_limits<USHORT>::max()) return ResultOf(ERROR_FILENAME_EXCED_RANGE);
    // A list ends with an item of size 0.
    auto* made = static_cast<LPITEMIDLIST>(std::calloc(1, size + sizeof(ITEMIDLIST)));
    if (!made) return E_OUTOFMEMORY;
    made->mkid.cb = static_cast<USHORT>(size);
    std::memcpy(made->mkid.abID, path, bytes);
    *list = made;
    return S_OK;
}

HRESULT SHOpenFolderAndSelectItems(LPCITEMIDLIST folder, UINT count, LPCITEMIDLIST* items,
                                   DWORD) noexcept {
    using namespace platform;
    if (!folder || (count > 0 && !items)) return E_INVALIDARG;
    if (InjectFault("SHOpenFolderAndSelectItems")) return ResultOf(GetLastError());
    ShellRequest request{"SHOpenFolderAndSelectItems", {}, PathOf(folder), {}, 0, {}, nullptr};
    for (UINT i = 0; i < count; ++i) request.items.push_back(PathOf(items[i]));
    std::string host;
    if (const DWORD error = ToHostPath(request.file.c_str(), host)) return ResultOf(error);
    if (const std::optional<DWORD> answer = AnswerOfRecorder(request)) return ResultOf(*answer);
    return ResultOf(OpenOnDesktop(host));
}
