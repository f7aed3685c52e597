#include "driver/shared_job_block.h"

#include <cstring>
#include <utility>

bool SharedJobBlock::Publish(const void* data, std::int64_t size) noexcept {
    Close();
    std::uint32_t blockSize = 0;
    if (!data || size < static_cast<std::int64_t>(sizeof(blockSize))) return false;
    std::memcpy(&blockSize, data, sizeof(blockSize));
    if (blockSize != size) return false;

    SECURITY_ATTRIBUTES attributes{};  // The session's default rights; not inherited.
    attributes.nLength = sizeof(attributes);
    // Another tab's object of this name comes back with the size it has; mapping tells if it fits.
    platform::KernelHandle mapping(CreateFileMappingW(
        INVALID_HANDLE_VALUE, &attributes, PAGE_READWRITE, 0, blockSize, kSharedBlockName));
    if (!mapping) return false;
    platform::MappedView view(MapViewOfFile(mapping.Get(), FILE_MAP_WRITE, 0, 0, blockSize));
    if (!view) return false;
    std::memcpy(view.Get(), data, blockSize);
    mapping_ = std::move(mapping);
    view_ = std::move(view);
    return true;
}

void SharedJobBlock::Close() noexcept {
    view_.Reset();
    mapping_.Reset();
}
