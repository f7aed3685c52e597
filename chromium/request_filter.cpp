#include "chromium/request_filter.h"

#include <utility>

namespace chromium {

Result<std::unique_ptr<RequestFilter>> RequestFilter::Install(Browser& browser, Decide decide) {
    std::unique_ptr<RequestFilter> filter(new RequestFilter(browser, std::move(decide)));
    // On the browser itself: a page's own session misses what frames of other sites load.
    const Result<Json> enabled =
        browser.Call({}, "Fetch.enable", Params().Raw("patterns", R"([{"urlPattern":"*"}])"));
    if (!enabled) return enabled.GetError();
    return filter;
}

RequestFilter::RequestFilter(Browser& browser, Decide decide)
    : browser_(browser), decide_(std::move(decide)) {
    browser_.AddListener(*this);
}

RequestFilter::~RequestFilter() {
    browser_.RemoveListener(*this);
    browser_.Post({}, "Fetch.disable");
}

void RequestFilter::OnEvent(const Event& event) {
    if (event.method != "Fetch.requestPaused") return;
    const Json& params = event.params;
    const std::string& type = params["resourceType"].Text();
    const Answer answer =
        decide_(Request{params["request"]["url"].Text(), type, params["frameId"].Text()});
    Params reply;
    reply.Text("requestId", params["requestId"].Text());
    // A document that is aborted leaves what was there; one that is blocked gives way to a page of
    // the browser's that says so.
    const Params refusal =
        Params(reply).Text("errorReason", type == "Document" ? "Aborted" : "BlockedByClient");
    if (answer.kind == Answer::Kind::Continue) {
        browser_.Post(event.session, "Fetch.continueRequest", reply);
        return;
    }
    if (answer.kind == Answer::Kind::Refuse) {
        browser_.Post(event.session, "Fetch.failRequest", refusal);
        return;
    }
    std::string headers = "[";
    for (const auto& [name, value] : answer.headers) {
        if (headers.size() > 1) headers += ',';
        Params().Text("name", name).Text("value", value).WriteTo(headers);
    }
    reply.Number("responseCode", answer.status)
        .Raw("responseHeaders", headers + "]")
        .Base64("body", answer.body);
    // A body that is too large for one message; no answer at all would hold the page up.
    if (!browser_.Post(event.session, "Fetch.fulfillRequest", reply)) {
        browser_.Post(event.session, "Fetch.failRequest", refusal);
    }
}

}  // namespace chromium
