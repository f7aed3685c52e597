#include "platform/modules.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fstream>
#include <link.h>
#include <memory>
#include <unistd.h>
#include <utility>
#include <vector>

#include "platform/posix/faults.h"
#include "platform/posix/last_error.h"
#include "platform/posix/module_table.h"
#include "platform/posix/paths.h"

namespace platform {
namespace {

using Lock = std::lock_guard<std::recursive_mutex>;

struct ModuleTable {
    std::recursive_mutex lock;
    Module program;
    std::vector<std::unique_ptr<Module>> modules;  // in the order of loading
};

// Never destroyed: modules are still called while the process ends.
ModuleTable& Table() {
    static ModuleTable& table = *[] {
        auto* made = new ModuleTable;
        std::string text(4096, '\0');
        const ssize_t length = readlink("/proc/self/exe", text.data(), text.size());
        text.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
        if (!ToWindowsPath(text, made->program.path)) made->program.path.clear();
        return made;
    }();
    return table;
}

HMODULE HandleOf(Module& module) { return reinterpret_cast<HMODULE>(&module); }

using DllMainFunction = BOOL(HINSTANCE, DWORD, LPVOID);

BOOL CallDllMain(Module& module, DWORD reason, bool isProcessEnd) {
    auto* dllMain = ProcedureOf<DllMainFunction>(HandleOf(module), "DllMain");
    return dllMain ? dllMain(HandleOf(module), reason, isProcessEnd ? &module : nullptr) : TRUE;
}

void Detach(Module& module, bool isProcessEnd) {
    if (!std::exchange(module.isAttached, false)) return;
    (void)CallDllMain(module, DLL_PROCESS_DETACH, isProcessEnd);
}

/// Tells what is still loaded that the process ends, the newest first. A DllMain may unload others.
void DetachAll() {
    const Lock lock(ModuleLock());
    std::vector<std::unique_ptr<Module>>& modules = Table().modules;
    for (;;) {
        const auto newest = std::find_if(modules.rbegin(), modules.rend(),
                                         [](const auto& module) { return module->isAttached; });
        if (newest == modules.rend()) break;
        Detach(**newest, true);
    }
}

bool IsElf(const std::string& host) {
    char magic[4] = {};
    std::ifstream(host, std::ios::binary).read(magic, sizeof magic);
    return std::memcmp(magic, "\177ELF", sizeof magic) == 0;
}

const link_map* MapOf(void* library) {
    link_map* map = nullptr;
    return dlinfo(library, RTLD_DI_LINKMAP, &map) == 0 ? map : nullptr;
}

/// The module that a symbol lies in. dlsym also finds those of the modules that the asked one
/// depends on.
const link_map* OwnerOf(void* symbol) {
    Dl_info place{};
    void* map = nullptr;
    return dladdr1(symbol, &place, &map, RTLD_DL_LINKMAP) ? static_cast<link_map*>(map) : nullptr;
}

HMODULE FailLoad(DWORD error) {
    SetLastError(error);
    return nullptr;
}

void Remove(Module& module) {
    std::vector<std::unique_ptr<Module>>& modules = Table().modules;
    for (auto it = modules.begin(); it != modules.end(); ++it) {
        if (it->get() != &module) continue;
        const std::unique_ptr<Module> last = std::move(*it);
        modules.erase(it);
        if (last->library) dlclose(last->library);
        return;
    }
}

Module* Add(void* library, WideString path) {
    auto module = std::make_unique<Module>();
    module->library = library;
    module->path = std::move(path);
    module->uses = 1;
    Table().modules.push_back(std::move(module));
    return Table().modules.back().get();
}

HMODULE LoadFile(const std::string& host) {
    char* whole = realpath(host.c_str(), nullptr);
    if (!whole) return FailLoad(ERROR_MOD_NOT_FOUND);
    const std::string path = whole;
    std::free(whole);
    WideString shown;
    if (!ToWindowsPath(path, shown)) return FailLoad(ERROR_MOD_NOT_FOUND);
    void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    // An ELF file that does not load lacks a module that it needs.
    if (!library) return FailLoad(IsElf(path) ? ERROR_MOD_NOT_FOUND : ERROR_BAD_EXE_FORMAT);
    for (const auto& loaded : Table().modules) {
        if (loaded->library != library || loaded->isData) continue;
        dlclose(library);
        ++loaded->uses;
        return HandleOf(*loaded);
    }
    Module* module = Add(library, std::move(shown));
    module->isAttached = CallDllMain(*module, DLL_PROCESS_ATTACH, false) != FALSE;
    if (!module->isAttached) {
        Remove(*module);
        return FailLoad(ERROR_DLL_INIT_FAILED);
    }
    // Registered after the module's own destructors, so it runs before them, whichever comes last.
    (void)std::atexit(DetachAll);
    return HandleOf(*module);
}

HMODULE LoadData(const std::string& host) {
    WideString shown;
    if (access(host.c_str(), F_OK) != 0 || !ToWindowsPath(host, shown)) {
        return FailLoad(ERROR_MOD_NOT_FOUND);
    }
    ModuleImage image;
    if (!image.Open(host)) return FailLoad(ERROR_BAD_EXE_FORMAT);
    Module* module = Add(nullptr, std::move(shown));
    module->isData = true;
    return HandleOf(*module);
}

/// Adds ".dll" to a name without extension; a full stop at the end stands for none.
WideString WithExtension(WideView name) {
    const std::size_t dot = BaseNameOf(name).find('.');
    WideString whole(name);
    if (dot == WideView::npos) whole += TEXT(".dll");
    if (!whole.empty() && whole.back() == '.') whole.pop_back();
    return whole;
}

bool IsPath(WideView name) { return name.find_first_of(TEXT("\\/:")) != WideView::npos; }

Module* FindLoaded(WideView name) {
    for (const auto& module : Table().modules) {
        if (module->isData) continue;
        const WideView known = IsPath(name) ? WideView(module->path) : BaseNameOf(module->path);
        if (IsSameName(known, name)) return module.get();
    }
    return nullptr;
}

Module* AddBuiltIn(const WideString& name) {
    return Add(nullptr, TEXT("C:\\windows\\system32\\") + name);
}

HMODULE FindHandle(WideView name) {
    const WideString whole = WithExtension(name);
    Module* module = FindLoaded(whole);
    // The layer's own modules are there from the start, like those that a program is linked to.
    if (!module && IsBuiltIn(whole)) module = AddBuiltIn(whole);
    if (!module) SetLastError(ERROR_MOD_NOT_FOUND);
    return module ? HandleOf(*module) : nullptr;
}

WideString BesideProgram(const WideString& name) {
    const WideString& program = Table().program.path;
    return program.substr(0, program.find_last_of('\\') + 1) + name;
}

HMODULE LoadByName(const WideString& name) {
    if (Module* loaded = FindLoaded(name)) {
        ++loaded->uses;
        return HandleOf(*loaded);
    }
    if (IsBuiltIn(name)) return HandleOf(*AddBuiltIn(name));
    std::string host;
    return ToHostPath(BesideProgram(name).c_str(), host) == 0 ? LoadFile(host)
                                                              : FailLoad(ERROR_MOD_NOT_FOUND);
}

}  // namespace

std::recursive_mutex& ModuleLock() noexcept { return Table().lock; }

Module* FindModule(HMODULE handle) noexcept {
    if (!handle) return &Table().program;
    for (const auto& module : Table().modules) {
        if (HandleOf(*module) == handle) return module.get();
    }
    if (handle == HandleOf(Table().program)) return &Table().program;
    SetLastError(ERROR_MOD_NOT_FOUND);
    return nullptr;
}

WideView BaseNameOf(WideView path) noexcept {
    return path.substr(path.find_last_of(TEXT("\\/")) + 1);
}

bool IsSameName(WideView a, WideView b) noexcept {
    const auto lower = [](WCHAR unit) {
        return unit >= 'A' && unit <= 'Z' ? static_cast<WCHAR>(unit + 32) : unit;
    };
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (lower(a[i]) != lower(b[i])) return false;
    }
    return true;
}

}  // namespace platform

