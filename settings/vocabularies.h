#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "platform/base.h"

/// The lists that the Options dialog offers, in the order in which it shows them, and what the
/// numbers of a ConversionSettings mean. Unless told otherwise a stored number is a row's index.

struct PaperSizeRow {
    WCHAR name[64];
    std::uint32_t width;   ///< Whole points, of the upright page.
    std::uint32_t height;  ///< Whole points, of the upright page.
};
/// Row 0 gives no size: width and height stay as they are.
inline constexpr PaperSizeRow PaperSizeTable[] = {
    {TEXT("Custom"), 0, 0},        {TEXT("Letter"), 612, 792}, {TEXT("Tabloid"), 792, 1224},
    {TEXT("Ledger"), 1224, 492},   {TEXT("Legal"), 612, 1008}, {TEXT("Statement"), 396, 612},
    {TEXT("Executive"), 540, 720}, {TEXT("A0"), 2384, 3371},   {TEXT("A1"), 1685, 2384},
    {TEXT("A2"), 1190, 1684},      {TEXT("A3"), 842, 1190},    {TEXT("A4"), 595, 842},
    {TEXT("A5"), 420, 595},        {TEXT("B4"), 729, 1032},    {TEXT("B5"), 516, 729},
    {TEXT("Folio"), 612, 936},     {TEXT("Quarto"), 610, 780}, {TEXT("10x14"), 720, 1008},
};
inline constexpr std::size_t kDefaultPaperSize = 11;

struct PdfVersionRow {
    std::uint32_t code;  ///< 0x10000 + the minor version of PDF 1.x; this is what is stored.
    WCHAR name[64];
};
inline constexpr PdfVersionRow PdfVersionTable[] = {
    {0x10003, TEXT("Version 1.3 (Acrobat v3.0 and v4.x)")},
    {0x10004, TEXT("Version 1.4 (Acrobat v5.x)")},
    {0x10005, TEXT("Version 1.5 (Acrobat v6.0 and above)")},
    {0x10006, TEXT("Version 1.6 (Acrobat v7.0 and above)")},
    {0x10007, TEXT("Version 1.7 (Acrobat v8.0 and above)")},
};
/// \return the row that shows a stored code; the last one for a code that is not in the table.
[[nodiscard]] constexpr std::size_t PdfVersionRowOf(std::uint32_t code) noexcept {
    const auto* row = std::ranges::find(PdfVersionTable, code, &PdfVersionRow::code);
    return row != std::end(PdfVersionTable) ? static_cast<std::size_t>(row - PdfVersionTable)
                                            : std::size(PdfVersionTable) - 1;
}

inline constexpr const WCHAR* CompressionLevelTable[] = {TEXT("Low"), TEXT("Medium"), TEXT("High")};
inline constexpr std::size_t kDefaultCompressionLevel = 1;

/// A length shown is its count of thousandths of a point x numerator / denominator.
struct UnitsRow {
    const WCHAR* name;
    std::int32_t numerator;
    std::int32_t denominator;
    std::uint32_t decimals;  ///< At most shown.
};
/// A millimetre counts as 2.833 points.
inline constexpr UnitsRow UnitsTable[] = {
    {TEXT("points"), 1, 1000, 1},
    {TEXT("inches"), 1, 72000, 3},
    {TEXT("mm"), 1000, 2833000, 1},
};
/// \return the row that shows a stored number; points for a number that is not in the table.
[[nodiscard]] constexpr std::size_t UnitsRowOf(std::uint32_t units) noexcept {
    return units < std::size(UnitsTable) ? units : 0;
}

/// Level 0 uses the permissions of the sec40 values, all others those of the sec128 values.
inline constexpr const WCHAR* EncryptionLevelTable[] = {
    TEXT("40-bit RC4 (Compatible with Acrobat 3.0 and above)"),
    TEXT("128-bit RC4 (Compatible with Acrobat 5.0 and above)"),
    TEXT("128-bit AES (Compatible with Acrobat 7.0 and above)"),
    TEXT("256-bit AES (Compatible with Acrobat 9.0 and above)"),
    TEXT("256-bit AES (Compatible with Acrobat X and above)"),
};
inline constexpr const WCHAR* ChangesAllowedTable[] = {
    TEXT("None"),
    TEXT("Only Document Assembly"),
    TEXT("Only Form Field Fill-in or Signing"),
    TEXT("Comment Authoring, Form Field Fill-in or Signing"),
    TEXT("General Editing, Comment and Form Field Authoring"),
};
inline constexpr const WCHAR* PrintingAllowedTable[] = {
    TEXT("Not Allowed"),
    TEXT("Low Resolution"),
    TEXT("Fully Allowed"),
};
