#include "options/pdf_page_tab.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "options/bindings.h"
#include "platform/controls.h"
#include "resources/resource_ids.h"
#include "settings/thousandths.h"
#include "settings/vocabularies.h"

namespace {

using Page = ConversionSettings;

/// Limits in thousandths of a point.
struct LengthRow {
    int edit;
    int upDown;
    std::int32_t minimum;
    std::int32_t maximum;
    SettingField<double> field;
};

constexpr std::int32_t kShortestPage = 5;
constexpr std::int32_t kLongestPage = 10'000'000;
constexpr std::int32_t kWidestMargin = 1'000'000;

constexpr LengthRow kLengthRows[] = {
    {QVD_EDIT_WIDTH, QVD_UP_DOWN_WIDTH, kShortestPage, kLongestPage,
     SettingFieldOf<&Page::PageWidth>},
    {QVD_EDIT_HEIGHT, QVD_UP_DOWN_HEIGHT, kShortestPage, kLongestPage,
     SettingFieldOf<&Page::PageHeight>},
    {QVD_EDIT_TOP, QVD_UP_DOWN_TOP, 0, kWidestMargin, SettingFieldOf<&Page::MarginTop>},
    {QVD_EDIT_BOTTOM, QVD_UP_DOWN_BOTTOM, 0, kWidestMargin, SettingFieldOf<&Page::MarginBottom>},
    {QVD_EDIT_LEFT, QVD_UP_DOWN_LEFT, 0, kWidestMargin, SettingFieldOf<&Page::MarginLeft>},
    {QVD_EDIT_RIGHT, QVD_UP_DOWN_RIGHT, 0, kWidestMargin, SettingFieldOf<&Page::MarginRight>},
};
constexpr int kWidth = 0;
constexpr int kHeight = 1;

constexpr ListBinding kPaper[] = {{QVD_LIST_PAPER, SettingFieldOf<&Page::PaperSize>}};

constexpr std::uint32_t kNoRow = 0xFFFFFFFF;
constexpr std::uint32_t kCustomPaper = 0;

constexpr std::int32_t WholePoints(std::uint32_t points) noexcept {
    return static_cast<std::int32_t>(points * 1000);
}

}  // namespace

PdfPageTab::PdfPageTab() noexcept : OptionPage(QVD_DIALOG_PDF_PAGE, TabTexture::Yes) {
    static_assert(std::size(kLengthRows) == kLengths);
}

void PdfPageTab::OnInit() noexcept {
    for (int i = 0; i < kLengths; ++i) {
        const LengthRow& row = kLengthRows[i];
        lengths_[i].Attach(GetDlgItem(Window, row.edit));
        lengths_[i].SetUpDown(GetDlgItem(Window, row.upDown), static_cast<UINT>(row.upDown));
        lengths_[i].Configure(row.minimum, row.maximum, 10, 1, 10, 1);
    }
    FillListFrom(Window, QVD_LIST_UNITS, UnitsTable);
    SelectRow(Window, QVD_LIST_UNITS, 0);
    ApplyUnit();
    FillListFrom(Window, QVD_LIST_PAPER, PaperSizeTable);
}

void PdfPageTab::Show(ConversionSettings& settings) noexcept {
    for (int i = 0; i < kLengths; ++i) {
        const std::uint32_t thousandths = ThousandthsOf(kLengthRows[i].field(settings));
        lengths_[i].SetValue(static_cast<std::int32_t>(std::min(thousandths, 0x7FFFFFFFu)));
    }
    SetChecked(Window, QVD_RADIO_LANDSCAPE, settings.LandscapeOrientation);
    SetChecked(Window, QVD_RADIO_PORTRAIT, !settings.LandscapeOrientation);
    ShowFields(Window, kPaper, settings);
    ApplyPaper();
    SelectRow(Window, QVD_LIST_UNITS, static_cast<std::uint32_t>(UnitsRowOf(settings.Units)));
    ApplyUnit();
}

void PdfPageTab::Store(ConversionSettings& settings) noexcept {
    for (int i = 0; i < kLengths; ++i) {
        lengths_[i].TakeInText();
        kLengthRows[i].field(settings) = lengths_[i].Value() / 1000.0;
    }
    settings.LandscapeOrientation = IsChecked(Window, QVD_RADIO_LANDSCAPE);
    StoreFields(Window, kPaper, settings);
    settings.Units = SelectedRow(Window, QVD_LIST_UNITS, 0);
}

bool PdfPageTab::OnCommand(int id, UINT code) noexcept {
    if (code != CBN_SELCHANGE) return false;
    if (id == QVD_LIST_PAPER) {
        ApplyPaper();
    } else if (id == QVD_LIST_UNITS) {
        ApplyUnit();
    } else {
        return false;
    }
    return true;
}

void PdfPageTab::ApplyPaper() noexcept {
    const std::uint32_t row = SelectedRow(Window, QVD_LIST_PAPER, kNoRow);
    if (row != kCustomPaper && row < std::size(PaperSizeTable)) {
        lengths_[kWidth].SetValue(WholePoints(PaperSizeTable[row].width));
        lengths_[kHeight].SetValue(WholePoints(PaperSizeTable[row].height));
    }
    constexpr int kEdits[] = {QVD_EDIT_WIDTH, QVD_EDIT_HEIGHT};
    EnableControls(Window, kEdits, row == kCustomPaper);
    InvalidateRect(Window, nullptr, TRUE);
}

void PdfPageTab::ApplyUnit() noexcept {
    const UnitsRow& unit = UnitsTable[UnitsRowOf(SelectedRow(Window, QVD_LIST_UNITS, 0))];
    for (NumericSpinEdit& length : lengths_) {
        length.SetRatio(unit.numerator, unit.denominator, unit.decimals);
    }
}
