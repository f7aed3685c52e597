#include "platform/modules.h"
#include "platform/posix/faults.h"
#include "platform/posix/last_error.h"
#include "platform/posix/user/window.h"

namespace platform::user {
namespace {

constexpr LONG kDefaultPlace = 26;
constexpr LONG kDefaultWidth = 768;
constexpr LONG kDefaultHeight = 576;

HWND Refuse(DWORD error) {
    SetLastError(error);
    return nullptr;
}

/// Replaces CW_USEDEFAULT: of children and pop-ups it is 0.
void SetDefaults(CREATESTRUCTW& wanted) {
    const bool isOverlapped =
        (static_cast<DWORD>(wanted.style) & (WS_CHILD | WS_POPUP)) == WS_OVERLAPPED;
    if (wanted.x == CW_USEDEFAULT) wanted.x = wanted.y = isOverlapped ? kDefaultPlace : 0;
    if (wanted.y == CW_USEDEFAULT) wanted.y = 0;
    if (wanted.cx != CW_USEDEFAULT && wanted.cy != CW_USEDEFAULT) return;
    wanted.cx = isOverlapped ? kDefaultWidth : 0;
    wanted.cy = isOverlapped ? kDefaultHeight : 0;
}

/// Takes a window into the tree. Null with the error code set.
HWND Add(const CREATESTRUCTW& wanted) {
    const Lock lock(UserLock());
    WindowClass* windowClass = FindClass(wanted.hInstance, wanted.lpszClass);
    if (!windowClass) return Refuse(ERROR_CANNOT_FIND_WND_CLASS);
    Window* parent = wanted.hwndParent ? FindWindow(wanted.hwndParent) : nullptr;
    if (wanted.hwndParent && !parent) return nullptr;
    const bool isChild = (static_cast<DWORD>(wanted.style) & (WS_CHILD | WS_POPUP)) == WS_CHILD;
    if (isChild && !parent) return Refuse(ERROR_TLW_WITH_WSCHILD);
    if (parent && parent->isDestroying) return Refuse(ERROR_INVALID_WINDOW_HANDLE);
    auto window = std::make_unique<Window>();
    window->thread = &ThisThread();
    window->windowClass = windowClass;
    window->procedure = windowClass->info.lpfnWndProc;
    window->extra.resize(static_cast<std::size_t>(windowClass->info.cbWndExtra));
    window->instance = wanted.hInstance;
    // It becomes visible when it is shown at last.
    window->style = static_cast<DWORD>(wanted.style) & ~WS_VISIBLE;
    if (!isChild) window->style |= WS_CLIPSIBLINGS;
    window->exStyle = wanted.dwExStyle;
    window->parent = isChild ? parent : nullptr;
    window->owner = !isChild && parent ? &TopOf(*parent) : nullptr;
    if (isChild) {
        window->id = reinterpret_cast<UINT_PTR>(wanted.hMenu);
    } else {
        window->menu = wanted.hMenu;
    }
    window->place = {wanted.x, wanted.y, wanted.x + wanted.cx, wanted.y + wanted.cy};
    window->client = {0, 0, wanted.cx, wanted.cy};
    return AddWindow(std::move(window)).handle;
}

/// Tells the windows above of a child that comes or goes.
void NotifyParents(HWND handle, UINT event) {
    std::vector<HWND> above;
    UINT_PTR id = 0;
    {
        const Lock lock(UserLock());
        const Window* window = FindWindow(handle);
        if (!window || window->exStyle & WS_EX_NOPARENTNOTIFY) return;
        id = window->id;
        for (; window->parent; window = window->parent) above.push_back(window->parent->handle);
    }
    for (const HWND parent : above) {
        SendMessageW(parent, WM_PARENTNOTIFY, MAKEWPARAM(event, id),
                     reinterpret_cast<LPARAM>(handle));
    }
}

/// Tells a new window its size and its place.
void SendFirstPlace(HWND handle) {
    RECT client{};
    POINT corner{};
    {
        const Lock lock(UserLock());
        const Window* window = FindWindow(handle);
        if (!window) return;
        client = window->client;
        corner = {window->place.left + client.left, window->place.top + client.top};
    }
    SendMessageW(handle, WM_SIZE, SIZE_RESTORED, MAKELPARAM(WidthOf(client), HeightOf(client)));
    SendMessageW(handle, WM_MOVE, 0, MAKELPARAM(corner.x, corner.y));
}

template <class Test>
std::vector<HWND> HandlesOf(const std::vector<Window*>& windows, Test test) {
    std::vector<HWND> handles;
    for (Window* window : windows) {
        if (test(*window)) handles.push_back(window->handle);
    }
    return handles;
}

std::vector<HWND> ChildrenOf(HWND handle) {
    const Lock lock(UserLock());
    const Window* window = FindWindow(handle);
    if (!window) return {};
    return HandlesOf(window->children, [](const Window&) { return true; });
}

void SendDestroy(HWND window) {
    SendMessageW(window, WM_DESTROY, 0, 0);
    for (const HWND child : ChildrenOf(window)) SendDestroy(child);
}

void Remove(HWND handle) {
    for (const HWND child : ChildrenOf(handle)) Remove(child);
    SendMessageW(handle, WM_NCDESTROY, 0, 0);
    const Lock lock(UserLock());
    Window* window = FindWindow(handle);
    if (!window) return;
    for (; !window->children.empty();) RemoveWindow(*window->children.back());
    RemoveWindow(*window);
}

bool BeginDestroying(HWND handle) {
    const Lock lock(UserLock());
    Window* window = FindWindow(handle);
    if (!window) return false;
    if (window->thread != &ThisThread()) return Fail(ERROR_ACCESS_DENIED);
    // Who destroys a window that is on its way already gets what it wanted.
    if (window->isDestroying) return Fail(ERROR_INVALID_WINDOW_HANDLE);
    window->isDestroying = true;
    return true;
}

}  // namespace
}  // namespace platform::user

