#pragma once

#include <cstdint>

#include "foundation/wstring.h"
#include "settings/run_app_settings.h"
#include "settings/security_settings.h"
#include "settings/shared_ref.h"

/// How a page becomes a PDF, and where that is kept in the current user's registry. One for each
/// browser tab; belongs to the tab's user-interface thread. Lengths are points of 1/72 inch,
/// whatever unit the user sees. The defaults stand in the table of rows (setting_rows.cpp).
///
/// Security and RunApp are shared with the job of the tab. When memory runs out at construction one
/// of them is null: the record then works without it, but is neither loaded nor saved, so that no
/// document loses a protection that the user had set.
class ConversionSettings {
public:
    bool RunPDFApp = false;
    bool GenerateLinks = false;
    std::uint32_t PDFSpecification = 0;  ///< 0x10000 + the minor version of PDF 1.x.
    std::uint32_t CompressionLevel = 0;  ///< Low, medium, high.
    bool LandscapeOrientation = false;
    bool UseWebPageCopy = false;      ///< Capture the page rather than hand over its address.
    bool ConvertAttachments = false;  ///< Stored only.
    bool HiddenRun = false;           ///< Not stored.
    bool UseWebPageBackgroundColor = false;
    std::uint32_t PaperSize = 0;            ///< Row of the dialog's list of papers.
    std::uint32_t WebPageTargetWidth = 0;   ///< Pixels.
    std::uint32_t WebPageTargetHeight = 0;  ///< Pixels; measured by each conversion, not stored.
    std::uint32_t Units = 0;                ///< That the dialog shows: points, inches, mm.
    std::uint32_t LoadDelay = 0;            ///< Milliseconds.
    double PageWidth = 0;
    double PageHeight = 0;
    double MarginTop = 0;
    double MarginBottom = 0;
    double MarginLeft = 0;
    double MarginRight = 0;
    SharedRef<SecuritySettings> Security;
    SharedRef<RunAppSettings> RunApp;
    AUX::WString SharedDataName;  ///< The job's shared memory object; set by each command.
    AUX::WString StorageFile;     ///< The job's file; wins over SharedDataName.
    AUX::WString CeArgument;
    AUX::WString KeyPath;  ///< Below HKEY_CURRENT_USER.

    /// Sets the defaults. A null or empty path leaves KeyPath empty: there is no key then, and
    /// loading and saving do nothing. Of a path that memory does not suffice for Security is null.
    explicit ConversionSettings(const WCHAR* keyPath) noexcept;
    ConversionSettings(const ConversionSettings&) = delete;
    ConversionSettings& operator=(const ConversionSettings&) = delete;

    /// Brings all fields but KeyPath back, in the shared records that there are. Does not touch
    /// the registry. A text that memory does not suffice for becomes empty.
    void ResetToDefaults() noexcept;

    /// Reads every value that the registry holds over the record; a missing value, or one of
    /// another type, leaves its field, but passwords become empty. Lengths under their old names
    /// are taken over and those values deleted. A key that cannot be opened for reading and writing
    /// changes nothing.
    /// \return E_FAIL, with nothing changed, if a shared record is missing; E_OUTOFMEMORY, with all
    ///         else read, if there is a text or password that memory does not suffice for;
    ///         otherwise S_OK.
    [[nodiscard]] HRESULT Load() noexcept;

    /// Writes every stored field, and makes the key if need be. A key or value that cannot be
    /// written is passed over.
    /// \return E_FAIL, with nothing written, if a shared record is missing; otherwise S_OK.
    [[nodiscard]] HRESULT Save() noexcept;

    /// Replaces `output` with the converter's arguments. What memory does not suffice for is left
    /// out.
    void BuildCommandLine(AUX::WStringView firstText, AUX::WStringView secondText,
                          AUX::WString& output) const noexcept;

    /// Deletes the file that StorageFile names, if it names one, and empties StorageFile also when
    /// the file cannot be deleted.
    void DeleteStorageFile() noexcept;
};