HMODULE LoadLibraryW(LPCWSTR name) noexcept {
    using namespace platform;
    if (InjectFault("LoadLibraryW")) return nullptr;
    if (!name || !*name) return FailLoad(ERROR_INVALID_PARAMETER);
    const Lock lock(ModuleLock());
    const WideString whole = WithExtension(name);
    if (!IsPath(whole)) return LoadByName(whole);
    std::string host;
    return ToHostPath(whole.c_str(), host) == 0 ? LoadFile(host) : FailLoad(ERROR_MOD_NOT_FOUND);
}

HMODULE LoadLibraryExW(LPCWSTR name, HANDLE file, DWORD flags) noexcept {
    using namespace platform;
    if (InjectFault("LoadLibraryExW")) return nullptr;
    if (flags == 0 && !file) return LoadLibraryW(name);
    if (!name || !*name || file || flags != LOAD_LIBRARY_AS_DATAFILE) {
        return FailLoad(ERROR_INVALID_PARAMETER);
    }
    const Lock lock(ModuleLock());
    const WideString whole = WithExtension(name);
    std::string host;
    const DWORD error = ToHostPath((IsPath(whole) ? whole : BesideProgram(whole)).c_str(), host);
    return error == 0 ? LoadData(host) : FailLoad(ERROR_MOD_NOT_FOUND);
}

