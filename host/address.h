#pragma once

#include <filesystem>
#include <string>

namespace host {

/// A page to load: an address, and for one on this machine the file behind it.
struct PageAddress {
    std::string url;             // http:, https: or file:, UTF-8
    std::filesystem::path file;  // absolute; empty for a page of the net

    [[nodiscard]] bool IsFile() const { return !file.empty(); }
};

/// Takes what a user writes: a file's path, or a file:, http: or https: address.
/// \param text  UTF-8. A relative path counts from the current folder.
/// \return false, and a sentence for the user in `error`, for an address of another kind, of
///         another machine's file, or one that is malformed. Whether the page is there is not
///         looked at.
[[nodiscard]] bool ParsePageAddress(const std::string& text, PageAddress& address,
                                    std::string& error);

/// The file: address of an absolute path; bytes that an address cannot hold are escaped as %XX.
std::string FileUrl(const std::filesystem::path& path);

}  // namespace host
