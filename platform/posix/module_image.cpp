#include "platform/posix/module_image.h"

#include <cstring>
#include <elf.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {
namespace {

/// Copies a structure out of the file; false if it does not lie inside.
template <class T>
bool ReadAt(std::span<const std::byte> bytes, std::uint64_t offset, T& value) {
    if (offset > bytes.size() || bytes.size() - offset < sizeof value) return false;
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return true;
}

bool IsElf(std::span<const std::byte> bytes) {
    Elf64_Ehdr header;
    return ReadAt(bytes, 0, header) && std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 &&
           header.e_ident[EI_CLASS] == ELFCLASS64 && header.e_shentsize == sizeof(Elf64_Shdr);
}

std::span<const std::byte> Part(std::span<const std::byte> bytes, const Elf64_Shdr& section) {
    if (section.sh_type == SHT_NOBITS || section.sh_offset > bytes.size() ||
        section.sh_size > bytes.size() - section.sh_offset) {
        return {};
    }
    return bytes.subspan(section.sh_offset, section.sh_size);
}

}  // namespace

ModuleImage::~ModuleImage() {
    if (!bytes_.empty()) munmap(const_cast<std::byte*>(bytes_.data()), bytes_.size());
}

bool ModuleImage::Open(const std::string& hostPath) noexcept {
    if (!bytes_.empty()) return true;
    const int file = open(hostPath.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return false;
    struct stat info {};
    void* view = MAP_FAILED;
    if (fstat(file, &info) == 0 && info.st_size > 0) {
        view =
            mmap(nullptr, static_cast<std::size_t>(info.st_size), PROT_READ, MAP_PRIVATE, file, 0);
    }
    close(file);
    if (view == MAP_FAILED) return false;
    const std::span bytes(static_cast<const std::byte*>(view),
                          static_cast<std::size_t>(info.st_size));
    if (!IsElf(bytes)) {
        munmap(view, bytes.size());
        return false;
    }
    bytes_ = bytes;
    return true;
}

std::span<const std::byte> ModuleImage::Section(const char* name) const noexcept {
    Elf64_Ehdr header;
    if (!ReadAt(bytes_, 0, header)) return {};
    const auto sectionAt = [&](unsigned index, Elf64_Shdr& section) {
        const std::uint64_t skipped = std::uint64_t{index} * sizeof section;
        return header.e_shoff <= bytes_.size() && ReadAt(bytes_, header.e_shoff + skipped, section);
    };
    Elf64_Shdr section;
    if (!sectionAt(header.e_shstrndx, section)) return {};
    const std::span<const std::byte> names = Part(bytes_, section);
    const std::size_t size = std::strlen(name) + 1;
    for (unsigned i = 0; i < header.e_shnum && sectionAt(i, section); ++i) {
        if (section.sh_name > names.size() || names.size() - section.sh_name < size) continue;
        if (std::memcmp(names.data() + section.sh_name, name, size) == 0) {
            return Part(bytes_, section);
        }
    }
    return {};
}

}  // namespace platform