BOOL FreeLibrary(HMODULE handle) noexcept {
    using namespace platform;
    const Lock lock(ModuleLock());
    Module* module = handle ? FindModule(handle) : nullptr;
    if (!module) return Fail(ERROR_MOD_NOT_FOUND);
    if (module->uses == 0 || --module->uses > 0) return TRUE;  // The program has no uses and stays.
    Detach(*module, false);
    Remove(*module);
    return TRUE;
}

FARPROC GetProcAddress(HMODULE handle, LPCSTR name) noexcept {
    using namespace platform;
    if (InjectFault("GetProcAddress")) return nullptr;
    const Lock lock(ModuleLock());
    Module* module = FindModule(handle);
    if (!module) return nullptr;
    if (!module->library) {
        const FARPROC function =
            module->isData ? nullptr : BuiltInFunction(BaseNameOf(module->path), name);
        if (!function) SetLastError(ERROR_PROC_NOT_FOUND);
        return function;
    }
    void* function = dlsym(module->library, name);
    const bool isOwn = function && OwnerOf(function) == MapOf(module->library);
    if (!isOwn) SetLastError(ERROR_PROC_NOT_FOUND);
    return isOwn ? reinterpret_cast<FARPROC>(function) : nullptr;
}

HMODULE GetModuleHandleW(LPCWSTR name) noexcept {
    using namespace platform;
    if (InjectFault("GetModuleHandleW")) return nullptr;
    const Lock lock(ModuleLock());
    return name ? FindHandle(name) : HandleOf(Table().program);
}

HMODULE GetModuleHandleA(LPCSTR name) noexcept {
    using namespace platform;
    if (InjectFault("GetModuleHandleA")) return nullptr;
    const Lock lock(ModuleLock());
    return name ? FindHandle(FromUtf8(name)) : HandleOf(Table().program);
}

DWORD GetModuleFileNameW(HMODULE handle, LPWSTR buffer, DWORD size) noexcept {
    using namespace platform;
    if (InjectFault("GetModuleFileNameW")) return 0;
    const Lock lock(ModuleLock());
    const Module* module = FindModule(handle);
    if (!module) return 0;
    const WideString& path = module->path;
    if (size > path.size()) {
        buffer[path.copy(buffer, path.size())] = 0;
        SetLastError(ERROR_SUCCESS);
        return static_cast<DWORD>(path.size());
    }
    if (size > 0) buffer[path.copy(buffer, size - 1)] = 0;
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return size;
}

namespace platform {

void FreeLibraryOnThread(HMODULE module) noexcept { (void)FreeLibrary(module); }

}  // namespace platform
