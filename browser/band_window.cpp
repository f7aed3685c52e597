#include "browser/band_window.h"

#include "capture/selection_capture.h"
#include "driver/convert_command.h"
#include "platform/scope_exit.h"
#include "platform/unique_bstr.h"

namespace {

constexpr WCHAR kSettingsKey[] = TEXT("Software\\Norvane Systems\\Quvada 6\\IE Addin");

// The ids of the button and of the entries of its menu.
constexpr WPARAM kButton = 1;
constexpr WPARAM kConvertPage = 0x8011;
constexpr WPARAM kConvertSelection = 0x8015;

constexpr LRESULT kNothingDone = 1;

}  // namespace

BandWindow::BandWindow() noexcept : Settings(kSettingsKey) {}

LRESULT BandWindow::OnCommand(WPARAM commandId, bool& handled) noexcept {
    handled = false;
    const bool isSelection = commandId == kConvertSelection;
    if (!isSelection && commandId != kButton && commandId != kConvertPage) return kNothingDone;
    platform::UniqueBstr address;
    // An address that cannot be read is carried along as an empty one.
    if (Browser) (void)Browser->get_LocationURL(address.Put());
    return Convert(isSelection ? 1 : 0, {address.Get(), SysStringLen(address.Get())});
}

LRESULT BandWindow::Convert(int selectionOnly, AUX::WStringView pageUrl) noexcept {
    if (isConverting_) return kNothingDone;
    isConverting_ = true;
    const platform::ScopeExit ended([this]() noexcept { isConverting_ = false; });
    return ConvertCommand(Browser.Get(), Window, BrowserWindow, Settings, Job)
        .Run(selectionOnly, pageUrl);
}

bool BandWindow::CaptureSelection(AUX::WString& output) noexcept {
    return ::CaptureSelection(Browser.Get(), output);
}
