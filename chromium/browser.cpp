#include "chromium/browser.h"

#include <algorithm>
#include <utility>

#include "chromium/browser_process.h"
#include "chromium/pipe.h"

namespace chromium {
namespace {

// A message of 157 MB wedged the browser for good; 101 MB passed.
constexpr std::size_t kLargestCall = std::size_t{96} << 20;
constexpr Milliseconds kCancelCheck{100};
constexpr Milliseconds kCloseCall{2'000};
constexpr int kEndGraceMs = 3'000;

std::string Seconds(Milliseconds limit) {
    const auto tenths = limit.count() / 100;
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " s";
}

std::vector<std::string> FlagsFor(const LaunchOptions& options) {
    std::vector<std::string> flags;
    if (options.scripts == Scripts::Off) flags.push_back("--blink-settings=scriptEnabled=false");
    if (options.sites == Sites::AsOne) flags.push_back("--disable-web-security");
    return flags;
}

}  // namespace

Result<std::unique_ptr<Browser>> Browser::Launch(const LaunchOptions& options) {
    Result<std::string> program = FindBrowser(options.program);
    if (!program) return program.GetError();
    int readEnd = -1;
    int writeEnd = -1;
    Result<BrowserProcess> process =
        BrowserProcess::Start(*program, FlagsFor(options), readEnd, writeEnd);
    if (!process) return process.GetError();
    std::unique_ptr<Browser> browser(
        new Browser(std::make_unique<BrowserProcess>(std::move(*process)),
                    std::make_unique<Pipe>(readEnd, writeEnd), options.cancel));
    const Result<Json> version = browser->Call({}, "Browser.getVersion", {}, options.startLimit);
    if (!version) {
        browser->broken_ = "It did not start up.";  // No use to ask it to close.
        return Error{*program + " could not be used. " + version.GetError().text};
    }
    return browser;
}

Browser::Browser(std::unique_ptr<BrowserProcess> process, std::unique_ptr<Pipe> pipe,
                 const std::atomic<bool>* cancel)
    : process_(std::move(process)), pipe_(std::move(pipe)), cancel_(cancel) {}

Browser::~Browser() { Close(); }

void Browser::Close() {
    if (!process_) return;
    cancel_ = nullptr;  // A cancelled command still ends its browser in good order.
    const bool willEnd =
        broken_.empty() && Call({}, "Browser.close", {}, kCloseCall).operator bool();
    pipe_->Close();
    process_->End(willEnd ? kEndGraceMs : 0);
    process_.reset();
    broken_ = "The browser was closed.";
}

const std::string& Browser::Folder() const noexcept {
    static const std::string kNone;
    return process_ ? process_->Folder() : kNone;
}

Error Browser::Broken() const {
    std::string text = broken_;
    const std::string log = process_ ? process_->LogTail() : std::string();
    if (!log.empty()) text += " It wrote:\n" + log;
    return Error{text};
}

std::uint64_t Browser::Send(std::string_view session, std::string_view method,
                            const Params& params) {
    const std::uint64_t id = ++lastId_;
    std::string message = "{\"id\":" + std::to_string(id) + ",\"method\":\"";
    message.append(method).append("\",\"params\":");
    params.WriteTo(message);
    if (!session.empty()) message.append(",\"sessionId\":").append(QuoteJson(session));
    message += '}';
    if (message.size() > kLargestCall) return 0;
    pipe_->Queue(std::move(message));
    return id;
}

bool Browser::Post(std::string_view session, std::string_view method, const Params& params) {
    return broken_.empty() && Send(session, method, params) != 0;
}

Result<Json> Browser::Call(std::string_view session, std::string_view method, const Params& params,
                           Milliseconds limit) {
    if (!broken_.empty()) return Broken();
    const std::uint64_t id = Send(session, method, params);
    if (id == 0) {
        return Error{"The call " + std::string(method) + " is larger than the browser can take."};
    }
    Waiting& waiting = waiting_[id];
    waiting.session = session;
    const Result<bool> answered = WaitUntil([&] { return waiting.answered; }, limit);
    const Waiting reply = std::move(waiting);
    waiting_.erase(id);
    if (!answered) return answered.GetError();
    if (!*answered) {
        return Error{"The browser did not answer " + std::string(method) + " within " +
                     Seconds(limit) + "."};
    }
    if (!reply.error.empty()) return Error{std::string(method) + ": " + reply.error};
    return reply.result;
}

Result<bool> Browser::WaitUntil(const std::function<bool()>& done, Milliseconds limit) {
    const Clock::time_point end = Clock::now() + limit;
    while (!done()) {
        if (!broken_.empty()) return Broken();
        if (cancel_ && cancel_->load()) return Error{"The work was cancelled."};
        const Clock::time_point now = Clock::now();
        if (now >= end) return false;
        const bool alive = pipe_->Exchange(cancel_ ? std::min(end, now + kCancelCheck) : end);
        // What came before the end of the pipe still counts.
        for (std::string message; pipe_->Next(message);) Take(std::move(message));
        if (!alive && broken_.empty()) {
            broken_ = "The browser ended unexpectedly.";
        }
        TellListeners();
    }
    return true;
}

void Browser::Take(std::string message) {
    Result<Json> parsed = Json::Parse(std::move(message));
    const Json reply = parsed ? *parsed : Json();
    if (const double id = reply["id"].Number(-1); id >= 0) {
        const auto found = waiting_.find(static_cast<std::uint64_t>(id));
        if (found == waiting_.end()) return;  // Posted, or given up.
        found->second.answered = true;
        found->second.result = reply["result"];
        if (const Json error = reply["error"]; !error.IsNull()) {
            found->second.error = error["message"].Text() + " " + error["data"].Text();
        }
        return;
    }
    const std::string& method = reply["method"].Text();
    if (method.empty()) {
        broken_ = "The browser sent something that is not a message.";
        return;
    }
    Event event{reply["sessionId"].Text(), method, reply["params"]};
    if (method == "Inspector.targetCrashed") {
        FailSession(event.session, "The page's process crashed.");
    } else if (method == "Target.detachedFromTarget") {
        FailSession(event.params["sessionId"].Text(), "The page was closed.");
    }
    events_.push_back(std::move(event));
}

/// Calls into a page that has gone are never answered.
void Browser::FailSession(const std::string& session, const char* why) {
    for (auto& [id, waiting] : waiting_) {
        if (waiting.session != session || waiting.answered) continue;
        waiting.answered = true;
        waiting.error = why;
    }
}

void Browser::TellListeners() {
    const std::vector<Event> events = std::exchange(events_, {});
    for (const Event& event : events) {
        // By index: a listener may be added or removed meanwhile.
        for (std::size_t k = 0; k < listeners_.size(); ++k) listeners_[k]->OnEvent(event);
    }
}

void Browser::AddListener(EventListener& listener) { listeners_.push_back(&listener); }

void Browser::RemoveListener(EventListener& listener) { std::erase(listeners_, &listener); }

}  // namespace chromium
