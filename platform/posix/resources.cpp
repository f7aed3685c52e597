#include "platform/resources.h"

#include <cstring>

#include "platform/posix/faults.h"
#include "platform/posix/module_table.h"
#include "platform/posix/paths.h"

namespace platform {
namespace {

/// A name or type of a resource: a number, or a text.
struct ResourceName {
    bool isNumber = true;
    WORD number = 0;
    WideView text;

    bool operator==(const ResourceName& other) const {
        if (isNumber != other.isNumber) return false;
        return isNumber ? number == other.number : IsSameName(text, other.text);
    }
};

ResourceName NameOf(LPCWSTR name) {
    if (IS_INTRESOURCE(name))
        return {true, static_cast<WORD>(reinterpret_cast<ULONG_PTR>(name)), {}};
    const WideView text(name);
    if (text.size() < 2 || text[0] != '#') return {false, 0, text};
    unsigned number = 0;
    for (const WCHAR digit : text.substr(1)) {
        if (digit < '0' || digit > '9' || number > 0xFFFF) return {false, 0, text};
        number = number * 10 + (digit - unsigned{'0'});
    }
    return {true, static_cast<WORD>(number), {}};
}

/// Walks the entries of compiled resources. Each begins at a multiple of four bytes with the size
/// of its data, the size of its header, its type, its name and things that nobody asks for.
class EntryWalk {
public:
    explicit EntryWalk(std::span<const std::byte> bytes) : bytes_(bytes) {}

    /// Steps to the next entry. False at the end, or at an entry that does not lie inside.
    bool Next() {
        next_ = (next_ + 3) & ~std::size_t{3};
        std::uint32_t sizes[2];
        if (next_ > bytes_.size() || bytes_.size() - next_ < sizeof sizes) return false;
        header_ = bytes_.subspan(next_);
        std::memcpy(sizes, header_.data(), sizeof sizes);
        if (sizes[1] < sizeof sizes || sizes[1] > header_.size()) return false;
        if (sizes[0] > header_.size() - sizes[1]) return false;
        data_ = header_.subspan(sizes[1], sizes[0]);
        header_ = header_.first(sizes[1]);
        at_ = sizeof sizes;
        next_ += std::size_t{sizes[0]} + sizes[1];
        return ReadName(type_) && ReadName(name_);
    }

    const ResourceName& Type() const { return type_; }
    const ResourceName& Name() const { return name_; }
    const std::byte* Header() const { return header_.data(); }
    std::span<const std::byte> Data() const { return data_; }

private:
    bool ReadUnit(WCHAR& unit) {
        if (header_.size() - at_ < sizeof unit) return false;
        std::memcpy(&unit, header_.data() + at_, sizeof unit);
        at_ += sizeof unit;
        return true;
    }

    bool ReadName(ResourceName& name) {
        const std::size_t start = at_;
        WCHAR unit = 0;
        if (!ReadUnit(unit)) return false;
        if (unit == 0xFFFF) {
            if (!ReadUnit(unit)) return false;
            name = {true, unit, {}};
            return true;
        }
        while (unit != 0) {
            if (!ReadUnit(unit)) return false;
        }
        const auto* text = reinterpret_cast<const WCHAR*>(header_.data() + start);
        name = {false, 0, WideView(text, (at_ - start) / sizeof unit - 1)};
        return true;
    }

    std::span<const std::byte> bytes_;
    std::span<const std::byte> header_;
    std::span<const std::byte> data_;
    std::size_t next_ = 0;
    std::size_t at_ = 0;
    ResourceName type_;
    ResourceName name_;
};

/// The module's compiled resources. A program lies in the file that it was started from.
std::span<const std::byte> ResourcesOf(Module& module) {
    std::string host;
    if (ToHostPath(module.path.c_str(), host) != 0 || !module.image.Open(host)) return {};
    const std::span<const std::byte> section = module.image.Section(".rsrc");
    const bool isAligned = reinterpret_cast<std::uintptr_t>(section.data()) % 4 == 0;
    return isAligned ? section : std::span<const std::byte>();
}

/// The entry that begins at a place which FindResourceW gave.
std::span<const std::byte> DataOf(HMODULE handle, HRSRC resource) {
    const std::lock_guard lock(ModuleLock());
    Module* module = FindModule(handle);
    if (!module) return {};
    EntryWalk entries(ResourcesOf(*module));
    while (entries.Next()) {
        if (entries.Header() == reinterpret_cast<const std::byte*>(resource)) return entries.Data();
    }
    SetLastError(ERROR_INVALID_PARAMETER);
    return {};
}

}  // namespace
}  // namespace platform

HRSRC FindResourceW(HMODULE handle, LPCWSTR name, LPCWSTR type) noexcept {
    using namespace platform;
    if (InjectFault("FindResourceW")) return nullptr;
    const std::lock_guard lock(ModuleLock());
    Module* module = FindModule(handle);
    if (!module) return nullptr;
    const ResourceName wantedName = NameOf(name);
    const ResourceName wantedType = NameOf(type);
    const std::span<const std::byte> resources = ResourcesOf(*module);
    DWORD error = resources.empty() ? ERROR_RESOURCE_DATA_NOT_FOUND : ERROR_RESOURCE_TYPE_NOT_FOUND;
    EntryWalk entries(resources);
    while (entries.Next()) {
        if (!(entries.Type() == wantedType)) continue;
        error = ERROR_RESOURCE_NAME_NOT_FOUND;
        if (entries.Name() == wantedName) {
            return reinterpret_cast<HRSRC>(const_cast<std::byte*>(entries.Header()));
        }
    }
    SetLastError(error);
    return nullptr;
}

HGLOBAL LoadResource(HMODULE module, HRSRC resource) noexcept {
    if (platform::InjectFault("LoadResource")) return nullptr;
    return const_cast<std::byte*>(platform::DataOf(module, resource).data());
}

LPVOID LockResource(HGLOBAL loaded) noexcept { return loaded; }

DWORD SizeofResource(HMODULE module, HRSRC resource) noexcept {
    return static_cast<DWORD>(platform::DataOf(module, resource).size());
}
