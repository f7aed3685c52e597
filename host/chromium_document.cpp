#include "host/chromium_document.h"

#include <algorithm>
#include <utility>

#include "chromium/json.h"
#include "host/chromium_element.h"

namespace host {
namespace {

using chromium::Json;
using chromium::QuoteJson;
using platform::FromUtf8;
using platform::ToUtf8;

// A large page may take its time.
constexpr chromium::Milliseconds kAnswerLimit{30'000};

// Bytes of script that wait at most.
constexpr std::size_t kMostChanges = std::size_t{1} << 20;

constexpr char kStyleSheets[] = R"js([...document.styleSheets].map(sheet => {
    const owner = sheet.ownerNode;
    if (!sheet.href) return {text: owner ? owner.textContent : ''};
    const rules = () => {
        try { return [...sheet.cssRules].map(rule => rule.cssText).join('\n'); }
        catch { return null; }
    };
    const written = owner && owner.getAttribute ? owner.getAttribute('href') : null;
    return {href: written ?? sheet.href, url: sheet.href, text: rules()};
}))js";

constexpr char kSelection[] = R"js((() => {
    const selection = getSelection();
    const holder = document.implementation.createHTMLDocument('').createElement('div');
    let controls = false;
    for (let i = 0; selection && i < selection.rangeCount; ++i) {
        const range = selection.getRangeAt(i);
        holder.append(range.cloneContents());
        const node = range.startContainer.childNodes[range.startOffset];
        controls = range.startContainer === range.endContainer &&
            range.endOffset === range.startOffset + 1 && node instanceof Element &&
            range.startContainer.isContentEditable &&
            node.matches('img,object,embed,video,canvas,iframe,input,select,button,textarea');
    }
    return {controls, text: selection ? selection.toString() : '', markup: holder.innerHTML};
})())js";

constexpr char kSelect[] = R"js((selector => {
    let element;
    try { element = document.querySelector(selector); } catch { return 'bad'; }
    if (!element) return 'none';
    const range = document.createRange();
    if (element === document.documentElement || element === document.body) {
        range.selectNodeContents(element);
    } else {
        range.selectNode(element);
    }
    getSelection().removeAllRanges();
    getSelection().addRange(range);
    return 'done';
}))js";

constexpr char kReachesParent[] =
    "(() => { try { return !!parent.document; } catch { return false; } })()";

bool IsFileUrl(const std::string& url) { return url.starts_with("file:"); }

}  // namespace

ChromiumDocument::ChromiumDocument(std::shared_ptr<LivePage> live, chromium::Frame frame)
    : live_(std::move(live)), frame_(std::move(frame)), url_(FromUtf8(frame_.url)) {}

bool ChromiumDocument::Change(const std::string& script) {
    const bool isOther = live_->changedFrame.id != frame_.id;
    if (isOther || live_->changes.size() > kMostChanges) MakeChanges();
    live_->changedFrame = frame_;
    live_->changes += "try { " + script + " } catch {}\n";
    return !live_->isSilent;
}

void ChromiumDocument::MakeChanges() {
    if (live_->changes.empty() || live_->isSilent) return;
    const std::string script = std::exchange(live_->changes, {});
    const auto asked = chromium::Clock::now();
    const auto made = live_->page->Evaluate(script, &live_->changedFrame, kAnswerLimit);
    live_->isSilent = !made && chromium::Clock::now() - asked >= kAnswerLimit;
}

bool ChromiumDocument::Ask(const std::string& script, Json& value) {
    MakeChanges();
    if (live_->isSilent) return false;
    const auto asked = chromium::Clock::now();
    const auto answer = live_->page->Evaluate(script, &frame_, kAnswerLimit);
    if (!answer) {
        live_->isSilent = chromium::Clock::now() - asked >= kAnswerLimit;
        return false;
    }
    value = *answer;
    return true;
}

bool ChromiumDocument::Title(platform::WideString& title) {
    Json answer;
    if (!Ask("document.title", answer)) return false;
    title = FromUtf8(answer.Text());
    return true;
}

