#include "host/chromium_backend.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "chromium/browser.h"
#include "chromium/page.h"
#include "host/chromium_document.h"
#include "host/interrupt.h"

namespace host {
namespace {

using chromium::Clock;
using chromium::Milliseconds;
using chromium::Result;

// What a page that is loaded may take to answer, even when its time for loading is used up.
constexpr Milliseconds kReadLimit{5'000};

class PageLoad {
public:
    PageLoad(const LoadRequest& request, std::string& error)
        : request_(request), error_(error), until_(Clock::now() + request.timeout) {}

    bool Run(std::shared_ptr<PageDocument>& document) {
        Tell("starting the browser");
        chromium::LaunchOptions options;
        options.startLimit = Left();
        options.cancel = &Interrupted();
        auto browser = chromium::Browser::Launch(options);
        if (!browser) return Fail(browser.GetError().text);
        auto created = chromium::Page::Create(**browser);
        if (!created) return Fail(created.GetError().text);
        const auto live = std::make_shared<LivePage>();
        live->browser = std::move(*browser);
        live->page = std::move(*created);
        chromium::Page& page = *live->page;

        Tell("loading " + request_.address.url);
        const auto loaded = page.Open(request_.address.url, Left());
        if (!loaded) return Fail(loaded.GetError().text);
        if (*loaded == chromium::Loaded::Part) {
            if (request_.warning) request_.warning("a part of the page did not arrive in time");
            // A script that never ends would keep the page from being read.
            (void)page.Call("Runtime.terminateExecution", {}, kReadLimit);
        }

        Tell("reading the page");
        const Result<chromium::Json> url =
            page.Evaluate("location.href", nullptr, std::max(Left(), kReadLimit));
        if (!url) return Fail(url.GetError().text);
        document = std::make_shared<ChromiumDocument>(
            live, chromium::Frame{page.MainFrame(), {}, page.Session(), url->Text()});
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

bool ChromiumBackend::Load(const LoadRequest& request, std::shared_ptr<PageDocument>& page,
                           std::string& error) {
    std::error_code code;
    if (request.address.IsFile() && !std::filesystem::exists(request.address.file, code)) {
        error = "there is no page " + request.address.file.string();
        return false;
    }
    return PageLoad(request, error).Run(page);
}

}  // namespace host
