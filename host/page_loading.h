#pragma once

#include <memory>
#include <string>

#include "host/backend.h"
#include "host/options.h"

namespace host {

/// Loads a page with the backend of the options, and selects in it what they say, as a user would
/// with the mouse before pressing the button.
/// \return false, and a sentence for the user in `error`.
[[nodiscard]] bool LoadPage(const Options& options, const LoadRequest& request,
                            std::shared_ptr<PageDocument>& page, std::string& error);

}  // namespace host