bool ChromiumDocument::FindElement(const std::string& expression,
                                   std::shared_ptr<PageElement>& element) {
    element.reset();
    Json answer;
    if (!Ask("!!(" + expression + ")", answer)) return false;
    if (answer.Flag()) {
        element = std::make_shared<ChromiumElement>(shared_from_this(), expression);
    }
    return true;
}

bool ChromiumDocument::Body(std::shared_ptr<PageElement>& body) {
    return FindElement("document.body", body);
}

bool ChromiumDocument::Root(std::shared_ptr<PageElement>& root) {
    return FindElement("document.documentElement", root);
}

bool ChromiumDocument::Elements(const platform::WideString& tag,
                                std::vector<std::shared_ptr<PageElement>>& elements) {
    Json answer;
    if (!Ask(ChromiumElementList::MakeScript(ToUtf8(tag)), answer)) return false;
    const auto list = std::make_shared<ChromiumElementList>(
        shared_from_this(), static_cast<std::size_t>(answer.At(0).Number()));
    const auto count = static_cast<std::size_t>(answer.At(1).Number());
    elements.clear();
    for (std::size_t i = 0; i < count; ++i) {
        elements.push_back(std::make_shared<ChromiumListElement>(list, i));
    }
    return true;
}

bool ChromiumDocument::StyleSheets(std::vector<PageStyleSheet>& sheets) {
    Json answer;
    if (!Ask(kStyleSheets, answer)) return false;
    sheets.clear();
    for (std::size_t i = 0; i < answer.Size(); ++i) {
        const Json found = answer.At(i);
        PageStyleSheet sheet;
        if (found["href"].IsText()) sheet.href = FromUtf8(found["href"].Text());
        if (found["text"].IsText()) sheet.text = FromUtf8(found["text"].Text());
        if (sheet.href) {
            // As it was written: the rules lack what this browser does not know.
            const std::string& url = found["url"].Text();
            const auto original = live_->page->Resource(frame_, url.substr(0, url.find('#')));
            if (original) sheet.text = FromUtf8(*original);
        }
        sheets.push_back(std::move(sheet));
    }
    return true;
}

bool ChromiumDocument::MayReach(const chromium::Frame& frame) {
    // To this browser each file is a site of its own; to the add-in's one they are one site.
    if (IsFileUrl(frame_.url) && IsFileUrl(frame.url)) return true;
    const auto answer = live_->page->Evaluate(kReachesParent, &frame, kAnswerLimit);
    return answer && answer->Flag();
}

bool ChromiumDocument::Frames(std::vector<std::shared_ptr<PageDocument>>& frames) {
    if (live_->isSilent) return false;
    const auto all = live_->page->Frames(kAnswerLimit);
    if (!all) return false;
    frames.clear();
    for (const chromium::Frame& frame : *all) {
        if (frame.parent != frame_.id) continue;
        const bool isOurs = frame.session == frame_.session && MayReach(frame);
        frames.push_back(isOurs ? std::make_shared<ChromiumDocument>(live_, frame) : nullptr);
    }
    return true;
}

bool ChromiumDocument::Selection(PageSelection& selection) {
    Json answer;
    if (!Ask(kSelection, answer)) return false;
    const bool controls = answer["controls"].Flag();
    selection.kind = controls ? PageSelection::Kind::Controls : PageSelection::Kind::Text;
    selection.text = FromUtf8(answer["text"].Text());
    selection.markup = FromUtf8(answer["markup"].Text());
    return true;
}

bool ChromiumDocument::Select(const std::string& selector, std::string& error) {
    Json answer;
    if (!Ask(std::string(kSelect) + "(" + QuoteJson(selector) + ")", answer)) {
        error = "the page does not answer";
    } else if (answer.Text() == "bad") {
        error = "this is no selector: " + selector;
    } else if (answer.Text() != "done") {
        error = "nothing in the page matches " + selector;
    }
    return error.empty();
}

}  // namespace host
