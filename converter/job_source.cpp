#include "converter/job_source.h"

#include <cstring>
#include <string>

#include "converter/job_block.h"
#include "converter/paths.h"
#include "platform/files.h"
#include "platform/memory.h"

namespace converter {
namespace {

using platform::ToUtf8;
using platform::WideString;
using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kSizeBytes = 4;
constexpr DWORD kReadAtOnce = DWORD{1} << 30;

Error Fault(const WideString& name, const std::string& why) {
    return Error{"The job " + ToUtf8(name) + " " + why + "."};
}

std::string LastCode() { return "(error " + std::to_string(GetLastError()) + ")"; }

/// Fills the bytes from `done` on.
bool ReadRest(HANDLE file, Bytes& bytes, std::size_t done) {
    while (done < bytes.size()) {
        const std::size_t left = bytes.size() - done;
        const DWORD wanted = left < kReadAtOnce ? static_cast<DWORD>(left) : kReadAtOnce;
        DWORD count = 0;
        if (!ReadFile(file, bytes.data() + done, wanted, &count, nullptr) || count == 0) {
            return false;
        }
        done += count;
    }
    return true;
}

Result<Bytes> ReadSharedMemory(const WideString& name) {
    const platform::MappingHandle mapping(OpenFileMappingW(FILE_MAP_READ, FALSE, name.c_str()));
    if (!mapping) return Fault(name, "is not in shared memory (any more) " + LastCode());
    std::uint8_t first[kSizeBytes];
    {
        const platform::MappedView head(
            MapViewOfFile(mapping.Get(), FILE_MAP_READ, 0, 0, sizeof first));
        if (!head) return Fault(name, "can't be read " + LastCode());
        std::memcpy(first, head.Get(), sizeof first);
    }
    const std::uint32_t size = ReadBlockSize(first);
    if (size < kSizeBytes) return Fault(name, "is malformed: its length is too small");
    const platform::MappedView view(MapViewOfFile(mapping.Get(), FILE_MAP_READ, 0, 0, size));
    if (!view) return Fault(name, "is malformed: it is shorter than its length says");
    // A copy: the owner may write another job over it at any time.
    const auto* bytes = static_cast<const std::uint8_t*>(view.Get());
    return Bytes(bytes, bytes + size);
}

}  // namespace

Result<Bytes> ReadStorageFile(const WideString& path) {
    const platform::FileHandle file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ,
                                                nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                                                nullptr));
    if (!file) return Fault(path, "can't be opened " + LastCode());
    LARGE_INTEGER size{};
    if (!GetFileSizeEx(file.Get(), &size)) return Fault(path, "can't be read " + LastCode());
    if (size.QuadPart < static_cast<LONGLONG>(kSizeBytes) || size.QuadPart > UINT32_MAX) {
        return Fault(path, "is malformed: it has " + std::to_string(size.QuadPart) + " bytes");
    }
    Bytes bytes(kSizeBytes);
    if (!ReadRest(file.Get(), bytes, 0)) return Fault(path, "can't be read " + LastCode());
    if (ReadBlockSize(bytes) != static_cast<std::uint64_t>(size.QuadPart)) {
        return Fault(path, "is malformed: its length is given as " +
                               std::to_string(ReadBlockSize(bytes)) + ", but it has " +
                               std::to_string(size.QuadPart) + " bytes");
    }
    bytes.resize(static_cast<std::size_t>(size.QuadPart));
    if (!ReadRest(file.Get(), bytes, kSizeBytes)) return Fault(path, "can't be read " + LastCode());
    return bytes;
}

Result<Bytes> FetchJobBlock(const CommandLine& line) {
    return line.storageFile.empty() ? ReadSharedMemory(line.sharedName)
                                    : ReadStorageFile(line.storageFile);
}

}  // namespace converter
