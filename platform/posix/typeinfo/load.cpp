#include <cstdio>
#include <cstring>
#include <memory>

#include "platform/posix/faults.h"
#include "platform/posix/paths.h"
#include "platform/posix/typeinfo/built_in.h"
#include "platform/posix/typeinfo/registered.h"
#include "platform/posix/typeinfo/type_objects.h"
#include "platform/resources.h"

namespace platform::types {
namespace {

constexpr std::size_t kMaxFileBytes = std::size_t{64} << 20;

HRESULT Make(std::span<const std::byte> bytes, ITypeLib** library) {
    std::shared_ptr<const Library> read = ReadLibrary(bytes);
    if (!read) return TYPE_E_INVDATAREAD;
    *library = MakeObject<TypeLibrary>(std::move(read)).Detach();
    return *library ? S_OK : E_OUTOFMEMORY;
}

/// The content of a file that begins as a library does; empty for any other.
std::vector<std::byte> ReadLibraryFile(LPCWSTR path) {
    std::vector<std::byte> bytes;
    std::string host;
    if (ToHostPath(path, host) != 0) return bytes;
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(host.c_str(), "rbe"),
                                                               std::fclose);
    if (!file) return bytes;
    std::byte part[4096];
    while (const std::size_t got = std::fread(part, 1, sizeof part, file.get())) {
        bytes.insert(bytes.end(), part, part + got);
        const bool isLibrary = bytes.size() >= 4 && std::memcmp(bytes.data(), "QTL1", 4) == 0;
        if (!isLibrary || bytes.size() > kMaxFileBytes) return {};
    }
    return bytes;
}

HRESULT LoadFromModule(LPCWSTR path, WORD number, ITypeLib** library) {
    const ModuleHandle module(LoadLibraryExW(path, nullptr, LOAD_LIBRARY_AS_DATAFILE));
    if (!module) return TYPE_E_CANTLOADLIBRARY;
    const auto bytes = ResourceBytes(module.Get(), MAKEINTRESOURCEW(number), TEXT("TYPELIB"));
    if (bytes.empty()) return TYPE_E_CANTLOADLIBRARY;
    return Make(bytes, library);
}

/// Splits `module\7` at its end; false if the path has no such end.
bool SplitNumber(const WideString& path, WideString& module, WORD& number) {
    const std::size_t end = path.find_last_of(TEXT("\\/"));
    if (end == WideString::npos || end + 1 == path.size() || path.size() - end > 5) return false;
    unsigned value = 0;
    for (const WCHAR digit : path.substr(end + 1)) {
        if (digit < '0' || digit > '9') return false;
        value = value * 10 + (digit - unsigned{'0'});
    }
    module = path.substr(0, end);
    number = static_cast<WORD>(value);
    return value != 0;
}

/// The highest minor version registered that is at least `minor`; false if there is none.
bool FindVersion(HKEY library, WORD major, WORD minor, WideString& name) {
    int best = -1;
    WCHAR text[16];
    for (DWORD i = 0;; ++i) {
        DWORD length = std::size(text);
        const LSTATUS status =
            RegEnumKeyExW(library, i, text, &length, nullptr, nullptr, nullptr, nullptr);
        if (status == ERROR_MORE_DATA) continue;
        if (status != ERROR_SUCCESS) return best >= 0;
        unsigned found[2];
        char rest = 0;
        const std::string version = ToUtf8(WideView(text, length));
        if (std::sscanf(version.c_str(), "%4x.%4x%c", &found[0], &found[1], &rest) != 2) continue;
        const int candidate = static_cast<int>(found[1]);
        if (found[0] != major || candidate < minor || candidate <= best) continue;
        best = candidate;
        name = FromUtf8(version);
    }
}

HRESULT LoadRegistered(REFGUID id, WORD major, WORD minor, LCID language, ITypeLib** library) {
    // The language itself, its primary language, any.
    const LCID languages[] = {language, language & 0x3FF, 0};
    for (const Owner owner : {Owner::User, Owner::Machine}) {
        RegistryKey classes, key;
        WideString version;
        const WideString libraryKey = TEXT("TypeLib\\") + IdText(id);
        if (OpenClasses(owner, KEY_READ, classes) != ERROR_SUCCESS) continue;
        if (RegOpenKeyExW(classes.Get(), libraryKey.c_str(), 0, KEY_READ, key.Put()) !=
            ERROR_SUCCESS) {
            continue;
        }
        if (!FindVersion(key.Get(), major, minor, version)) continue;
        for (const LCID each : languages) {
            WideString path;
            const WideString place = version + TEXT("\\") + LanguageText(each) + TEXT("\\win64");
            if (ReadText(key.Get(), place, path)) return LoadTypeLib(path.c_str(), library);
        }
    }
    return TYPE_E_LIBNOTREGISTERED;
}

HRESULT LoadBuiltIn(REFGUID id, WORD major, WORD minor, ITypeLib** library) {
    for (const auto bytes : {BaseLibraryBytes(), BrowserLibraryBytes()}) {
        std::shared_ptr<const Library> read = ReadLibrary(bytes);
        if (read->id != id || read->major != major || read->minor < minor) continue;
        *library = MakeObject<TypeLibrary>(std::move(read)).Detach();
        return *library ? S_OK : E_OUTOFMEMORY;
    }
    return TYPE_E_LIBNOTREGISTERED;
}

}  // namespace
}  // namespace platform::types

HRESULT LoadTypeLib(LPCWSTR path, ITypeLib** library) noexcept {
    using namespace platform::types;
    if (!path || !library) return E_INVALIDARG;
    *library = nullptr;
    if (platform::InjectFault("LoadTypeLib")) return TYPE_E_CANTLOADLIBRARY;
    const std::vector<std::byte> bytes = ReadLibraryFile(path);
    if (!bytes.empty()) return Make(bytes, library);
    const HRESULT result = LoadFromModule(path, 1, library);
    platform::WideString module;
    WORD number = 0;
    if (result != TYPE_E_CANTLOADLIBRARY || !SplitNumber(path, module, number)) return result;
    return LoadFromModule(module.c_str(), number, library);
}

HRESULT LoadRegTypeLib(REFGUID id, WORD major, WORD minor, LCID language,
                       ITypeLib** library) noexcept {
    using namespace platform::types;
    if (!library) return E_INVALIDARG;
    *library = nullptr;
    const HRESULT result = LoadRegistered(id, major, minor, language, library);
    if (result != TYPE_E_LIBNOTREGISTERED) return result;
    return LoadBuiltIn(id, major, minor, library);
}
