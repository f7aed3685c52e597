#include "settings/password_text.h"

#include <bit>

static_assert(std::endian::native == std::endian::little, "code units are read as they lie");

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint32_t kLineGroups = 19;

/// The value of a character of the alphabet, or -1.
int SymbolValue(char symbol) noexcept {
    if (symbol >= 'A' && symbol <= 'Z') return symbol - 'A';
    if (symbol >= 'a' && symbol <= 'z') return symbol - 'a' + 26;
    if (symbol >= '0' && symbol <= '9') return symbol - '0' + 52;
    if (symbol == '+') return 62;
    if (symbol == '/') return 63;
    return -1;
}

/// Writes four characters for up to three bytes.
char* WriteGroup(const BYTE* bytes, std::size_t count, char* to) noexcept {
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < 3; ++i) bits = bits << 8 | (i < count ? bytes[i] : 0u);
    for (std::size_t i = 0; i < 4; ++i) {
        *to++ = i <= count ? kAlphabet[bits >> 18 & 63] : '=';
        bits <<= 6;
    }
    return to;
}

template <class Text>
void Wipe(Text& text) noexcept {
    // Volatile, or the compiler drops writes to a block that nobody reads again.
    volatile auto* unit = text.Data();
    for (std::uint32_t i = 0; unit && i <= text.Capacity(); ++i) unit[i] = 0;
    text.Clear();
}

}  // namespace

std::uint64_t EncodedPasswordSize(std::uint32_t units) noexcept {
    const std::uint64_t bytes = std::uint64_t{units} * 2;
    const std::uint64_t breaks = bytes / 3 / kLineGroups;
    // A padded group makes the break behind a full line one between lines; only when complete
    // groups alone fill the last line does a break stand at the end.
    return (bytes + 2) / 3 * 4 + breaks * 2;
}

bool EncodePasswordText(AUX::WStringView password, AUX::AString& text) noexcept {
    WipeText(text);
    if (password.size() > AUX::WString::kMaxLength) return false;
    const std::uint64_t size = EncodedPasswordSize(static_cast<std::uint32_t>(password.size()));
    if (size > AUX::AString::kMaxLength || !text.SetLength(static_cast<std::uint32_t>(size))) {
        return false;
    }
    const auto* from = reinterpret_cast<const BYTE*>(password.data());
    std::size_t left = password.size() * 2;
    char* to = text.Data();
    std::uint32_t groups = 0;
    for (; left >= 3; from += 3, left -= 3) {
        to = WriteGroup(from, 3, to);
        if (++groups % kLineGroups == 0) {
            *to++ = '\r';
            *to++ = '\n';
        }
    }
    if (left > 0) WriteGroup(from, left, to);
    return true;
}

AUX::Status DecodePasswordText(AUX::AStringView text, AUX::WString& password) noexcept {
    WipeText(password);
    const std::uint64_t maxBytes = std::uint64_t{text.size()} / 4 * 3 + 2;
    if (maxBytes / 2 + 1 > AUX::WString::kMaxLength ||
        !password.SetLength(static_cast<std::uint32_t>(maxBytes / 2 + 1))) {
        return AUX::kStatusInsufficientMemory;
    }

    auto* const bytes = reinterpret_cast<BYTE*>(password.Data());
    std::size_t count = 0;
    std::size_t at = 0;
    while (at < text.size() && text[at] != 0) {
        std::uint32_t bits = 0;
        std::uint32_t symbols = 0;
        for (; at < text.size() && symbols < 4; ++at) {
            const int value = SymbolValue(text[at]);
            if (value < 0) continue;
            bits = bits << 6 | static_cast<std::uint32_t>(value);
            ++symbols;
        }
        bits <<= 6 * (4 - symbols);
        for (std::uint32_t i = 0; i < symbols * 6 / 8; ++i) {
            bytes[count++] = static_cast<BYTE>(bits >> (16 - 8 * i));
        }
    }
    if (count % 2 != 0) {
        WipeText(password);
        return AUX::kStatusInvalidArgument;
    }
    (void)password.SetLength(static_cast<std::uint32_t>(count / 2));  // Shorter, so it fits.
    return AUX::kStatusOk;
}

void WipeText(AUX::WString& text) noexcept { Wipe(text); }
void WipeText(AUX::AString& text) noexcept { Wipe(text); }
