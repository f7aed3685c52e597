#pragma once

/// Resources for systems whose modules are ELF files: the compiled resources (.res) lie in the
/// module's section ".rsrc". Of a resource in several languages the first one counts.

#include "platform/base.h"

struct HRSRC__;
using HRSRC = HRSRC__*;

#define MAKEINTRESOURCEW(number) \
    (reinterpret_cast<LPCWSTR>(static_cast<ULONG_PTR>(static_cast<WORD>(number))))
#define IS_INTRESOURCE(name) ((reinterpret_cast<ULONG_PTR>(name) >> 16) == 0)
#define RT_BITMAP MAKEINTRESOURCEW(2)
#define RT_MENU MAKEINTRESOURCEW(4)
#define RT_DIALOG MAKEINTRESOURCEW(5)

/// \param module      A loaded module, also one loaded as data; null is the program.
/// \param name, type  A number (MAKEINTRESOURCEW), or a text in which the case of A to Z does not
///                    count and "#12" stands for the number 12.
/// \return null with ERROR_RESOURCE_DATA_NOT_FOUND (the module has none at all),
///         ERROR_RESOURCE_TYPE_NOT_FOUND, ERROR_RESOURCE_NAME_NOT_FOUND or ERROR_MOD_NOT_FOUND.
HRSRC FindResourceW(HMODULE module, LPCWSTR name, LPCWSTR type) noexcept;
/// The resource's bytes, which last as long as the module. Nothing has to be given back.
HGLOBAL LoadResource(HMODULE module, HRSRC resource) noexcept;
LPVOID LockResource(HGLOBAL loaded) noexcept;
/// The resource's size in bytes; 0 for null.
DWORD SizeofResource(HMODULE module, HRSRC resource) noexcept;
