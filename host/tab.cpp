#include "host/tab.h"

#include <utility>

#include "browser/addin_class.h"
#include "host/load_module.h"
#include "host/window_class.h"

namespace host {
namespace {

// A window that nobody sees needs some size, for toolbars are laid out in it.
constexpr int kWidth = 1024;
constexpr int kHeight = 768;

}  // namespace

Tab::~Tab() {
    if (browser_) browser_->CloseBars();
    if (bar_) bar_->Close();
    for (const auto& helper : helpers_) (void)helper->SetSite(nullptr);
    helpers_.clear();
    if (window_) DestroyWindow(window_);
}

bool Tab::MakeWindow() noexcept {
    window_ = CreateWindowExW(0, WindowClass(TEXT("QuvadaHostTab"), DefWindowProcW), TEXT("Quvada"),
                              WS_OVERLAPPEDWINDOW, 0, 0, kWidth, kHeight, nullptr, nullptr, nullptr,
                              nullptr);
    return window_ != nullptr;
}

HRESULT Tab::MakeHelpers(std::string& error) {
    HRESULT last = S_OK;
    for (const CLSID& classId : addins_.Helpers()) {
        platform::ComPtr<IObjectWithSite> helper;
        const HRESULT result = addins_.Make(classId, helper);
        if (FAILED(result)) {
            // One add-in's failure is not the others'.
            if (IsEqualGUID(classId, kAddinClassId)) {
                last = result;
                error = "the add-in cannot be made: " + CodeText(result) + ", from " +
                        addins_.ServerOf(classId);
            }
            continue;
        }
        helpers_.push_back(helper);
        (void)helper->SetSite(static_cast<IWebBrowser2*>(browser_.Get()));
    }
    return last;
}

bool Tab::Open(std::shared_ptr<PageDocument> page, std::string& error) {
    if (!MakeWindow()) {
        error = "the tab has no window (error " + std::to_string(GetLastError()) + ")";
        return false;
    }
    bar_ = std::make_unique<BandBar>(addins_, window_);
    browser_ = platform::MakeObject<Browser>(std::move(page), window_, bar_.get());
    if (!browser_) throw std::bad_alloc();
    bar_->SetBrowser(browser_.Get());
    error.clear();
    if (FAILED(MakeHelpers(error))) return false;
    if (bar_->WindowOf(kAddinClassId)) return true;
    error = "the add-in has no toolbar: it is not installed as one, or could not make it";
    return false;
}

std::vector<platform::WideString> Tab::Press(UINT command,
                                             const std::optional<platform::WideString>& saveAs) {
    const platform::testing::MessageBoxRecorder messages;
    std::optional<platform::testing::SaveDialogScript> saved;
    if (saveAs) saved.emplace(*saveAs);
    (void)SendMessageW(bar_->WindowOf(kAddinClassId), WM_COMMAND, command, 0);
    std::vector<platform::WideString> said;
    for (const platform::testing::ShownMessage& message : messages.Shown()) {
        said.push_back(message.text);
    }
    return said;
}

HRESULT Tab::ShowToolbar(bool shows) { return bar_->Show(kAddinClassId, shows); }

bool Tab::ShowsToolbar() const noexcept { return bar_->IsShown(kAddinClassId); }

}  // namespace host
