#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "host/address.h"
#include "host/page_document.h"

namespace host {

/// What a backend needs to load a page.
struct LoadRequest {
    PageAddress address;
    std::chrono::milliseconds timeout{};
    /// Called now and then with what is going on, in a few words; may be empty.
    std::function<void(const std::string&)> progress;
    /// Called when the page is there, but not as it should be; may be empty.
    std::function<void(const std::string&)> warning;
};

/// Where pages come from, on the thread of the caller. What a backend started for a page (a
/// browser, a folder) ends with the last reference to the page.
class Backend {
public:
    virtual ~Backend() = default;

    /// Loads a page. \return false, and a sentence for the user in `error`, when there is no such
    /// page or it could not be loaded in time; `page` is then unspecified.
    [[nodiscard]] virtual bool Load(const LoadRequest& request, std::shared_ptr<PageDocument>& page,
                                    std::string& error) = 0;
};

}  // namespace host
