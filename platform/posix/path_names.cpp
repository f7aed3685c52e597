#include <algorithm>
#include <vector>

#include "platform/posix/case_fold.h"
#include "platform/posix/faults.h"
#include "platform/shell.h"
#include "platform/user.h"

namespace platform {
namespace {

bool IsEmpty(LPCWSTR text) { return !text || !*text; }

/// The length of what ".." never takes back: "C:\", "C:", "\\", "\" or nothing.
std::size_t RootLength(WideView path) {
    if (path.size() > 1 && path[1] == ':') return path.size() > 2 && path[2] == '\\' ? 3 : 2;
    if (path.substr(0, 2) == TEXT("\\\\")) return 2;
    return path.substr(0, 1) == TEXT("\\") ? 1 : 0;
}

/// The root that a rooted name starts at: a drive, or server and share.
WideView RootOf(WideView path) {
    if (path.substr(0, 2) != TEXT("\\\\")) return path.substr(0, RootLength(path));
    const std::size_t share = path.find('\\', 2);
    return path.substr(0, share == WideView::npos ? share : path.find('\\', share + 1));
}

WideString WithoutDots(WideView path) {
    const std::size_t root = RootLength(path);
    std::vector<WideView> names;
    for (std::size_t at = root; at <= path.size();) {
        const std::size_t end = std::min(path.find('\\', at), path.size());
        const WideView name = path.substr(at, end - at);
        at = end + 1;
        if (name == TEXT("..")) {
            if (!names.empty() && names.back() != TEXT("..")) {
                names.pop_back();
            } else if (root == 0) {
                names.push_back(name);  // It may still lead out of the current folder.
            }
        } else if (name != TEXT(".")) {
            names.push_back(name);
        }
    }
    WideString text(path.substr(0, root));
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (i > 0) text += '\\';
        text += names[i];
    }
    return text.empty() ? TEXT("\\") : text;
}

WideString Combined(LPCWSTR folder, LPCWSTR name) {
    if (IsEmpty(name)) return folder ? WideString(folder) : WideString();
    const WideView text(name);
    const bool isRooted = text[0] == '\\' && text.substr(0, 2) != TEXT("\\\\");
    if (IsEmpty(folder) || (!isRooted && !PathIsRelativeW(name))) return WideString(text);
    WideString whole(isRooted ? RootOf(folder) : WideView(folder));
    if (whole.empty() || whole.back() != '\\') whole += '\\';
    return whole.append(isRooted ? text.substr(1) : text);
}

}  // namespace
}  // namespace platform

BOOL PathIsRelativeW(LPCWSTR path) noexcept {
    if (platform::IsEmpty(path)) return TRUE;
    return path[0] == '\\' || path[1] == ':' ? FALSE : TRUE;
}

LPWSTR PathCombineW(LPWSTR path, LPCWSTR folder, LPCWSTR name) noexcept {
    using namespace platform;
    if (!path) return nullptr;
    if (!InjectFault("PathCombineW") && (folder || name)) {
        const WideString whole = WithoutDots(Combined(folder, name));
        if (whole.size() < MAX_PATH) {
            path[whole.copy(path, whole.size())] = 0;
            return path;
        }
    }
    *path = 0;
    return nullptr;
}

LPWSTR StrStrIW(LPCWSTR text, LPCWSTR sought) noexcept {
    using namespace platform;
    if (IsEmpty(text) || IsEmpty(sought)) return nullptr;
    const std::size_t at = FoldCase(text).find(FoldCase(sought));
    return at == WideString::npos ? nullptr : const_cast<LPWSTR>(text) + at;
}

DWORD CharUpperBuffW(LPWSTR text, DWORD length) noexcept {
    const platform::WideString upper = platform::FoldCase({text, length});
    upper.copy(text, length);
    return length;
}

LPWSTR CharUpperW(LPWSTR text) noexcept {
    using namespace platform;
    const auto value = reinterpret_cast<UINT_PTR>(text);
    if (value > 0xFFFF) {
        const WideString upper = FoldCase(text);
        upper.copy(text, upper.size());
        return text;
    }
    const auto unit = static_cast<WCHAR>(value);
    return reinterpret_cast<LPWSTR>(UINT_PTR{FoldCase({&unit, 1})[0]});
}
