#include "host/text_backend.h"

#include <cstdint>
#include <fstream>
#include <utility>

#include "host/html_text.h"
#include "host/system.h"
#include "host/text_document.h"

namespace host {
namespace {

// A page above this is a mistake of the caller, and would only run the machine out of memory.
constexpr std::uintmax_t kMaxFileBytes = 512u << 20;

bool ReadFile(const std::filesystem::path& path, std::string& bytes, std::string& error) {
    const std::string name = PathToUtf8(path);
    std::error_code code;
    const std::filesystem::file_status status = std::filesystem::status(path, code);
    if (!std::filesystem::exists(status)) {
        error = "there is no page " + name;
        return false;
    }
    if (!std::filesystem::is_regular_file(status)) {
        error = name + " is no file";
        return false;
    }
    const std::uintmax_t size = std::filesystem::file_size(path, code);
    if (!code && size > kMaxFileBytes) {
        error = name + " is too large for a page";
        return false;
    }
    std::ifstream file(path, std::ios::binary);
    if (!code) bytes.resize(static_cast<std::size_t>(size));
    if (code || !file.read(bytes.data(), static_cast<std::streamsize>(size))) {
        error = name + " cannot be read";
        return false;
    }
    return true;
}

std::optional<platform::WideString> ReadAddress(const platform::WideString& url) {
    PageAddress address;
    std::string bytes;
    std::string error;
    // Anything else might be taken for a relative path.
    if (!url.starts_with(TEXT("file:")) ||
        !ParsePageAddress(platform::ToUtf8(url), address, error) || !address.IsFile() ||
        !ReadFile(address.file, bytes, error)) {
        return std::nullopt;
    }
    return DecodeFileText(bytes);
}

}  // namespace

bool TextBackend::Load(const LoadRequest& request, std::shared_ptr<PageDocument>& page,
                       std::string& error) {
    if (!request.address.IsFile()) {
        error = "the text backend loads files only, not " + request.address.url;
        return false;
    }
    std::string bytes;
    if (!ReadFile(request.address.file, bytes, error)) return false;
    platform::WideString markup = DecodeFileText(bytes);
    const LONG height = height_ > 0 ? height_ : ReadHtmlFacts(markup).height;
    page = std::make_shared<TextDocument>(platform::FromUtf8(request.address.url),
                                          std::move(markup), height, ReadAddress);
    return true;
}

}  // namespace host
