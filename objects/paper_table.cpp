#include "objects/paper_table.h"

#include <atomic>

#include "platform/locale.h"

namespace AUX {

namespace {

constexpr StandardPaper InPoints(std::uint32_t group, const WCHAR* name, double width,
                                 double height) noexcept {
    return {group, name, width, height};
}

constexpr StandardPaper InMillimetres(std::uint32_t group, const WCHAR* name, double width,
                                      double height) noexcept {
    return {group, name, width * 72 / 25.4, height * 72 / 25.4};
}

// The value that no sheet has: not asked for yet.
constinit std::atomic<std::uint32_t> defaultPaper = kStandardPaperCount;

std::uint32_t AskSystem() noexcept {
    DWORD answer = 0;
    const int units = GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_IPAPERSIZE | LOCALE_RETURN_NUMBER,
                                     reinterpret_cast<LPWSTR>(&answer), 2);
    constexpr std::uint32_t kLetter = 11, kLegal = 18, kA3 = 3, kA4 = 4;
    if (units == 0) return kA4;
    switch (answer) {
        case 1:
            return kLetter;
        case 5:
            return kLegal;
        case 8:
            return kA3;
        default:
            return kA4;
    }
}

}  // namespace

constinit const StandardPaper StandardPaperTable[kStandardPaperCount] = {
    InMillimetres(0, TEXT("A0"), 841, 1189),
    InMillimetres(0, TEXT("A1"), 594, 841),
    InMillimetres(0, TEXT("A2"), 420, 594),
    InMillimetres(0, TEXT("A3"), 297, 420),
    InMillimetres(0, TEXT("A4"), 210, 297),
    InMillimetres(0, TEXT("A5"), 148, 210),
    InMillimetres(0, TEXT("B0"), 1000, 1414),
    InMillimetres(0, TEXT("B1"), 707, 1000),
    InMillimetres(0, TEXT("B2"), 500, 707),
    InMillimetres(0, TEXT("B4"), 250, 354),
    InMillimetres(0, TEXT("B5"), 182, 257),
    InPoints(1, TEXT("Letter/ANSI A"), 612, 792),
    InPoints(1, TEXT("Tabloid/ANSI B"), 792, 1224),
    InPoints(1, TEXT("ANSI Super B"), 936, 1368),
    InPoints(1, TEXT("ANSI C"), 1224, 1584),
    InPoints(1, TEXT("ANSI D"), 1584, 2448),
    InPoints(1, TEXT("ANSI E"), 2448, 3168),
    InPoints(1, TEXT("ANSI F"), 2016, 2880),
    InPoints(1, TEXT("US Legal"), 612, 1008),
    InPoints(1, TEXT("Statement"), 396, 612),
    InPoints(1, TEXT("Executive"), 522, 756),
    InPoints(1, TEXT("Folio"), 612, 936),
    InMillimetres(1, TEXT("Quarto"), 215, 275),
    InPoints(1, TEXT("Note"), 612, 792),
    InPoints(2, TEXT("Envelope #9"), 279, 639),
    InPoints(2, TEXT("Envelope #10"), 297, 684),
    InPoints(2, TEXT("Envelope #11"), 324, 747),
    InPoints(2, TEXT("Envelope #14"), 360, 828),
    InMillimetres(2, TEXT("Envelope DL"), 110, 220),
    InMillimetres(2, TEXT("Envelope C5"), 162, 229),
    InMillimetres(2, TEXT("Envelope C3"), 324, 458),
    InMillimetres(2, TEXT("Envelope C4"), 229, 324),
    InMillimetres(2, TEXT("Envelope C6"), 114, 162),
    InMillimetres(2, TEXT("Envelope C65"), 114, 229),
    InMillimetres(2, TEXT("Envelope B4"), 250, 353),
    InMillimetres(2, TEXT("Envelope B5"), 176, 250),
    InMillimetres(2, TEXT("Envelope B6"), 176, 125),
    InPoints(2, TEXT("Env. Monarch"), 279, 540),
    InPoints(2, TEXT("Env. Personal"), 261, 432),
    InMillimetres(3, TEXT("JIS B0"), 1030, 1456),
    InMillimetres(3, TEXT("JIS B1"), 728, 1030),
    InMillimetres(3, TEXT("JIS B2"), 515, 728),
    InMillimetres(3, TEXT("JIS B3"), 364, 515),
    InMillimetres(3, TEXT("JIS B4"), 257, 364),
    InMillimetres(3, TEXT("JIS B5"), 182, 257),
    InMillimetres(3, TEXT("JIS B6"), 128, 182),
    InMillimetres(3, TEXT("JIS B7"), 91, 128),
    InPoints(4, TEXT("18x24"), 1296, 1728),
    InPoints(4, TEXT("24x36"), 1728, 2592),
    InPoints(4, TEXT("30x42"), 2160, 3024),
};

std::uint32_t DefaultPaperKey() noexcept {
    std::uint32_t key = defaultPaper.load(std::memory_order_relaxed);
    if (key == kStandardPaperCount) {
        key = AskSystem();
        defaultPaper.store(key, std::memory_order_relaxed);
    }
    return key;
}

}  // namespace AUX
