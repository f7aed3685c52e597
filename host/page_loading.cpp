#include "host/page_loading.h"

#include <exception>
#include <vector>

#include "host/backend_choice.h"

namespace host {
namespace {

bool Select(const Options& options, std::shared_ptr<PageDocument> document, std::string& error) {
    for (const std::size_t index : options.frame) {
        std::vector<std::shared_ptr<PageDocument>> frames;
        if (!document->Frames(frames) || index >= frames.size() || !frames[index]) {
            error = "the page has no frame " + std::to_string(index) + " that it may reach";
            return false;
        }
        document = frames[index];
    }
    return document->Select(*options.select, error);
}

}  // namespace

bool LoadPage(const Options& options, const LoadRequest& request,
              std::shared_ptr<PageDocument>& page, std::string& error) {
    const std::unique_ptr<Backend> backend = MakeBackend(options);
    try {
        return backend->Load(request, page, error) &&
               (!options.select || Select(options, page, error));
    } catch (const std::exception& failure) {  // The page needs more memory than there is.
        error = std::string("the page cannot be loaded: ") + failure.what();
        return false;
    }
}

}  // namespace host
