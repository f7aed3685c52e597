#pragma once

/// The calls on addresses for systems that lack them (shlwapi.h). Texts of any length.

#include "platform/base.h"

/// Joins a base address and an address relative to it, as RFC 3986, section 5, with the leave of
/// 5.2.2 to read "http:g" as relative to an http address. Beyond the RFC:
/// - blanks and control characters at the ends of both texts, and line breaks and tabs in them, do
///   not count; other characters stay as they are, escaped or not;
/// - `\` is `/` in the path of the file, ftp, http, https, ws and wss schemes;
/// - a local or network path is a file address, with blanks and `#` escaped; of a file address the
///   drive is the root;
/// - what follows javascript:, data:, mailto: and the like is no path and stays as it is;
/// - a base without a scheme counts only for an empty address, which gives the base itself.
/// The scheme comes out in small letters, the base's fragment is dropped.
/// \param combined  May be null. Left as it was when it is too small.
/// \param size      In: units that `combined` has room for. Out: units without the terminator; of a
///                  buffer that is null or too small the units needed, terminator included.
/// \param flags     0.
/// \return E_POINTER for a buffer that is null or too small; E_INVALIDARG.
HRESULT UrlCombineW(LPCWSTR base, LPCWSTR relative, LPWSTR combined, LPDWORD size,
                    DWORD flags) noexcept;

enum URLIS { URLIS_FILEURL = 3 };
/// Answers URLIS_FILEURL: whether the text begins with "file:", in any case. FALSE for other kinds.
BOOL UrlIsW(LPCWSTR text, URLIS kind) noexcept;

/// The file address of a path. `Z:\tmp\a` is "file:///tmp/a", the host's own address of that file,
/// so that its browsers open it; other drives stand in the address, the servers of network paths
/// are its authority. The prefix `\\?\` does not count. Blanks, `"#%&<>[]^{|}`, the grave accent
/// and the UTF-8 bytes of all beyond ASCII are escaped.
/// \param size  As for UrlCombineW, but a buffer has to be there.
/// \return S_FALSE and a copy for a text that is an address already; E_POINTER; E_INVALIDARG.
HRESULT UrlCreateFromPathW(LPCWSTR path, LPWSTR url, LPDWORD size, DWORD flags) noexcept;

/// The path of a file address; one without drive and server is of the host, on `Z:`. A query and a
/// fragment stay in the path. Escapes are UTF-8 bytes, or Latin-1 where they are not well-formed.
/// \param size  As for UrlCreateFromPathW.
/// \return E_POINTER; E_INVALIDARG, also for other addresses and for an escaped zero.
HRESULT PathCreateFromUrlW(LPCWSTR url, LPWSTR path, LPDWORD size, DWORD flags) noexcept;
