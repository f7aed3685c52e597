#include "host/chromium_backend.h"

#include <algorithm>
#include <filesystem>
#include <limits>

#include "chromium/browser.h"
#include "chromium/page.h"
#include "host/interrupt.h"

namespace host {
namespace {

using chromium::Clock;
using chromium::Milliseconds;
using chromium::Result;

// What a page that is loaded may take to answer, even when its time for loading is used up.
constexpr Milliseconds kReadLimit{5'000};

constexpr char kReadScript[] = R"js((() => {
    const height = e => e ? e.scrollHeight : null;
    return {
        url: location.href,
        title: document.title,
        root: height(document.documentElement),
        body: height(document.body)
    };
})())js";

LONG HeightOf(const chromium::Json& height) {
    if (height.IsNull()) return kNoElement;
    // An element of another vocabulary, such as a picture shown alone, may have none.
    return static_cast<LONG>(
        std::clamp(height.Number(0), 0.0, double{std::numeric_limits<LONG>::max()}));
}

class PageLoad {
public:
    PageLoad(const LoadRequest& request, std::string& error)
        : request_(request), error_(error), until_(Clock::now() + request.timeout) {}

    bool Run(DocumentModel& document) {
        Tell("starting the browser");
        chromium::LaunchOptions options;
        options.startLimit = Left();
        options.cancel = &Interrupted();
        const auto browser = chromium::Browser::Launch(options);
        if (!browser) return Fail(browser.GetError().text);
        const auto page = chromium::Page::Create(**browser);
        if (!page) return Fail(page.GetError().text);

        Tell("loading " + request_.address.url);
        const auto loaded = (*page)->Open(request_.address.url, Left());
        if (!loaded) return Fail(loaded.GetError().text);
        if (*loaded == chromium::Loaded::Part) {
            if (request_.warning) request_.warning("a part of the page did not arrive in time");
            // A script that never ends would keep the page from being read.
            (void)(*page)->Call("Runtime.terminateExecution", {}, kReadLimit);
        }

        Tell("reading the page");
        const Result<chromium::Json> read =
            (*page)->Evaluate(kReadScript, nullptr, std::max(Left(), kReadLimit));
        if (!read) return Fail(read.GetError().text);
        document = {};
        document.url = platform::FromUtf8((*read)["url"].Text());
        document.title = platform::FromUtf8((*read)["title"].Text());
        document.rootHeight = HeightOf((*read)["root"]);
        document.bodyHeight = HeightOf((*read)["body"]);
        return true;
    }

private:
    [[nodiscard]] Milliseconds Left() const {
        const auto left = std::chrono::duration_cast<Milliseconds>(until_ - Clock::now());
        return std::max(left, Milliseconds(1));
    }

    void Tell(const std::string& what) const {
        if (request_.progress) request_.progress(what);
    }

    bool Fail(const std::string& why) {
        error_ = request_.address.url + " cannot be loaded: " + why;
        return false;
    }

    const LoadRequest& request_;
    std::string& error_;
    const Clock::time_point until_;
};

}  // namespace

bool ChromiumBackend::Load(const LoadRequest& request, DocumentModel& document,
                           std::string& error) {
    std::error_code code;
    if (request.address.IsFile() && !std::filesystem::exists(request.address.file, code)) {
        error = "there is no page " + request.address.file.string();
        return false;
    }
    return PageLoad(request, error).Run(document);
}

}  // namespace host
