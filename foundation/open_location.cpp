#include "foundation/open_location.h"

#include "foundation/path_characters.h"
#include "foundation/urls.h"
#include "platform/scope_exit.h"
#include "platform/shell.h"
#include "platform/user.h"

namespace AUX {
namespace {

constexpr WStringView kMailScheme = TEXT("mailto:");
constexpr const WCHAR* kBrowser = TEXT("iexplore.exe");
constexpr DWORD kHandlerUnits = 2047;

// Whether an '@' has something before it, and that cannot be a part of a path or an address.
bool IsMailAddress(WStringView text) noexcept {
    const std::size_t at = text.find(TEXT('@'), 1);
    return at != WStringView::npos &&
           text.substr(0, at).find_first_of(TEXT("/:\\")) == WStringView::npos;
}

bool IsFileAddress(const WCHAR* text) noexcept { return StrStrIW(text, TEXT("file:///")) == text; }

bool HasFragment(WStringView text) noexcept {
    const std::size_t mark = text.rfind(TEXT('#'));
    return mark != WStringView::npos && mark > 0 && mark + 1 < text.size();
}

bool Execute(const WCHAR* file, const WCHAR* parameters, ULONG mask) noexcept {
    SHELLEXECUTEINFOW information = {};
    information.cbSize = sizeof information;
    information.fMask = mask;
    information.lpVerb = TEXT("open");
    information.lpFile = file;
    information.lpParameters = parameters;
    information.nShow = SW_SHOWNORMAL;
    return ShellExecuteExW(&information) != FALSE;
}

// Handlers of files do not know fragments; a browser does.
bool OpenByBrowserOfWeb(const WString& location) noexcept {
    WString handler;
    WString escaped;
    if (!DefaultHandlerOf(TEXT("http"), handler)) return false;
    // Unescaped if that fails: EscapeUrl gives it so.
    (void)EscapeUrl(location.Text(), escaped, kEscapeBrowserMode);
    const WString& parameters = escaped.IsEmpty() ? location : escaped;
    return Execute(handler.Text(), parameters.Text(), 0);
}

}  // namespace

bool DefaultHandlerOf(const WCHAR* name, WString& handler) noexcept {
    WCHAR buffer[kHandlerUnits] = {};
    DWORD size = kHandlerUnits;
    const bool isFound = name && *name &&
                         SUCCEEDED(AssocQueryStringW(ASSOCF_NONE, ASSOCSTR_EXECUTABLE, name,
                                                     TEXT("open"), buffer, &size)) &&
                         handler.Assign(WStringView(buffer));
    if (!isFound) handler.Free();
    return !handler.IsEmpty();
}

bool OpenLocation(const WCHAR* location, UseBrowser useBrowser) noexcept {
    const WStringView given(location);
    WString text;
    if (given.empty() || (IsMailAddress(given) && !text.Append(kMailScheme)) ||
        !text.Append(given)) {
        return false;
    }
    const HCURSOR oldCursor = SetCursor(LoadCursorW(nullptr, IDC_WAIT));
    const platform::ScopeExit restore([oldCursor] { SetCursor(oldCursor); });
    if (useBrowser == UseBrowser::Yes) {
        return Execute(kBrowser, text.Text(), 0) || OpenLocation(location, UseBrowser::No);
    }
    const bool hasFragment = IsFileAddress(location) && HasFragment(text);
    if (Execute(text.Text(), nullptr, hasFragment ? SEE_MASK_FLAG_NO_UI : 0)) return true;
    return hasFragment && OpenByBrowserOfWeb(text);
}

}  // namespace AUX
