#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

#include "platform/memory.h"
#include "platform/posix/faults.h"
#include "platform/posix/file_mapping.h"
#include "platform/posix/kernel_object.h"
#include "platform/posix/last_error.h"
#include "platform/posix/named_file.h"

namespace platform {
namespace {

/// Memory that has a name in this process only.
struct LocalMemory {
    LocalMemory() = default;
    LocalMemory(const LocalMemory&) = delete;
    LocalMemory& operator=(const LocalMemory&) = delete;
    ~LocalMemory() {
        if (descriptor >= 0) close(descriptor);
    }

    int descriptor = -1;
    std::uint64_t size = 0;
};

/// What a handle of a mapping stands for. The name ends with the last handle, as on Windows; the
/// bytes stay as long as they are mapped, which the host's mapping sees to.
class MappingObject final : public KernelObject {
public:
    static constexpr KernelObjectKind kKind = KernelObjectKind::Mapping;

    explicit MappingObject(bool writable) noexcept : KernelObject(kKind), isWritable(writable) {}

    [[nodiscard]] int Descriptor() const { return local ? local->descriptor : file.Descriptor(); }
    [[nodiscard]] std::uint64_t Size() const {
        return content ? content->Size() : local ? local->size : file.Size();
    }

    NamedFile file;
    std::shared_ptr<LocalMemory> local;    // if null, the file holds the bytes
    std::unique_ptr<FileMapping> content;  // of a file that is not the layer's own
    const bool isWritable;
};

std::mutex viewsLock;

struct View {
    SIZE_T size = 0;
    unsigned count = 0;              // windows that begin at the same place
    ObjectRef<MappingObject> whole;  // what a window is a part of; else it is mapped itself
};

/// The views, by address.
std::map<const void*, View>& Views() {
    // Never destroyed: views may be given back while the process ends.
    static auto& views = *new std::map<const void*, View>;
    return views;
}

void AddView(void* address, SIZE_T size, ObjectRef<MappingObject> whole) {
    const std::lock_guard guard(viewsLock);
    View& view = Views()[address];
    view.size = size;
    ++view.count;
    if (!view.whole) view.whole = std::move(whole);
}

std::uint64_t RoundToPages(std::uint64_t size) {
    const auto page = static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    return (size + page - 1) / page * page;
}

/// Opens the process's own memory of that name, or makes it; null with errno set.
std::shared_ptr<LocalMemory> OpenLocal(const char* name, std::uint64_t size, bool& existed) {
    static std::mutex lock;
    // Never destroyed: modules meet while the process ends, too.
    static auto& named = *new std::map<std::string, std::weak_ptr<LocalMemory>>;
    const std::lock_guard guard(lock);
    std::weak_ptr<LocalMemory>& known = named[name];
    std::shared_ptr<LocalMemory> memory = known.lock();
    existed = memory != nullptr;
    if (existed) return memory;
    memory = std::make_shared<LocalMemory>();
    memory->descriptor = memfd_create("mapping", MFD_CLOEXEC);
    if (memory->descriptor < 0 || ftruncate(memory->descriptor, static_cast<off_t>(size)) != 0) {
        return nullptr;
    }
    memory->size = size;
    known = memory;
    return memory;
}

HANDLE FailHandle(DWORD error) {
    SetLastError(error);
    return nullptr;
}

HANDLE MapFile(HANDLE handle, DWORD protection, std::uint64_t size) {
    ObjectRef<FileObject> file = FindObject<FileObject>(handle);
    if (!file) return nullptr;
    const bool isWritable = protection == PAGE_READWRITE;
    LARGE_INTEGER present{};
    if (!file->HasAccess(GENERIC_READ) || (isWritable && !file->HasAccess(GENERIC_WRITE))) {
        return FailHandle(ERROR_ACCESS_DENIED);
    }
    if (!GetFileSizeEx(handle, &present)) return nullptr;
    const auto fileSize = static_cast<std::uint64_t>(present.QuadPart);
    if (size == 0) size = fileSize;
    if (size == 0) return FailHandle(ERROR_FILE_INVALID);
    if (size > INT64_MAX) return FailHandle(ERROR_INVALID_PARAMETER);
    if (size > fileSize && !isWritable) return FailHandle(ERROR_NOT_ENOUGH_MEMORY);
    if (size > fileSize) {
        if (const DWORD error = FileMapping::Lengthen(*file.Get(), fileSize, size)) {
            return FailHandle(error);
        }
    }
    ObjectRef<MappingObject> mapping(new (std::nothrow) MappingObject(isWritable));
    if (!mapping) return FailHandle(ERROR_NOT_ENOUGH_MEMORY);
    mapping->content.reset(new (std::nothrow) FileMapping(std::move(file), isWritable, size));
    if (!mapping->content) return FailHandle(ERROR_NOT_ENOUGH_MEMORY);
    const HANDLE made = OpenHandle(std::move(mapping));
    if (made) SetLastError(ERROR_SUCCESS);
    return made;
}

void* MapWindow(ObjectRef<MappingObject> mapping, std::uint64_t offset, SIZE_T size) {
    constexpr std::uint64_t kGranularity = 0x10000;
    FileMapping& content = *mapping->content;
    if (offset % kGranularity) return FailHandle(ERROR_MAPPED_ALIGNMENT);
    if (offset >= content.Size() || size > content.Size() - offset) {
        return FailHandle(ERROR_ACCESS_DENIED);
    }
    if (size == 0) size = content.Size() - offset;
    if (char* const whole = content.Whole()) {
        AddView(whole + offset, size, std::move(mapping));
        return whole + offset;
    }
    void* const part = content.MapPart(offset, size);
    if (part) {
        AddView(part, size, {});
    } else {
        FailErrno();
    }
    return part;
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
    if (file != INVALID_HANDLE_VALUE && !name &&
        (protection == PAGE_READWRITE || protection == PAGE_READONLY)) {
        return platform::MapFile(file, protection, size);
    }
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

HANDLE CreateFileMappingA(HANDLE file, const SECURITY_ATTRIBUTES*, DWORD protection, DWORD sizeHigh,
                          DWORD sizeLow, LPCSTR name) noexcept {
    if (platform::InjectFault("CreateFileMappingA")) return nullptr;
    if (file != INVALID_HANDLE_VALUE || protection != PAGE_READWRITE || sizeHigh || !sizeLow ||
        !name || !*name) {
        return FailHandle(ERROR_INVALID_PARAMETER);
    }
    ObjectRef<MappingObject> mapping(new (std::nothrow) MappingObject(true));
    if (!mapping) return FailHandle(ERROR_NOT_ENOUGH_MEMORY);
    bool existed = false;
    mapping->local = platform::OpenLocal(name, platform::RoundToPages(sizeLow), existed);
    if (!mapping->local) return FailHandle(ERROR_COMMITMENT_LIMIT);
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
    ObjectRef<MappingObject> mapping = platform::FindObject<MappingObject>(handle);
    if (!mapping) return nullptr;
    const bool isWriting = (access & FILE_MAP_WRITE) != 0;
    if (!(access & (FILE_MAP_READ | FILE_MAP_WRITE))) return FailHandle(ERROR_INVALID_PARAMETER);
    if (mapping->content) {
        if (isWriting && !mapping->isWritable) return FailHandle(ERROR_ACCESS_DENIED);
        const std::uint64_t offset = std::uint64_t{offsetHigh} << 32 | offsetLow;
        return platform::MapWindow(std::move(mapping), offset, size);
    }
    if (offsetHigh || offsetLow) return FailHandle(ERROR_INVALID_PARAMETER);
    if (size == 0) size = mapping->Size();
    if (size > mapping->Size() || (isWriting && !mapping->isWritable)) {
        return FailHandle(ERROR_ACCESS_DENIED);
    }
    void* const view = mmap(nullptr, size, isWriting ? PROT_READ | PROT_WRITE : PROT_READ,
                            MAP_SHARED, mapping->Descriptor(), 0);
    if (view == MAP_FAILED) {
        platform::FailErrno();
        return nullptr;
    }
    platform::AddView(view, size, {});
    return view;
}

BOOL UnmapViewOfFile(LPCVOID address) noexcept {
    ObjectRef<MappingObject> whole;  // Goes after the lock: it may unmap a file.
    const std::lock_guard guard(platform::viewsLock);
    const auto found = platform::Views().find(address);
    if (found == platform::Views().end()) return platform::Fail(ERROR_INVALID_ADDRESS);
    platform::View& view = found->second;
    if (--view.count > 0) return TRUE;
    if (view.whole) {
        whole = std::move(view.whole);
    } else {
        munmap(const_cast<void*>(address), view.size);
    }
    platform::Views().erase(found);
    return TRUE;
}

BOOL FlushViewOfFile(LPCVOID address, SIZE_T size) noexcept {
    if (platform::InjectFault("FlushViewOfFile")) return FALSE;
    const std::lock_guard guard(platform::viewsLock);
    const auto found = platform::Views().find(address);
    if (found == platform::Views().end()) return platform::Fail(ERROR_INVALID_ADDRESS);
    if (size != 0) return platform::Fail(ERROR_INVALID_PARAMETER);
    const int result = msync(const_cast<void*>(address), found->second.size, MS_ASYNC);
    return result == 0 ? TRUE : platform::FailErrno();
}
