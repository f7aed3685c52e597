#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "chromium/browser.h"

namespace chromium {

/// The largest body that an answer may serve, in bytes: in base64 it must fit into one call.
inline constexpr std::size_t kLargestBody = std::size_t{70} << 20;

/// Something that a document wants to load.
struct Request {
    std::string url;
    std::string type;   // "Document", "Stylesheet", "Image", "Font", "Script", ...
    std::string frame;  // id of the frame; of the loaded frame itself for a document
};

struct Answer {
    enum class Kind { Continue, Refuse, Serve };

    Kind kind = Kind::Refuse;
    int status = 200;  // these three only for Serve
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;

    static Answer Continue() { return {Kind::Continue, 0, {}, {}}; }
    static Answer Refuse() { return {Kind::Refuse, 0, {}, {}}; }
};

/// Asks `decide` about every request of every page and frame of one browser. One at a time per
/// browser, which must outlive it. `decide` runs inside the browser's waits: it may not call it.
class RequestFilter final : private EventListener {
public:
    using Decide = std::function<Answer(const Request&)>;

    static Result<std::unique_ptr<RequestFilter>> Install(Browser& browser, Decide decide);
    ~RequestFilter();

private:
    RequestFilter(Browser& browser, Decide decide);
    void OnEvent(const Event& event) override;

    Browser& browser_;
    Decide decide_;
};

}  // namespace chromium
