/// The second process of the platform's tests. Its first argument is the job; the exit code is 0 if
/// all went as the job expects.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/memory.h"
#include "platform/registry.h"
#include "platform/text.h"

namespace {

using platform::FromUtf8;
using platform::MappedView;
using platform::MappingHandle;
using platform::RegistryKey;
using platform::WideString;

enum ExitCode { Done = 0, Unexpected = 1, WrongUse = 2 };

// exchange <name> <size>: finds all bytes 0x11 and leaves all bytes 0x22.
int Exchange(const WideString& name, std::size_t size) {
    const MappingHandle mapping(OpenFileMappingW(FILE_MAP_WRITE, FALSE, name.c_str()));
    const MappedView view(MapViewOfFile(mapping.Get(), FILE_MAP_WRITE, 0, 0, size));
    if (!view) return Unexpected;
    auto* const bytes = static_cast<unsigned char*>(view.Get());
    for (std::size_t i = 0; i < size; ++i) {
        if (bytes[i] != 0x11) return Unexpected;
        bytes[i] = 0x22;
    }
    return Done;
}

// absent <name>: nobody holds such memory.
int Absent(const WideString& name) {
    const MappingHandle mapping(OpenFileMappingW(FILE_MAP_READ, FALSE, name.c_str()));
    return !mapping && GetLastError() == ERROR_FILE_NOT_FOUND ? Done : Unexpected;
}

void* MakeFilled(const WideString& name, std::size_t size) {
    const HANDLE mapping = CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                                              static_cast<DWORD>(size), name.c_str());
    void* const view = MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, size);
    if (view) std::memset(view, 0xFF, size);
    return view;
}

// abandon <name> <size>: makes memory, fills it and ends without giving it back.
int Abandon(const WideString& name, std::size_t size) {
    if (!MakeFilled(name, size)) return Unexpected;
    std::_Exit(Done);
}

// hold <name> <size>: the same, but says so on its output and stays until it is killed.
int Hold(const WideString& name, std::size_t size) {
    if (!MakeFilled(name, size)) return Unexpected;
    std::puts("holding");
    std::fflush(stdout);
    for (;;) (void)std::getchar();
}

int WriteNumber(HKEY key, const WideString& name, DWORD number) {
    return RegSetValueExW(key, name.c_str(), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number),
                          sizeof number);
}

// write <key> <prefix> <count>: writes values <prefix>0..., each also as a subkey.
int Write(const WideString& path, const std::string& prefix, unsigned count) {
    RegistryKey key;
    if (RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_READ | KEY_WRITE,
                        nullptr, key.Put(), nullptr) != ERROR_SUCCESS) {
        return Unexpected;
    }
    for (unsigned i = 0; i < count; ++i) {
        const WideString name = FromUtf8(prefix + std::to_string(i));
        RegistryKey child;
        if (WriteNumber(key.Get(), name, i) != ERROR_SUCCESS ||
            RegCreateKeyExW(key.Get(), name.c_str(), 0, nullptr, 0, KEY_READ, nullptr, child.Put(),
                            nullptr) != ERROR_SUCCESS) {
            return Unexpected;
        }
    }
    return Done;
}

// churn <key>: writes value "a", then "b" with the same number, until it is killed.
int Churn(const WideString& path) {
    RegistryKey key;
    if (RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_READ | KEY_WRITE,
                        nullptr, key.Put(), nullptr) != ERROR_SUCCESS) {
        return Unexpected;
    }
    for (DWORD i = 1;; ++i) {
        if (WriteNumber(key.Get(), TEXT("a"), i) != ERROR_SUCCESS ||
            WriteNumber(key.Get(), TEXT("b"), i) != ERROR_SUCCESS) {
            return Unexpected;
        }
        if (i == 5) {
            std::puts("writing");
            std::fflush(stdout);
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) return WrongUse;
    const std::string job = argv[1];
    const WideString subject = FromUtf8(argv[2]);
    const auto number = [&](int index) {
        return argc > index ? std::strtoul(argv[index], nullptr, 10) : 0;
    };
    if (job == "exchange") return Exchange(subject, number(3));
    if (job == "absent") return Absent(subject);
    if (job == "abandon") return Abandon(subject, number(3));
    if (job == "hold") return Hold(subject, number(3));
    if (job == "write" && argc > 4) {
        return Write(subject, argv[3], static_cast<unsigned>(number(4)));
    }
    if (job == "churn") return Churn(subject);
    return WrongUse;
}
