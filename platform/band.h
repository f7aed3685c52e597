#pragma once

/// What a browser and the add-ins in it ask of each other: sites, services, bands, events.

#include "platform/browser.h"
#include "platform/user.h"

#ifdef _WIN32

#include <exdispid.h>
#include <mshtmhst.h>
#include <ocidl.h>
#include <servprov.h>
#include <shlguid.h>
#include <shlobj.h>

#else

#include "platform/posix/band_types.h"

#endif

namespace platform {

/// The service by which a site leads to the browser's top, and there to the tab's IWebBrowser2.
inline constexpr GUID kTopLevelBrowserService = {
    0x4C96BE40, 0x915C, 0x11CF, {0x99, 0xD3, 0x00, 0xAA, 0x00, 0x4A, 0xE8, 0x37}};
inline constexpr GUID kWebBrowserService = {
    0x0002DF05, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

/// The id of the browser's events. They are known by numbers only: there is no table of them.
inline constexpr IID kBrowserEvents = {
    0x34A715A0, 0x6587, 0x11D0, {0x92, 0x4A, 0x00, 0x20, 0xAF, 0xC7, 0xAC, 0x4D}};
inline constexpr GUID kBrowserEventLibrary = {
    0xEAB22AC0, 0x30C1, 0x11CF, {0xA7, 0xEB, 0x00, 0x00, 0xC0, 0x5B, 0xAE, 0x0B}};

}  // namespace platform
