#include <cstdio>

#include "platform/posix/faults.h"
#include "platform/posix/typeinfo/registered.h"
#include "platform/posix/typeinfo/type_objects.h"
#include "platform/unique_bstr.h"

namespace platform::types {
namespace {

// What the system marshals automation interfaces and dispatch interfaces with.
constexpr WCHAR kAutomationProxy[] = TEXT("{00020424-0000-0000-C000-000000000046}");
constexpr WCHAR kDispatchProxy[] = TEXT("{00020420-0000-0000-C000-000000000046}");

/// Writes keys below one; after the first failure nothing more.
class KeyWriter {
public:
    explicit KeyWriter(Owner owner) { status_ = OpenClasses(owner, KEY_WRITE, classes_); }

    void Write(const WideString& path, LPCWSTR value, const WideString& text) {
        RegistryKey key;
        if (status_ == ERROR_SUCCESS) {
            status_ =
                RegCreateKeyExW(classes_.Get(), path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                KEY_WRITE, nullptr, key.Put(), nullptr);
        }
        if (status_ != ERROR_SUCCESS) return;
        status_ =
            RegSetValueExW(key.Get(), value, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                           static_cast<DWORD>((text.size() + 1) * sizeof(WCHAR)));
    }

    [[nodiscard]] bool Failed() const { return status_ != ERROR_SUCCESS; }

private:
    RegistryKey classes_;
    LSTATUS status_;
};

WideString TextOf(const UniqueBstr& text) {
    return text ? WideString(text.Get(), SysStringLen(text.Get())) : WideString();
}

WideString FolderOf(const WideString& path) {
    const std::size_t end = path.find_last_of(TEXT("\\/"));
    return end == WideString::npos ? WideString() : path.substr(0, end);
}

/// Calls `act` with the id, the name and the attributes of each interface that can be called from
/// another process: dual, automation and dispatch interfaces.
template <class Act>
HRESULT ForEachCallable(ITypeLib* library, Act act) {
    for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
        ComPtr<ITypeInfo> info;
        UniqueBstr name;
        TYPEATTR* attributes = nullptr;
        HRESULT result = library->GetTypeInfo(i, info.Put());
        if (SUCCEEDED(result)) {
            result = info->GetDocumentation(MEMBERID_NIL, name.Put(), nullptr, nullptr, nullptr);
        }
        if (SUCCEEDED(result)) result = info->GetTypeAttr(&attributes);
        if (FAILED(result)) return result;
        const bool isInterface = attributes->typekind == TKIND_INTERFACE &&
                                 (attributes->wTypeFlags & TYPEFLAG_FOLEAUTOMATION) != 0;
        if (isInterface || attributes->typekind == TKIND_DISPATCH) act(*attributes, TextOf(name));
        info->ReleaseTypeAttr(attributes);
    }
    return S_OK;
}

HRESULT Register(Owner owner, ITypeLib* library, LPCWSTR path, LPCWSTR helpFolder) {
    if (!library || !path) return E_INVALIDARG;
    if (InjectFault("RegisterTypeLib")) return TYPE_E_REGISTRYACCESS;
    TLIBATTR* attributes = nullptr;
    HRESULT result = library->GetLibAttr(&attributes);
    if (FAILED(result)) return result;
    const TLIBATTR own = *attributes;
    library->ReleaseTLibAttr(attributes);
    UniqueBstr help;
    result = library->GetDocumentation(-1, nullptr, help.Put(), nullptr, nullptr);
    if (FAILED(result)) return result;

    char flags[8];
    std::snprintf(flags, sizeof flags, "%u", unsigned{own.wLibFlags});
    const WideString id = IdText(own.guid);
    const WideString version = VersionText(own.wMajorVerNum, own.wMinorVerNum);
    const WideString key = TEXT("TypeLib\\") + id + TEXT("\\") + version;
    KeyWriter keys(owner);
    keys.Write(key, nullptr, TextOf(help));
    keys.Write(key + TEXT("\\") + LanguageText(own.lcid) + TEXT("\\win64"), nullptr, path);
    keys.Write(key + TEXT("\\FLAGS"), nullptr, FromUtf8(flags));
    keys.Write(key + TEXT("\\HELPDIR"), nullptr, helpFolder ? helpFolder : FolderOf(path));
    result = ForEachCallable(library, [&](const TYPEATTR& type, const WideString& name) {
        const WideString interfaceKey = TEXT("Interface\\") + IdText(type.guid);
        const bool hasTable =
            type.typekind == TKIND_INTERFACE || (type.wTypeFlags & TYPEFLAG_FDUAL) != 0;
        const WideString proxy = hasTable ? kAutomationProxy : kDispatchProxy;
        keys.Write(interfaceKey, nullptr, name);
        keys.Write(interfaceKey + TEXT("\\ProxyStubClsid"), nullptr, proxy);
        keys.Write(interfaceKey + TEXT("\\ProxyStubClsid32"), nullptr, proxy);
        keys.Write(interfaceKey + TEXT("\\TypeLib"), nullptr, id);
        keys.Write(interfaceKey + TEXT("\\TypeLib"), TEXT("Version"), version);
    });
    if (SUCCEEDED(result) && keys.Failed()) return TYPE_E_REGISTRYACCESS;
    return result;
}

/// Deletes a key that has no sub-keys.
void DeleteIfEmpty(HKEY classes, const WideString& path) {
    RegistryKey key;
    DWORD subkeys = 0;
    if (RegOpenKeyExW(classes, path.c_str(), 0, KEY_READ, key.Put()) != ERROR_SUCCESS) return;
    if (RegQueryInfoKeyW(key.Get(), nullptr, nullptr, nullptr, &subkeys, nullptr, nullptr, nullptr,
                         nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) {
        return;
    }
    key.Reset();
    if (subkeys == 0) (void)RegDeleteTreeW(classes, path.c_str());
}

HRESULT Unregister(Owner owner, REFGUID id, WORD major, WORD minor, LCID language, SYSKIND system) {
    if (system != SYS_WIN64) return E_INVALIDARG;
    if (InjectFault("UnRegisterTypeLib")) return TYPE_E_REGISTRYACCESS;
    RegistryKey classes;
    if (OpenClasses(owner, KEY_WRITE | KEY_READ, classes) != ERROR_SUCCESS) {
        return TYPE_E_REGISTRYACCESS;
    }
    const WideString libraryKey = TEXT("TypeLib\\") + IdText(id);
    const WideString versionKey = libraryKey + TEXT("\\") + VersionText(major, minor);
    const WideString languageKey = versionKey + TEXT("\\") + LanguageText(language);
    const WideString systemKey = languageKey + TEXT("\\win64");
    LSTATUS opened = ERROR_SUCCESS;
    {
        RegistryKey registered;
        opened = RegOpenKeyExW(classes.Get(), systemKey.c_str(), 0, KEY_READ, registered.Put());
        if (opened == ERROR_SUCCESS) {
            opened =
                RegQueryValueExW(registered.Get(), nullptr, nullptr, nullptr, nullptr, nullptr);
        }
    }
    WideString path;
    const bool isUnfinished = opened == ERROR_FILE_NOT_FOUND;
    if (!isUnfinished && !ReadText(classes.Get(), systemKey, path)) return TYPE_E_REGISTRYACCESS;
    if (isUnfinished) {
        // What a registration left that failed is removed as far as it goes.
        RegistryKey part;
        if (RegOpenKeyExW(classes.Get(), libraryKey.c_str(), 0, KEY_READ, part.Put()) !=
            ERROR_SUCCESS) {
            return E_INVALIDARG;
        }
        part.Reset();
        (void)RegDeleteTreeW(classes.Get(), versionKey.c_str());
        DeleteIfEmpty(classes.Get(), libraryKey);
        return S_OK;
    }
    // Without the library nobody knows its interfaces; their keys stay then, and nothing else.
    ComPtr<ITypeLib> library;
    if (SUCCEEDED(LoadTypeLib(path.c_str(), library.Put()))) {
        bool isRefused = false;
        const HRESULT result =
            ForEachCallable(library.Get(), [&](const TYPEATTR& type, const WideString&) {
                const WideString key = TEXT("Interface\\") + IdText(type.guid);
                const LSTATUS status = RegDeleteTreeW(classes.Get(), key.c_str());
                isRefused |= status != ERROR_SUCCESS && status != ERROR_FILE_NOT_FOUND;
            });
        if (FAILED(result)) return result;
        // The library stays as well, so that another try finds them.
        if (isRefused) return TYPE_E_REGISTRYACCESS;
    }
    if (RegDeleteTreeW(classes.Get(), systemKey.c_str()) != ERROR_SUCCESS) {
        return TYPE_E_REGISTRYACCESS;
    }
    DeleteIfEmpty(classes.Get(), languageKey);
    // What belongs to the version goes with its last language.
    const WideString kept[] = {TEXT("\\FLAGS"), TEXT("\\HELPDIR")};
    RegistryKey version;
    DWORD subkeys = 0;
    if (RegOpenKeyExW(classes.Get(), versionKey.c_str(), 0, KEY_READ, version.Put()) ==
            ERROR_SUCCESS &&
        RegQueryInfoKeyW(version.Get(), nullptr, nullptr, nullptr, &subkeys, nullptr, nullptr,
                         nullptr, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS &&
        subkeys <= std::size(kept)) {
        (void)RegDeleteTreeW(classes.Get(), versionKey.c_str());
    }
    DeleteIfEmpty(classes.Get(), libraryKey);
    return S_OK;
}

}  // namespace
}  // namespace platform::types

using platform::types::Owner;

HRESULT RegisterTypeLib(ITypeLib* library, LPWSTR path, LPWSTR helpFolder) noexcept {
    return platform::types::Register(Owner::Machine, library, path, helpFolder);
}

HRESULT RegisterTypeLibForUser(ITypeLib* library, LPWSTR path, LPWSTR helpFolder) noexcept {
    return platform::types::Register(Owner::User, library, path, helpFolder);
}

HRESULT UnRegisterTypeLib(REFGUID id, WORD major, WORD minor, LCID language,
                          SYSKIND system) noexcept {
    return platform::types::Unregister(Owner::Machine, id, major, minor, language, system);
}

HRESULT UnRegisterTypeLibForUser(REFGUID id, WORD major, WORD minor, LCID language,
                                 SYSKIND system) noexcept {
    return platform::types::Unregister(Owner::User, id, major, minor, language, system);
}
