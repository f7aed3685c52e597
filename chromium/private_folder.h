#pragma once

#include <string>

#include "chromium/result.h"

namespace chromium {

/// A private folder in the temporary folder (TMPDIR, else /tmp), removed with this object. It
/// holds a lock while it lives, so that folders of processes that were killed can be told from
/// those in use; `Create` clears the former.
class PrivateFolder {
public:
    PrivateFolder() noexcept = default;
    ~PrivateFolder();
    PrivateFolder(PrivateFolder&& other) noexcept;
    PrivateFolder& operator=(PrivateFolder&&) = delete;

    static Result<PrivateFolder> Create();

    /// Removes the folder; tries again for some seconds while ending processes still write to it.
    void Remove();

    [[nodiscard]] const std::string& Path() const noexcept { return path_; }

private:
    std::string path_;
    int lock_ = -1;
};

}  // namespace chromium
