#pragma once

#include <filesystem>
#include <string>

#include "browser/addin_entry.h"
#include "platform/com_ptr.h"
#include "platform/modules.h"

namespace host {

/// The loaded add-in. Keeps the module as long as it lives; what it made must end before.
class Addin {
public:
    /// Loads the module `QVDIEaddin.x64.dll` of `folder`.
    /// \return false, and a sentence for the user in `error`.
    [[nodiscard]] bool Load(const std::filesystem::path& folder, std::string& error);

    /// Makes the band of a tab.
    /// \return false, and a sentence for the user in `error`.
    [[nodiscard]] bool MakeBand(IWebBrowser2* browser, HWND window,
                                platform::ComPtr<IAddinBand>& band, std::string& error) const;

private:
    platform::ModuleHandle module_;
    QvdCreateBandFunction createBand_ = nullptr;
};

/// Loads the module "ieframe.dll" that lies in `folder` and says that this process runs in
/// Protected Mode. From then on the add-in finds it under that name.
[[nodiscard]] bool LoadProtectedMode(const std::filesystem::path& folder,
                                     platform::ModuleHandle& module, std::string& error);

}  // namespace host
