#include "driver/convert_command.h"

#include "capture/page_capture.h"
#include "capture/selection_capture.h"
#include "driver/clean_title.h"
#include "driver/document_height.h"
#include "driver/job_files.h"
#include "driver/protected_mode.h"
#include "driver/save_dialog.h"
#include "driver/start_converter.h"
#include "platform/shell.h"
#include "platform/unique_bstr.h"
#include "platform/user.h"

namespace {

constexpr LRESULT kLaunchTried = 0;
constexpr LRESULT kEndedBefore = 1;

bool CapturePageCopy(IHTMLDocument2* document, AUX::WStringView pageUrl,
                     AUX::WString& path) noexcept {
    return PageCapture().Capture(document, pageUrl, path);
}

constexpr CaptureOperations kRealCapture{CapturePageCopy, CaptureSelection};

}  // namespace

const CaptureOperations& CaptureOperations::Real() noexcept { return kRealCapture; }

ConvertCommand::ConvertCommand(IWebBrowser2* browser, HWND window, HWND browserWindow,
                               ConversionSettings& settings, ConversionJob& job,
                               const CaptureOperations& capture) noexcept
    : browser_(browser),
      window_(window),
      browserWindow_(browserWindow),
      settings_(settings),
      job_(job),
      capture_(capture) {}

LRESULT ConvertCommand::Run(int selectionOnly, AUX::WStringView pageUrl) noexcept {
    if (!browser_) return kEndedBefore;
    AUX::WString suggestedName;
    SuggestName(suggestedName);
    // Settings that cannot be had whole might lack the protection that the user asked for.
    if (FAILED(settings_.Load())) return kEndedBefore;
    settings_.SharedDataName.Clear();
    job_.Reset();

    BOOL flag = FALSE;
    protected_ = SUCCEEDED(IsProtectedMode(flag)) && flag;
    AUX::WString outputFile;
    if (protected_) {
        job_.AskOutputFile = true;
        job_.SuggestedName = std::move(suggestedName);
    } else if (!AskOutputFile(browserWindow_, suggestedName, outputFile)) {
        return kEndedBefore;
    }

    AUX::WString converterPath;
    if (!BuildConverterPath(converterPath)) return kEndedBefore;
    if (!PathFileExistsW(converterPath.Text())) {
        ShowMessage(TEXT("PageRender application could not be found - please reinstall."),
                    MB_ICONERROR);
        return kEndedBefore;
    }

    JobItem* const item = job_.AddItem();
    if (!item) return kEndedBefore;
    // An item without its address or its output file is none.
    if (!item->Source.Assign(pageUrl) || !item->OutputFile.Assign(outputFile)) return kEndedBefore;
    if (selectionOnly == 1) {
        if (!capture_.selection(browser_.Get(), item->SelectionHtml)) {
            ShowMessage(TEXT("No selection"), MB_ICONEXCLAMATION);
            return kEndedBefore;
        }
    } else {
        CapturePage(*item, pageUrl);
    }

    job_.AttachSettings(settings_.Security, settings_.RunApp);
    if (!StoreJob()) {
        if (item->SourceIsTemporary) DeleteCapturedPage(item->Source);
        return kEndedBefore;
    }
    (void)StartConverter(window_, converterPath, settings_, job_);  // Cleans up by itself.
    return kLaunchTried;
}

platform::ComPtr<IHTMLDocument2> ConvertCommand::Document() const noexcept {
    platform::ComPtr<IDispatch> document;
    if (FAILED(browser_->get_Document(document.Put()))) return {};
    return document.As<IHTMLDocument2>();
}

void ConvertCommand::SuggestName(AUX::WString& name) const noexcept {
    const auto document = Document();
    if (!document) return;
    platform::UniqueBstr title;
    (void)document->get_title(title.Put());  // Without one the name is empty.
    CleanTitle(title.Get(), SysStringLen(title.Get()), name);
}

void ConvertCommand::CapturePage(JobItem& item, AUX::WStringView pageUrl) noexcept {
    const auto document = Document();
    if (!document) return;
    settings_.WebPageTargetHeight = MeasureDocumentHeight(document.Get());
    if (!settings_.UseWebPageCopy) return;
    AUX::WString path;
    if (!capture_.page(document.Get(), pageUrl, path)) return;  // The address will do.
    item.Source = std::move(path);
    item.SourceIsTemporary = true;
}

bool ConvertCommand::StoreJob() noexcept {
    if (protected_) {
        AUX::WString path;
        if (!job_.WriteToFile(path)) return false;
        settings_.StorageFile = std::move(path);
        return true;
    }
    if (!job_.PublishShared()) return false;
    job_.SharedName(settings_.SharedDataName);
    if (!settings_.SharedDataName.IsEmpty()) return true;
    job_.SharedBlock.reset();  // Nobody will come for it.
    return false;
}

void ConvertCommand::ShowMessage(const WCHAR* text, UINT icon) const noexcept {
    MessageBoxW(window_, text, TEXT(""), MB_OK | icon);
}
