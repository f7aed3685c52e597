#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "platform/com_library.h"
#include "platform/com_ptr.h"
#include "platform/modules.h"

namespace host {

/// The add-ins of a browser: those that the registry lists, as installers have put them there; or,
/// for trying a module out, the one of a module that is not registered. Read from any thread.
class AddinList {
public:
    /// Takes the module `path` in place of the registry.
    /// \return false, and a sentence for the user in `error`, if it is no add-in.
    [[nodiscard]] bool TakeModule(const std::filesystem::path& path, std::string& error);

    /// The classes of which each tab makes one object, for the browser itself.
    [[nodiscard]] std::vector<CLSID> Helpers() const;

    /// Whether a class is offered to the user as a toolbar.
    [[nodiscard]] bool OffersToolbar(REFCLSID classId) const;

    /// Makes an object on the calling thread, which uses COM. \return what CoCreateInstance or the
    /// module gives.
    HRESULT Make(REFCLSID classId, REFIID id, void** object) const;

    template <class Interface>
    HRESULT Make(REFCLSID classId, platform::ComPtr<Interface>& object) const {
        void* made = nullptr;
        const HRESULT result = Make(classId, platform::InterfaceId<Interface>(), &made);
        object.Attach(static_cast<Interface*>(made));
        return result;
    }

    /// Where a class's server lies, for a message; empty if nothing is known of it.
    [[nodiscard]] std::string ServerOf(REFCLSID classId) const;

private:
    platform::ModuleHandle module_;  // null: the registry counts
    std::string modulePath_;
};

}  // namespace host
