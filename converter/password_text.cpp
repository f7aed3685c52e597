#include "converter/password_text.h"

#include <cstdint>
#include <string>

namespace converter {
namespace {

constexpr std::size_t kLineCharacters = 76;

int ValueOf(char c) {
    if (c >= 'A' && c <= 'Z') return c - 'A';
    if (c >= 'a' && c <= 'z') return c - 'a' + 26;
    if (c >= '0' && c <= '9') return c - '0' + 52;
    if (c == '+') return 62;
    return c == '/' ? 63 : -1;
}

/// Takes the line breaks out. \return false if one stands anywhere but behind a full line.
bool JoinLines(std::string_view text, std::string& joined) {
    std::size_t column = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\r') {
            if (++column > kLineCharacters) return false;
            joined += text[i];
            continue;
        }
        if (column != kLineCharacters || ++i == text.size() || text[i] != '\n') return false;
        column = 0;
    }
    return true;
}

}  // namespace

Result<platform::WideString> ReadPasswordText(std::string_view text) {
    const Error fault{"A password is not in the base64 form of UTF-16 text."};
    std::string joined;
    if (!JoinLines(text, joined) || joined.size() % 4 != 0) return fault;
    std::size_t padding = 0;
    while (padding < 2 && joined.ends_with('=')) {
        joined.pop_back();
        ++padding;
    }
    std::string bytes;
    std::uint32_t bits = 0;
    int held = 0;
    for (const char c : joined) {
        const int value = ValueOf(c);
        if (value < 0) return fault;
        bits = (bits << 6 | static_cast<std::uint32_t>(value)) & 0xFFFF;
        held += 6;
        if (held >= 8) {
            held -= 8;
            bytes += static_cast<char>(bits >> held & 0xFF);
        }
    }
    const bool hasRest = (bits & ((1u << held) - 1)) != 0;
    if (hasRest || bytes.size() % 2 != 0) return fault;
    platform::WideString password;
    for (std::size_t i = 0; i < bytes.size(); i += 2) {
        const auto low = static_cast<std::uint8_t>(bytes[i]);
        const auto high = static_cast<std::uint8_t>(bytes[i + 1]);
        password += static_cast<WCHAR>(low | high << 8);
    }
    return password;
}

}  // namespace converter
