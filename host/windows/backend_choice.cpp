#include "host/backend_choice.h"

#include "host/text_backend.h"

namespace host {

std::map<std::string, BackendKind> BackendNames() { return {{"text", BackendKind::Text}}; }

BackendKind DefaultBackend() { return BackendKind::Text; }

std::unique_ptr<Backend> MakeBackend(const Options& options) {
    return std::make_unique<TextBackend>(options.pageHeight);
}

}  // namespace host
