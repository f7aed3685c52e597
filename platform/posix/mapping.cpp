#include <map>
#include <mutex>
#include <new>
#include <sys/mman.h>
#include <unistd.h>

#include "platform/memory.h"
#include "platform/posix/faults.h"
#include "platform/posix/kernel_object.h"
#include "platform/posix/last_error.h"
#include "platform/posix/named_file.h"

namespace platform {
namespace {

/// What a handle of a mapping stands for. The name ends with the last handle, as on Windows; the
/// bytes stay as long as they are mapped, which the host's mapping sees to.
class MappingObject final : public KernelObject {
public:
    static constexpr KernelObjectKind kKind = KernelObjectKind::Mapping;

    explicit MappingObject(bool writable) noexcept : KernelObject(kKind), isWritable(writable) {}

    NamedFile file;
    const bool isWritable;
};

std::mutex viewsLock;

/// The sizes of the views, by address.
std::map<const void*, SIZE_T>& Views() {
    // Never destroyed: views may be given back while the process ends.
    static auto& views = *new std::map<const void*, SIZE_T>;
    return views;
}

std::uint64_t RoundToPages(std::uint64_t size) {
    const auto page = static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    return (size + page - 1) / page * page;
}

HANDLE FailHandle(DWORD error) {
    SetLastError(error);
    return nullptr;
}

}  // namespace
}  // namespace platform

using platform::FailHandle;
using platform::MappingObject;
using platform::ObjectRef;

HANDLE CreateFileMappingW(HANDLE file, const SECURITY_ATTRIBUTES*, DWORD protection, DWORD sizeHigh,
                          DWORD sizeLow, LPCWSTR name) noexcept {
    if (platform::InjectFault("CreateFileMappingW")) return nullptr;
    const std::uint64_t size = std::uint64_t{sizeHigh} << 32 | sizeLow;
    if (file != INVALID_HANDLE_VALUE || protection != PAGE_READWRITE || size == 0 || !name ||
        !*name) {
        return FailHandle(ERROR_INVALID_PARAMETER);
    }
    if (size > INT64_MAX) return FailHandle(ERROR_COMMITMENT_LIMIT);
    std::string fileName;
    if (const DWORD error = platform::NamedFileName(name, fileName)) return FailHandle(error);
    ObjectRef<MappingObject> mapping(new (std::nothrow) MappingObject(true));
    if (!mapping) return FailHandle(ERROR_NOT_ENOUGH_MEMORY);
    bool existed = false;
    if (const DWORD error = mapping->file.Create(fileName, platform::RoundToPages(size), existed)) {
        return FailHandle(error);
    }
    const HANDLE handle = platform::OpenHandle(std::move(mapping));
    if (handle) SetLastError(existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return handle;
}

HANDLE OpenFileMappingW(DWORD access, BOOL, LPCWSTR name) noexcept {
    if (platform::InjectFault("OpenFileMappingW")) return nullptr;
    if (!name || (access != FILE_MAP_READ && !(access & FILE_MAP_WRITE))) {
        return FailHandle(ERROR_INVALID_PARAMETER);
    }
    std::string fileName;
    if (const DWORD error = platform::NamedFileName(name, fileName)) return FailHandle(error);
    ObjectRef<MappingObject> mapping(new (std::nothrow)
                                         MappingObject((access & FILE_MAP_WRITE) != 0));
    if (!mapping) return FailHandle(ERROR_NOT_ENOUGH_MEMORY);
    if (const DWORD error = mapping->file.Open(fileName)) return FailHandle(error);
    return platform::OpenHandle(std::move(mapping));
}

LPVOID MapViewOfFile(HANDLE handle, DWORD access, DWORD offsetHigh, DWORD offsetLow,
                     SIZE_T size) noexcept {
    if (platform::InjectFault("MapViewOfFile")) return nullptr;
    const ObjectRef<MappingObject> mapping = platform::FindObject<MappingObject>(handle);
    if (!mapping) return nullptr;
    const bool isWriting = (access & FILE_MAP_WRITE) != 0;
    if (offsetHigh || offsetLow || !(access & (FILE_MAP_READ | FILE_MAP_WRITE))) {
        return FailHandle(ERROR_INVALID_PARAMETER);
    }
    if (size == 0) size = mapping->file.Size();
    if (size > mapping->file.Size() || (isWriting && !mapping->isWritable)) {
        return FailHandle(ERROR_ACCESS_DENIED);
    }
    void* const view = mmap(nullptr, size, isWriting ? PROT_READ | PROT_WRITE : PROT_READ,
                            MAP_SHARED, mapping->file.Descriptor(), 0);
    if (view == MAP_FAILED) {
        platform::FailErrno();
        return nullptr;
    }
    const std::lock_guard guard(platform::viewsLock);
    platform::Views().emplace(view, size);
    return view;
}

BOOL UnmapViewOfFile(LPCVOID view) noexcept {
    const std::lock_guard guard(platform::viewsLock);
    const auto found = platform::Views().find(view);
    if (found == platform::Views().end()) return platform::Fail(ERROR_INVALID_ADDRESS);
    munmap(const_cast<void*>(view), found->second);
    platform::Views().erase(found);
    return TRUE;
}
