#pragma once

#include "host/backend.h"

namespace host {

/// Pages as a headless browser shows them, after their scripts ran, in a window of 1280 x 800
/// pixels. Each load starts a browser of its own and ends it.
class ChromiumBackend final : public Backend {
public:
    [[nodiscard]] bool Load(const LoadRequest& request, DocumentModel& document,
                            std::string& error) override;
};

}  // namespace host
