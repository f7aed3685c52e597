#include "host/backend_choice.h"

#include "host/chromium_backend.h"
#include "host/text_backend.h"

namespace host {

std::map<std::string, BackendKind> BackendNames() {
    return {{"chromium", BackendKind::Chromium}, {"text", BackendKind::Text}};
}

BackendKind DefaultBackend() { return BackendKind::Chromium; }

std::unique_ptr<Backend> MakeBackend(const Options& options) {
    if (options.backend == BackendKind::Text) {
        return std::make_unique<TextBackend>(options.pageHeight);
    }
    return std::make_unique<ChromiumBackend>();
}

}  // namespace host