using namespace platform::user;

HWND CreateWindowExW(DWORD exStyle, LPCWSTR name, LPCWSTR text, DWORD style, int x, int y,
                     int width, int height, HWND parent, HMENU menu, HINSTANCE instance,
                     LPVOID parameter) noexcept {
    if (platform::InjectFault("CreateWindowExW")) return nullptr;
    CREATESTRUCTW wanted{
        parameter, instance, menu,   parent, height, width, y, x, static_cast<LONG>(style),
        text,      name,     exStyle};
    if (!instance) wanted.hInstance = GetModuleHandleW(nullptr);
    SetDefaults(wanted);
    const HWND window = Add(wanted);
    if (!window) return nullptr;
    const auto parameters = reinterpret_cast<LPARAM>(&wanted);
    if (!SendMessageW(window, WM_NCCREATE, 0, parameters)) {
        Remove(window);
        return nullptr;
    }
    CalculateClient(window);
    if (SendMessageW(window, WM_CREATE, 0, parameters) == -1) {
        DestroyWindow(window);
        return nullptr;
    }
    SendFirstPlace(window);
    if (style & WS_CHILD) NotifyParents(window, WM_CREATE);
    if (style & WS_VISIBLE) ShowWindow(window, SW_SHOW);
    return IsWindow(window) ? window : nullptr;
}

BOOL DestroyWindow(HWND handle) noexcept {
    if (!BeginDestroying(handle)) return FALSE;
    if (GetWindowLongPtrW(handle, GWL_STYLE) & WS_CHILD) NotifyParents(handle, WM_DESTROY);
    ShowWindow(handle, SW_HIDE);
    LeaveInput(handle);
    std::vector<HWND> owned;
    {
        const Lock lock(UserLock());
        const Window* window = FindWindow(handle);
        if (!window) return TRUE;  // It went with its parent meanwhile.
        owned = HandlesOf(TopLevels(), [&](const Window& other) {
            return other.owner == window && other.thread == &ThisThread();
        });
    }
    for (const HWND other : owned) DestroyWindow(other);
    SendDestroy(handle);
    Remove(handle);
    return TRUE;
}

BOOL IsWindow(HWND handle) noexcept {
    const Lock lock(UserLock());
    return FindWindow(handle) != nullptr;
}
