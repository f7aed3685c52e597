#include "converter/paths.h"

#include <cctype>
#include <cstdlib>
#include <memory>
#include <sys/stat.h>

#include "platform/posix/paths.h"

namespace converter {
namespace {

constexpr std::string_view kUnreserved = "-._~/!$&'()*+,;=:@";

bool IsAlphanumeric(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

int HexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

std::string DecodePercents(std::string_view text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int high = text[i] == '%' && i + 2 < text.size() ? HexValue(text[i + 1]) : -1;
        const int low = high >= 0 ? HexValue(text[i + 2]) : -1;
        if (low < 0) {
            out += text[i];
            continue;
        }
        out += static_cast<char>(high << 4 | low);
        i += 2;
    }
    return out;
}

bool StartsWithScheme(std::string_view url, std::string_view scheme) {
    if (url.size() < scheme.size()) return false;
    for (std::size_t i = 0; i < scheme.size(); ++i) {
        if (std::tolower(static_cast<unsigned char>(url[i])) != scheme[i]) return false;
    }
    return true;
}

bool HasDrive(std::string_view path) {
    return path.size() >= 2 && path[1] == ':' && IsAlphanumeric(path[0]);
}

}  // namespace

std::string HostPath(const platform::WideString& path) {
    if (path.find(WCHAR{0}) != platform::WideString::npos) return {};
    if (path.starts_with(TEXT('/'))) return platform::ToUtf8(path);
    std::string host;
    return platform::ToHostPath(path.c_str(), host) == 0 ? host : std::string();
}

std::optional<std::string> PathOfFileUrl(std::string_view url) {
    if (!StartsWithScheme(url, "file:")) return std::nullopt;
    url.remove_prefix(5);
    if (url.starts_with("//localhost/")) url.remove_prefix(11);
    if (url.starts_with("///")) url.remove_prefix(2);
    if (!url.starts_with('/') || url.starts_with("//")) return std::nullopt;
    const std::string path = DecodePercents(url.substr(0, url.find_first_of("?#")));
    if (path.find('\0') != std::string::npos) return std::nullopt;
    if (!HasDrive(std::string_view(path).substr(1))) return path;
    const std::string host = HostPath(platform::FromUtf8(std::string_view(path).substr(1)));
    if (host.empty()) return std::nullopt;
    return host;
}

std::string FileUrlOf(std::string_view path) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string url = "file://";
    for (const char c : path) {
        if (IsAlphanumeric(c) || kUnreserved.find(c) != std::string_view::npos) {
            url += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        url += '%';
        url += kDigits[byte >> 4];
        url += kDigits[byte & 15];
    }
    return url;
}

bool IsWebUrl(std::string_view url) {
    return StartsWithScheme(url, "http://") || StartsWithScheme(url, "https://");
}

std::string_view NameOf(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::string FolderOf(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string_view::npos) return ".";
    return std::string(path.substr(0, slash == 0 ? 1 : slash));
}

std::string RealPath(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr),
                                                           &std::free);
    return real ? std::string(real.get()) : std::string();
}

bool IsRegularFile(const std::string& path) {
    struct stat about {};
    return stat(path.c_str(), &about) == 0 && S_ISREG(about.st_mode);
}

bool LiesIn(std::string_view path, std::string_view folder) {
    return !folder.empty() && path.size() > folder.size() && path.starts_with(folder) &&
           (folder.back() == '/' || path[folder.size()] == '/');
}

}  // namespace converter
