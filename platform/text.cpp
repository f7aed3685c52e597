#include "platform/text.h"

#include <cstdint>

namespace platform {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

void AppendUtf8(char32_t point, std::string& out) {
    const auto tail = [&](int shift) {
        out.push_back(static_cast<char>(0x80 | ((point >> shift) & 0x3F)));
    };
    if (point < 0x80) {
        out.push_back(static_cast<char>(point));
    } else if (point < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (point >> 6)));
        tail(0);
    } else if (point < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (point >> 12)));
        tail(6);
        tail(0);
    } else {
        out.push_back(static_cast<char>(0xF0 | (point >> 18)));
        tail(12);
        tail(6);
        tail(0);
    }
}

struct Utf8Lead {
    int tails;         // bytes that follow
    std::uint8_t low;  // least and largest second byte: no overlong form, no surrogate
    std::uint8_t high;
};

Utf8Lead ClassifyLead(std::uint8_t lead) {
    if (lead >= 0xC2 && lead <= 0xDF) return {1, 0x80, 0xBF};
    if (lead == 0xE0) return {2, 0xA0, 0xBF};
    if (lead == 0xED) return {2, 0x80, 0x9F};
    if (lead >= 0xE1 && lead <= 0xEF) return {2, 0x80, 0xBF};
    if (lead == 0xF0) return {3, 0x90, 0xBF};
    if (lead >= 0xF1 && lead <= 0xF3) return {3, 0x80, 0xBF};
    if (lead == 0xF4) return {3, 0x80, 0x8F};
    return {0, 0, 0};
}

}  // namespace

std::string ToUtf8(WideView text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t point = text[i];
        if (IsHighSurrogate(point) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
            point = 0x10000 + ((point - 0xD800) << 10) + (char32_t{text[++i]} - 0xDC00);
        } else if (IsHighSurrogate(point) || IsLowSurrogate(point)) {
            point = kReplacement;
        }
        AppendUtf8(point, out);
    }
    return out;
}

WideString FromUtf8(std::string_view text) {
    WideString out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<std::uint8_t>(text[i++]);
        if (lead < 0x80) {
            out.push_back(static_cast<WCHAR>(lead));
            continue;
        }
        Utf8Lead form = ClassifyLead(lead);
        char32_t point = form.tails == 1   ? lead & 0x1F
                         : form.tails == 2 ? lead & 0x0F
                                           : lead & 0x07;
        bool whole = form.tails > 0;
        for (int k = 0; k < form.tails; ++k) {
            const auto next =
                i < text.size() ? static_cast<std::uint8_t>(text[i]) : std::uint8_t{0};
            if (next < form.low || next > form.high) {
                whole = false;
                break;
            }
            point = (point << 6) | (next & 0x3Fu);
            form.low = 0x80;
            form.high = 0xBF;
            ++i;
        }
        if (!whole) point = kReplacement;
        if (point >= 0x10000) {
            out.push_back(static_cast<WCHAR>(0xD800 + ((point - 0x10000) >> 10)));
            out.push_back(static_cast<WCHAR>(0xDC00 + (point & 0x3FF)));
        } else {
            out.push_back(static_cast<WCHAR>(point));
        }
    }
    return out;
}

}  // namespace platform
