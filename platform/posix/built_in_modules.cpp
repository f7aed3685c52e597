#include <algorithm>
#include <cstring>

#include "platform/posix/module_table.h"
#include "platform/posix/xml/document.h"
#include "platform/registry.h"
#include "platform/shell.h"
#include "platform/typeinfo.h"

namespace platform {
namespace {

/// What callers look up by name. The modules are there although no file has their code.
struct BuiltInExport {
    const WCHAR* module;
    const char* name;
    void* function;
};

const BuiltInExport kExports[] = {
    {TEXT("advapi32.dll"), "RegDeleteKeyExW", reinterpret_cast<void*>(&RegDeleteKeyExW)},
    {TEXT("msxml6.dll"), "DllGetClassObject", reinterpret_cast<void*>(&GetXmlClass)},
    {TEXT("oleaut32.dll"), "RegisterTypeLibForUser",
     reinterpret_cast<void*>(&RegisterTypeLibForUser)},
    {TEXT("oleaut32.dll"), "UnRegisterTypeLibForUser",
     reinterpret_cast<void*>(&UnRegisterTypeLibForUser)},
    {TEXT("shell32.dll"), "SHGetFolderPathW", reinterpret_cast<void*>(&SHGetFolderPathW)},
    {TEXT("shell32.dll"), "SHGetKnownFolderPath", reinterpret_cast<void*>(&SHGetKnownFolderPath)},
    {TEXT("shell32.dll"), "SHOpenFolderAndSelectItems",
     reinterpret_cast<void*>(&SHOpenFolderAndSelectItems)},
};

}  // namespace

bool IsBuiltIn(WideView baseName) noexcept {
    return std::any_of(std::begin(kExports), std::end(kExports),
                       [&](const auto& row) { return IsSameName(baseName, row.module); });
}

FARPROC BuiltInFunction(WideView baseName, const char* name) noexcept {
    for (const BuiltInExport& row : kExports) {
        if (IsSameName(baseName, row.module) && std::strcmp(row.name, name) == 0) {
            return reinterpret_cast<FARPROC>(row.function);
        }
    }
    return nullptr;
}

}  // namespace platform
