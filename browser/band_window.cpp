#include "browser/band_window.h"

#include "browser/band_background.h"
#include "browser/browser_helper_object.h"
#include "browser/toolbar_state.h"
#include "browser/window_classes.h"
#include "capture/selection_capture.h"
#include "driver/convert_command.h"
#include "foundation/module_folder.h"
#include "options/options_dialog.h"
#include "options/reflection.h"
#include "platform/scope_exit.h"
#include "platform/unique_bstr.h"
#include "resources/resource_ids.h"

namespace {

constexpr WCHAR kSettingsKey[] = TEXT("Software\\Norvane Systems\\Quvada 6\\IE Addin");

constexpr UINT kClassStyle = CS_DBLCLKS | CS_HREDRAW | CS_VREDRAW;
constexpr DWORD kStyle = WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS | WS_CLIPCHILDREN;
static_assert(kClassStyle == 0x000B && kStyle == 0x56000000);

constexpr LRESULT kNothingDone = 1;

}  // namespace

BandWindow::BandWindow() noexcept : Settings(kSettingsKey) {}

BandWindow::~BandWindow() {
    Owner = nullptr;  // It is ending, and takes no references any more.
    if (ownsWindow_) DestroyWindow(Window);
}

bool BandWindow::Create(HWND parent, IWebBrowser2* browser) noexcept {
    const BandClassName name;
    WNDCLASSEXW info{};
    info.cbSize = sizeof info;
    info.style = kClassStyle;
    info.lpfnWndProc = Procedure;
    info.hInstance = ModuleInstance();
    info.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    info.hbrBackground = reinterpret_cast<HBRUSH>(ULONG_PTR{COLOR_WINDOW + 1});
    info.lpszClassName = name.text;
    if (RegisterWindowClass(info)) {
        CreateWindowExW(0, name.text, nullptr, kStyle, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT,
                        CW_USEDEFAULT, parent, nullptr, ModuleInstance(), this);
    }
    Browser = platform::ComPtr<IWebBrowser2>(browser);
    SHANDLE_PTR window = 0;
    if (browser && SUCCEEDED(browser->get_HWND(&window))) {
        BrowserWindow = reinterpret_cast<HWND>(window);
    }
    Toolbar.Browser = Browser;
    Toolbar.Band = this;
    return true;
}

LRESULT CALLBACK BandWindow::Procedure(HWND window, UINT message, WPARAM wParam,
                                       LPARAM lParam) noexcept {
    if (message == WM_NCCREATE) {
        auto* made = static_cast<BandWindow*>(
            reinterpret_cast<const CREATESTRUCTW*>(lParam)->lpCreateParams);
        made->Window = window;
        made->ownsWindow_ = true;
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(made));
    }
    auto* self = reinterpret_cast<BandWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (self && message == WM_NCDESTROY) {
        SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        self->Window = nullptr;
        self->ownsWindow_ = false;
        self = nullptr;
    }
    return self ? self->OnMessage(message, wParam, lParam)
                : DefWindowProcW(window, message, wParam, lParam);
}

LRESULT BandWindow::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    // A command lets messages through, one of which may give up the last reference.
    const platform::ComPtr<QVDIEaddinBHO> alive(Owner);
    const HWND window = Window;
    LRESULT result = 0;
    switch (message) {
        case WM_CREATE:
            // Without its control the band stays empty.
            if (Toolbar.Create(window)) Toolbar.Relayout();
            return 0;
        case WM_SIZE:
            OnSize();
            return 0;
        case WM_PAINT:
            OnPaint();
            return 1;
        case WM_ERASEBKGND:
            return DrawBandBackground(window, reinterpret_cast<HDC>(wParam)) ? 1 : 0;
        case WM_SHOWWINDOW:
            return 0;
        case WM_DESTROY:
            OnDestroy();
            return 0;
        case WM_COMMAND: {
            bool handled = true;
            result = OnCommand(wParam, handled);
            if (handled) return result;
            break;
        }
        default:
            break;
    }
    if (Reflect(message, wParam, lParam, result)) return result;
    return DefWindowProcW(window, message, wParam, lParam);
}

void BandWindow::OnSize() noexcept {
    RECT client{};
    GetClientRect(Window, &client);
    MoveWindow(Toolbar.Window, 0, 0, client.right, client.bottom, TRUE);
    SendMessageW(Toolbar.Window, WM_SIZE, 0, 0);
}

void BandWindow::OnPaint() noexcept {
    PAINTSTRUCT paint;
    if (BeginPaint(Window, &paint)) EndPaint(Window, &paint);
}

void BandWindow::OnDestroy() noexcept {
    // Also when another band is the active one: its tab finds nobody to follow until it changes.
    SharedToolbarState().SetActive(nullptr);
    DestroyWindow(Toolbar.Window);
}

LRESULT BandWindow::OnCommand(WPARAM commandId, bool& handled) noexcept {
    handled = false;
    if (commandId == QVD_COMMAND_OPTIONS) {
        ShowOptions();
        return kNothingDone;
    }
    const bool isSelection = commandId == QVD_COMMAND_CONVERT_SELECTION;
    if (!isSelection && commandId != QVD_COMMAND_BUTTON && commandId != QVD_COMMAND_CONVERT_PAGE) {
        return kNothingDone;
    }
    platform::UniqueBstr address;
    // An address that cannot be read is carried along as an empty one.
    if (Browser) (void)Browser->get_LocationURL(address.Put());
    return Convert(isSelection ? 1 : 0, {address.Get(), SysStringLen(address.Get())});
}

LRESULT BandWindow::Convert(int selectionOnly, AUX::WStringView pageUrl) noexcept {
    if (isBusy_) return kNothingDone;
    isBusy_ = true;
    const platform::ScopeExit ended([this]() noexcept { isBusy_ = false; });
    return ConvertCommand(Browser.Get(), Window, BrowserWindow, Settings, Job)
        .Run(selectionOnly, pageUrl);
}

void BandWindow::ShowOptions() noexcept {
    if (isBusy_ || FAILED(Settings.Load())) return;
    isBusy_ = true;
    const platform::ScopeExit ended([this]() noexcept { isBusy_ = false; });
    OptionsDialog dialog;
    dialog.Bind(Settings);
    (void)dialog.Run();  // What it was closed by changes nothing here.
}

bool BandWindow::CaptureSelection(AUX::WString& output) noexcept {
    return ::CaptureSelection(Browser.Get(), output);
}
