#pragma once

#include "host/backend.h"

namespace host {

/// Pages as a headless browser shows them, after their scripts ran, in a window of 1280 x 800
/// pixels. Each load starts a browser of its own, which lives as long as the page is kept.
class ChromiumBackend final : public Backend {
public:
    [[nodiscard]] bool Load(const LoadRequest& request, std::shared_ptr<PageDocument>& page,
                            std::string& error) override;
};

}  // namespace host
