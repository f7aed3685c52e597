#pragma once

#include <cstdint>

#include "foundation/wstring_view.h"

namespace AUX {

/// A sheet of paper; its key is its place in the table.
struct StandardPaper {
    std::uint32_t group;
    const WCHAR* name;
    double width;   ///< Points.
    double height;  ///< Points.
};

inline constexpr std::uint32_t kStandardPaperCount = 50;

/// The sheets that are known by name. Groups: 0 ISO, 1 American, 2 envelopes, 3 JIS, 4 large.
extern const StandardPaper StandardPaperTable[kStandardPaperCount];

/// The sheet that the user's locale stands for: "Letter/ANSI A" (11), "US Legal" (18), "A3" (3) or
/// "A4" (4), the last also where the locale has none of these. The system is asked once.
[[nodiscard]] std::uint32_t DefaultPaperKey() noexcept;

}  // namespace AUX
