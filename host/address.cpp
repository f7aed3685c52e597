#include "host/address.h"

#include <cctype>
#include <optional>
#include <string_view>

#include "host/system.h"

namespace host {
namespace {

constexpr std::string_view kUnescaped =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/!$&'()*+,;=:@";

std::string Lower(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return lower;
}

/// The scheme in front of the first ':'; one letter is a drive and no scheme.
std::string SchemeOf(std::string_view text) {
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos || colon < 2) return {};
    const std::string scheme = Lower(text.substr(0, colon));
    if (!std::isalpha(static_cast<unsigned char>(scheme[0]))) return {};
    const bool whole =
        scheme.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789+.-") == std::string::npos;
    return whole ? scheme : std::string();
}

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// Resolves %XX; nothing if an escape is malformed or stands for a zero byte, which no path holds.
std::optional<std::string> Unescape(std::string_view text) {
    std::string plain;
    plain.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            plain.push_back(text[i]);
            continue;
        }
        const int high = i + 2 < text.size() ? HexDigit(text[i + 1]) : -1;
        const int low = i + 2 < text.size() ? HexDigit(text[i + 2]) : -1;
        if (high < 0 || low < 0 || (high == 0 && low == 0)) return std::nullopt;
        plain.push_back(static_cast<char>(high * 16 + low));
        i += 2;
    }
    return plain;
}

bool ParseFileUrl(const std::string& text, PageAddress& address, std::string& error) {
    std::string_view rest = std::string_view(text).substr(5);
    rest = rest.substr(0, rest.find_first_of("?#"));
    if (rest.starts_with("//")) {
        const std::size_t slash = rest.find('/', 2);
        const std::string machine = Lower(rest.substr(2, slash == rest.npos ? slash : slash - 2));
        if (!machine.empty() && machine != "localhost") {
            error = "the file lies on another machine: " + text;
            return false;
        }
        rest = slash == rest.npos ? std::string_view() : rest.substr(slash);
    }
    const std::optional<std::string> plain = Unescape(rest);
    if (!plain || plain->empty() || plain->front() != '/') {
        error = "malformed address: " + text;
        return false;
    }
    // "/C:/a" is C:\a where drives exist; elsewhere it is a folder of that odd name.
    std::filesystem::path path = PathFromUtf8(*plain);
    const std::filesystem::path onDrive = PathFromUtf8(plain->substr(1));
    if (onDrive.has_root_name() && onDrive.is_absolute()) path = onDrive;
    address.file = path.lexically_normal();
    address.url = text;
    return true;
}

}  // namespace

std::string FileUrl(const std::filesystem::path& path) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    const std::u8string generic = path.generic_u8string();
    std::string url = "file://";
    if (generic.empty() || generic.front() != u8'/') url += '/';
    for (const char8_t unit : generic) {
        const auto byte = static_cast<unsigned char>(unit);
        if (byte < 0x80 && kUnescaped.find(static_cast<char>(byte)) != std::string_view::npos) {
            url += static_cast<char>(byte);
        } else {
            url += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
        }
    }
    return url;
}

bool ParsePageAddress(const std::string& text, PageAddress& address, std::string& error) {
    address = {};
    const std::string scheme = SchemeOf(text);
    if (scheme == "file") return ParseFileUrl(text, address, error);
    if (scheme == "http" || scheme == "https") {
        if (text.size() <= scheme.size() + 3 || text.compare(scheme.size(), 3, "://") != 0 ||
            text.find_first_of(" \t\r\n") != std::string::npos) {
            error = "malformed address: " + text;
            return false;
        }
        address.url = text;
        return true;
    }
    std::error_code code;
    const std::filesystem::path path = std::filesystem::absolute(PathFromUtf8(text), code);
    // "mailto:a" may also be a file's name; only what is no file counts as an address.
    if (!scheme.empty() && !std::filesystem::exists(path, code)) {
        error = "neither a file nor an address that can be loaded: " + text;
        return false;
    }
    if (text.empty() || path.empty()) {
        error = "no page is named";
        return false;
    }
    address.file = path.lexically_normal();
    address.url = FileUrl(address.file);
    return true;
}

}  // namespace host
