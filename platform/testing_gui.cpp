#include "platform/testing_gui.h"

#include "platform/modules.h"

namespace platform::testing {
namespace {

constexpr std::uint32_t kHeadBytes = 54;

void Append(std::string& bytes, std::uint32_t value, int count) {
    for (int i = 0; i < count; ++i) bytes += static_cast<char>(value >> 8 * i & 0xFF);
}

}  // namespace

std::string Picture::FileBytes() const {
    const auto imageBytes = static_cast<std::uint32_t>(pixels.size() * 4);
    std::string bytes = "BM";
    Append(bytes, kHeadBytes + imageBytes, 4);
    Append(bytes, 0, 4);
    Append(bytes, kHeadBytes, 4);
    Append(bytes, kHeadBytes - 14, 4);
    Append(bytes, static_cast<std::uint32_t>(width), 4);
    Append(bytes, static_cast<std::uint32_t>(-height), 4);  // rows from the top
    Append(bytes, 1, 2);
    Append(bytes, 32, 2);
    Append(bytes, 0, 4);
    Append(bytes, imageBytes, 4);
    bytes.append(16, '\0');
    for (const std::uint32_t pixel : pixels) Append(bytes, pixel, 4);
    return bytes;
}

std::vector<ShownMenuItem> ItemsOf(HMENU menu) {
    std::vector<ShownMenuItem> items;
    const int count = GetMenuItemCount(menu);
    for (int i = 0; i < count; ++i) {
        const auto position = static_cast<UINT>(i);
        WCHAR text[256];
        const int length = GetMenuStringW(menu, position, text, 256, MF_BYPOSITION);
        const UINT state = GetMenuState(menu, position, MF_BYPOSITION);
        const bool isSeparator = (state & MF_SEPARATOR) != 0;
        items.push_back({isSeparator ? 0 : GetMenuItemID(menu, i),
                         WideString(text, static_cast<std::size_t>(length)),
                         (state & (MF_GRAYED | MF_DISABLED)) == 0});
    }
    return items;
}

void RunMessages() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

struct DialogScript::State {
    std::vector<Step> steps;
    std::size_t next;
    State* older;
    UINT_PTR timer;
};

namespace {

thread_local DialogScript::State* newestScript = nullptr;

/// Whether a user could work at a window, and it is a dialog that the program made.
bool IsOpenDialog(HWND window) {
    WCHAR name[16] = {};
    if (!IsWindowVisible(window) || !IsWindowEnabled(window)) return false;
    if (GetClassNameW(window, name, 16) == 0 || WideView(name) != TEXT("#32770")) return false;
    // The system makes its message boxes itself.
    const auto maker = reinterpret_cast<HMODULE>(GetWindowLongPtrW(window, GWLP_HINSTANCE));
    return maker != GetModuleHandleW(TEXT("user32.dll"));
}

/// The dialog that a user would see before him; null if there is none.
HWND ActiveDialog() {
    const HWND active = GetActiveWindow();
    return active && IsOpenDialog(active) ? active : ActivateOwnWindow(IsOpenDialog);
}

void CALLBACK RunNextStep(HWND, UINT, UINT_PTR, DWORD) {
    const HWND dialog = newestScript ? ActiveDialog() : nullptr;
    if (!dialog) return;
    DialogScript::State& script = *newestScript;
    if (script.next == script.steps.size()) {
        EndDialog(dialog, -1);
        return;
    }
    script.steps[script.next++](dialog);
}

}  // namespace

DialogScript::DialogScript(std::vector<Step> steps)
    : state_(new State{std::move(steps), 0, newestScript, 0}) {
    newestScript = state_.get();
    state_->timer = SetTimer(nullptr, 0, USER_TIMER_MINIMUM, RunNextStep);
}
DialogScript::~DialogScript() {
    KillTimer(nullptr, state_->timer);
    newestScript = state_->older;
}
bool DialogScript::IsDone() const { return state_->next == state_->steps.size(); }

HeldKey::HeldKey(int key) {
    GetKeyboardState(before_.data());
    std::array<BYTE, 256> keys = before_;
    keys[static_cast<std::size_t>(key)] = 0x80;
    SetKeyboardState(keys.data());
}
HeldKey::~HeldKey() { SetKeyboardState(before_.data()); }

void PostKey(WPARAM key) {
    const HWND focus = GetFocus();
    PostMessageW(focus, WM_KEYDOWN, key, 1);
    PostMessageW(focus, WM_KEYUP, key, static_cast<LPARAM>(0xC0000001));
}

void SendText(WideView text) {
    for (const WCHAR unit : text) SendMessageW(GetFocus(), WM_CHAR, unit, 1);
}

}  // namespace platform::testing
