#include "chromium/page.h"

#include <algorithm>
#include <utility>

namespace chromium {
namespace {

constexpr double kPointsPerInch = 72;
constexpr Milliseconds kCloseLimit{2'000};
constexpr const char* kWorldName = "quvada";
constexpr const char* kCrashed = "The page's process crashed.";

Params AutoAttach() {
    return Params()
        .Flag("autoAttach", true)
        .Flag("waitForDebuggerOnStart", true)
        .Flag("flatten", true);
}

void CollectFrames(const Json& tree, const std::string& session, std::vector<Frame>& frames) {
    const Json frame = tree["frame"];
    frames.push_back({frame["id"].Text(), frame["parentId"].Text(), session,
                      frame["url"].Text() + frame["urlFragment"].Text()});
    const Json children = tree["childFrames"];
    for (std::size_t k = 0; k < children.Size(); ++k) {
        CollectFrames(children.At(k), session, frames);
    }
}

std::string PointText(double points) {
    std::string text = std::to_string(points);  // "595.300000": the "C" locale's point
    std::replace(text.begin(), text.end(), ',', '.');
    return text + "pt";
}

}  // namespace

Page::Page(Browser& browser, const PageOptions& options) : browser_(browser), options_(options) {
    browser_.AddListener(*this);
}

Page::~Page() {
    browser_.RemoveListener(*this);
    if (!target_.empty()) {
        (void)browser_.Call({}, "Target.closeTarget", Params().Text("targetId", target_),
                            kCloseLimit);
    }
}

Result<std::unique_ptr<Page>> Page::Create(Browser& browser, const PageOptions& options) {
    std::unique_ptr<Page> page(new Page(browser, options));
    const Outcome attached = page->Attach();
    if (!attached) return attached.GetError();
    return page;
}

Outcome Page::Attach() {
    Result<Json> reply =
        browser_.Call({}, "Target.createTarget", Params().Text("url", "about:blank"));
    if (!reply) return reply.GetError();
    target_ = (*reply)["targetId"].Text();
    reply = browser_.Call({}, "Target.attachToTarget",
                          Params().Text("targetId", target_).Flag("flatten", true));
    if (!reply) return reply.GetError();
    session_ = (*reply)["sessionId"].Text();

    const std::pair<const char*, Params> kSetUp[] = {
        {"Page.enable", {}},
        {"Page.setLifecycleEventsEnabled", Params().Flag("enabled", true)},
        {"Inspector.enable", {}},
        {"Target.setAutoAttach", AutoAttach()},
    };
    for (const auto& [method, params] : kSetUp) {
        reply = Call(method, params);
        if (!reply) return reply.GetError();
    }
    reply = Call("Page.getFrameTree");
    if (!reply) return reply.GetError();
    mainFrame_ = (*reply)["frameTree"]["frame"]["id"].Text();
    return Resize(options_.width, options_.height);
}

bool Page::Owns(const std::string& session) const {
    return session == session_ ||
           std::find(frameSessions_.begin(), frameSessions_.end(), session) != frameSessions_.end();
}

void Page::OnEvent(const Event& event) {
    if (event.session.empty() || !Owns(event.session)) return;
    const Json& params = event.params;
    if (event.method == "Page.lifecycleEvent") {
        if (params["name"].Text() == "load" && params["frameId"].Text() == mainFrame_) {
            loaded_.insert(params["loaderId"].Text());
        }
    } else if (event.method == "Page.javascriptDialogOpening") {
        browser_.Post(event.session, "Page.handleJavaScriptDialog", Params().Flag("accept", true));
    } else if (event.method == "Inspector.targetCrashed") {
        if (event.session == session_) crashed_ = true;
    } else if (event.method == "Target.attachedToTarget") {
        OnAttached(params);
    } else if (event.method == "Target.detachedFromTarget") {
        std::erase(frameSessions_, params["sessionId"].Text());
    }
}

/// Sets up a frame of another site before any of its content runs, as the page itself was.
void Page::OnAttached(const Json& params) {
    const std::string session = params["sessionId"].Text();
    if (params["targetInfo"]["type"].Text() == "iframe") {
        frameSessions_.push_back(session);
        browser_.Post(session, "Page.enable");
        browser_.Post(session, "Target.setAutoAttach", AutoAttach());
    }
    browser_.Post(session, "Runtime.runIfWaitingForDebugger");
}

Result<Json> Page::Call(std::string_view method, const Params& params, Milliseconds limit) {
    if (crashed_) return Error{kCrashed};
    return browser_.Call(session_, method, params, limit);
}

Outcome Page::Resize(std::uint32_t width, std::uint32_t height) {
    const Result<Json> set =
        Call("Emulation.setDeviceMetricsOverride", Params()
                                                       .Number("width", width)
                                                       .Number("height", height)
                                                       .Number("deviceScaleFactor", 1)
                                                       .Flag("mobile", false));
    if (!set) return set.GetError();
    return Done{};
}

Result<Loaded> Page::Open(const std::string& url, Milliseconds limit) {
    const Clock::time_point end = Clock::now() + limit;
    crashed_ = false;
    loaded_.clear();
    const Result<Json> reply = Call("Page.navigate", Params().Text("url", url), limit);
    if (!reply) return Error{url + " can't be loaded. " + reply.GetError().text};
    if (const std::string& error = (*reply)["errorText"].Text(); !error.empty()) {
        return Error{url + " can't be loaded: " + error + "."};
    }
    const std::string loader = (*reply)["loaderId"].Text();
    if (loader.empty()) return Loaded::Whole;  // Only the place in the same document changed.
    const auto left = std::chrono::ceil<Milliseconds>(end - Clock::now());
    const Result<bool> loaded =
        browser_.WaitUntil([&] { return crashed_ || loaded_.contains(loader); }, left);
    if (!loaded) return loaded.GetError();
    if (crashed_) return Error{"The page's process crashed while it loaded " + url + "."};
    if (*loaded) return Loaded::Whole;
    const Result<Json> stopped = Call("Page.stopLoading");
    if (!stopped) return stopped.GetError();
    return Loaded::Part;
}

Result<Json> Page::Evaluate(std::string_view script, const Frame* frame, Milliseconds limit) {
    if (crashed_) return Error{kCrashed};
    const std::string& session = frame ? frame->session : session_;
    // Asked for each time: the world goes with its document, and its name finds it again.
    const Result<Json> world = browser_.Call(
        session, "Page.createIsolatedWorld",
        Params().Text("frameId", frame ? frame->id : mainFrame_).Text("worldName", kWorldName),
        limit);
    if (!world) return world.GetError();
    const Result<Json> reply =
        browser_.Call(session, "Runtime.evaluate",
                      Params()
                          .Number("contextId", (*world)["executionContextId"].Number())
                          .Text("expression", script)
                          .Flag("returnByValue", true)
                          .Flag("awaitPromise", true),
                      limit);
    if (!reply) {
        // A script that never ends would block every later call.
        browser_.Post(session, "Runtime.terminateExecution");
        return reply.GetError();
    }
    if (const Json thrown = (*reply)["exceptionDetails"]; !thrown.IsNull()) {
        return Error{"The script failed: " + thrown["text"].Text() + " " +
                     thrown["exception"]["description"].Text()};
    }
    return (*reply)["result"]["value"];
}

Result<std::vector<Frame>> Page::Frames(Milliseconds limit) {
    const Result<Json> reply = Call("Page.getFrameTree", {}, limit);
    if (!reply) return reply.GetError();
    std::vector<Frame> frames;
    CollectFrames((*reply)["frameTree"], session_, frames);
    const std::vector<std::string> sessions = frameSessions_;
    for (const std::string& session : sessions) {
        const Result<Json> tree = browser_.Call(session, "Page.getFrameTree", {}, limit);
        if (!tree && !Owns(session)) continue;  // The frame went away meanwhile.
        if (!tree) return tree.GetError();
        CollectFrames((*tree)["frameTree"], session, frames);
    }
    return frames;
}

Result<std::string> Page::Resource(const Frame& frame, std::string_view url, Milliseconds limit) {
    const Result<Json> reply =
        browser_.Call(frame.session, "Page.getResourceContent",
                      Params().Text("frameId", frame.id).Text("url", url), limit);
    if (!reply) return reply.GetError();
    const Json content = (*reply)["content"];
    if ((*reply)["base64Encoded"].Flag()) return DecodeBase64(content.Text());
    return content.Text();
}

Outcome Page::OverridePageRules(const PrintOptions& options) {
    const std::string body = "{margin:" + PointText(options.marginTop) + " " +
                             PointText(options.marginRight) + " " +
                             PointText(options.marginBottom) + " " + PointText(options.marginLeft) +
                             "!important;size:" + PointText(options.width) + " " +
                             PointText(options.height) + "!important}";
    for (const char* method : {"DOM.enable", "CSS.enable"}) {
        const Result<Json> enabled = Call(method);
        if (!enabled) return enabled.GetError();
    }
    const Result<Json> sheet =
        Call("CSS.createStyleSheet", Params().Text("frameId", mainFrame_).Flag("force", true));
    if (!sheet) return sheet.GetError();
    const Result<Json> set =
        Call("CSS.setStyleSheetText",
             Params()
                 .Text("styleSheetId", (*sheet)["styleSheetId"].Text())
                 .Text("text", "@page" + body + " @page :first" + body + " @page :left" + body +
                                   " @page :right" + body));
    if (!set) return set.GetError();
    return Done{};
}

Result<std::string> Page::Print(const PrintOptions& options, Milliseconds limit) {
    const Result<Json> reply =
        Call("Page.printToPDF",
             Params()
                 .Number("paperWidth", options.width / kPointsPerInch)
                 .Number("paperHeight", options.height / kPointsPerInch)
                 .Number("marginTop", options.marginTop / kPointsPerInch)
                 .Number("marginBottom", options.marginBottom / kPointsPerInch)
                 .Number("marginLeft", options.marginLeft / kPointsPerInch)
                 .Number("marginRight", options.marginRight / kPointsPerInch)
                 .Number("scale", options.scale)
                 .Flag("printBackground", options.background)
                 .Flag("preferCSSPageSize", false)
                 .Flag("generateTaggedPDF", options.tagged),
             limit);
    if (!reply) return reply.GetError();
    return DecodeBase64((*reply)["data"].Text());
}

}  // namespace chromium
