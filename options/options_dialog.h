#pragma once

#include "options/advanced_tab.h"
#include "options/pdf_page_tab.h"
#include "options/security_tab.h"

/// The dialog that edits a ConversionSettings in three tabs. OK writes the record and saves it;
/// Reset sets the record to its defaults, also where no control shows it, and saves nothing. Cancel
/// saves nothing either, and leaves a record that was reset as it is: load it again before use.
/// Made for one run, on the thread of the record.
class OptionsDialog {
public:
    OptionsDialog() noexcept = default;
    OptionsDialog(const OptionsDialog&) = delete;
    OptionsDialog& operator=(const OptionsDialog&) = delete;

    /// Comes before Run. The record must outlive the dialog, and have its shared records.
    void Bind(ConversionSettings& settings) noexcept { settings_ = &settings; }

    /// Shows the dialog and runs messages until it ends. The active window is disabled meanwhile,
    /// if there is one. \return IDOK or IDCANCEL; less if the dialog cannot be shown.
    INT_PTR Run() noexcept;

private:
    static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM wParam,
                                      LPARAM lParam) noexcept;
    /// Changes nothing of the tab control, and forgets it when it ends.
    static LRESULT CALLBACK TabProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam,
                                         UINT_PTR id, DWORD_PTR self) noexcept;
    /// Sees the keys before the dialog does.
    static LRESULT CALLBACK FilterKeys(int code, WPARAM wParam, LPARAM message) noexcept;
    void OnInit(HWND window) noexcept;
    bool OnCommand(int id) noexcept;
    void OnOk() noexcept;
    void SelectTab(int tab) noexcept;
    void GoToNextTab(bool isBackwards) noexcept;
    void LayOutPages() noexcept;

    HWND Window = nullptr;
    HWND TabControl = nullptr;
    ConversionSettings* settings_ = nullptr;
    PdfPageTab pdfPage_;
    AdvancedTab advanced_;
    SecurityTab security_;
};
