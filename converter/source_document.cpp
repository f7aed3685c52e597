#include "converter/source_document.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

#include "converter/paths.h"

namespace converter {
namespace {

using chromium::Answer;
using chromium::Request;
using platform::ToUtf8;

// A name that no resolver knows (RFC 2606), for a selection whose page has no address of the web.
constexpr const char* kNoAddress = "http://selection.invalid/";
// Where a captured page is served that names nothing of this machine, so that it is a page of the
// web to the browser: that shows no frame of the web in the prints of local pages.
constexpr const char* kCopy = "http://copy.invalid/";
// Where the style sheets of a captured page are served: the browser takes no style sheet from a
// local file whose name does not end in ".css".
constexpr std::string_view kSheets = "http://sheets.invalid/";
constexpr std::size_t kLongestUrl = 4'096;
// Besides the browser's own switch; it holds for what is served here alone.
constexpr const char* kNoScripts = "script-src 'none'; object-src 'none'";

bool IsPassive(const std::string& type) {
    return type == "Image" || type == "Stylesheet" || type == "Font";
}

Answer Serve(std::string body, const char* type) {
    Answer answer;
    answer.kind = Answer::Kind::Serve;
    answer.headers = {{"Content-Type", type}, {"Content-Security-Policy", kNoScripts}};
    answer.body = std::move(body);
    return answer;
}

std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::string EscapeText(std::string_view text) {
    std::string out;
    for (const char c : text) {
        if (c == '&') {
            out += "&amp;";
        } else if (c == '<') {
            out += "&lt;";
        } else {
            out += c;
        }
    }
    return out;
}

bool StartsWithTag(std::string_view text, std::string_view tag) {
    if (text.size() <= tag.size()) return false;
    for (std::size_t i = 0; i < tag.size(); ++i) {
        if ((text[i] | 0x20) != (tag[i] | 0x20)) return false;
    }
    return std::string_view(" \t\r\n/>").find(text[tag.size()]) != std::string_view::npos;
}

std::size_t EndOfComment(std::string_view text) {
    const std::size_t end = text.find("-->", 2);  // "<!-->" is a whole one
    return end == std::string_view::npos ? text.size() : end + 3;
}

/// The length of the tag at the start, whose quoted values may hold anything; 1 if it is none. A
/// tag without an end takes the rest, as it does in browsers.
std::size_t EndOfTag(std::string_view text) {
    const bool letter = text.size() > 1 && (text[1] | 0x20) >= 'a' && (text[1] | 0x20) <= 'z';
    if (!letter) return 1;
    char before = 0;  // the last character that is no blank
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] == '>') return i + 1;
        const bool quoted = before == '=' && (text[i] == '"' || text[i] == '\'');
        if (quoted) i = text.find(text[i], i + 1);
        if (i == std::string_view::npos) break;
        if (std::string_view(" \t\r\n\f").find(text[i]) == std::string_view::npos) before = text[i];
    }
    return text.size();
}

/// The place behind the end tag, counted from the start of the text; npos if there is none.
std::size_t EndOfElement(std::string_view text, std::string_view endTag) {
    for (std::size_t at = text.find('<'); at != std::string_view::npos;
         at = text.find('<', at + 1)) {
        if (!StartsWithTag(text.substr(at), endTag)) continue;
        const std::size_t end = text.find('>', at);
        return end == std::string_view::npos ? end : end + 1;
    }
    return std::string_view::npos;
}

/// Leads the addresses of files in the folder to where they are served. They stand in quotes or
/// parentheses, so nothing else can be taken for a part of one.
std::string RedirectSheets(std::string_view text, std::string_view folderName) {
    const std::string inFolder = "/" + std::string(folderName) + "/";
    std::string out;
    std::size_t done = 0;
    for (std::size_t at = text.find(inFolder); at != std::string_view::npos;
         at = text.find(inFolder, at + 1)) {
        const std::size_t least = std::max(done, at - std::min(at, kLongestUrl));
        const std::size_t edge = text.substr(least, at - least).find_last_of("\"'()<> \t\r\n=");
        const std::size_t start = edge == std::string_view::npos ? least : least + edge + 1;
        if (!text.substr(start).starts_with("file:")) continue;
        out += text.substr(done, start - done);
        out += kSheets;
        done = at + inFolder.size();
    }
    out += text.substr(done);
    return out;
}

/// Takes back that the sheets which are served here must have the bytes of the original: a copy has
/// other addresses in it.
void DropIntegrity(std::string& markup) {
    constexpr std::string_view kAttribute = " integrity=";
    constexpr std::string_view kNoAttribute = " data-hash=";
    static_assert(kAttribute.size() == kNoAttribute.size());
    for (std::size_t at = markup.find(kSheets); at != std::string::npos;
         at = markup.find(kSheets, at + 1)) {
        const std::size_t least = at - std::min(at, kLongestUrl);
        std::string_view tag = std::string_view(markup).substr(least, at + kLongestUrl - least);
        const std::size_t open = tag.rfind('<', at - least);
        if (open == std::string_view::npos) continue;
        tag = tag.substr(0, tag.find('>', at - least));
        const std::size_t found = tag.find(kAttribute, open);
        if (found == std::string_view::npos) continue;
        markup.replace(least + found, kNoAttribute.size(), kNoAttribute);
    }
}

}  // namespace

std::string DropNoscript(std::string_view markup) {
    struct Opaque {
        std::string_view tag;
        std::string_view endTag;
        bool dropped;
        bool ends;  // an end tag may still come; asked once, or each start would search the rest
    };
    Opaque opaques[] = {{"<noscript", "</noscript", true, true},
                        {"<script", "</script", false, true},
                        {"<style", "</style", false, true},
                        {"<textarea", "</textarea", false, true}};
    std::string out;
    std::size_t done = 0;
    std::size_t at = markup.find('<');
    while (at != std::string_view::npos) {
        const std::string_view rest = markup.substr(at);
        std::size_t length = rest.starts_with("<!--") ? EndOfComment(rest) : EndOfTag(rest);
        for (Opaque& opaque : opaques) {
            if (!opaque.ends || !StartsWithTag(rest, opaque.tag)) continue;
            const std::size_t end = EndOfElement(rest, opaque.endTag);
            opaque.ends = end != std::string_view::npos;
            if (!opaque.ends) continue;
            length = end;
            if (!opaque.dropped) continue;
            out += markup.substr(done, at - done);
            done = at + length;
        }
        at = markup.find('<', at + length);
    }
    out += markup.substr(done);
    return out;
}

std::string WrapSelection(std::string_view markup, std::string_view title) {
    std::string page = "<!DOCTYPE html><html><head><meta charset=\"utf-8\"><title>";
    page += EscapeText(title);
    page += "</title></head><body>";
    page += markup;
    page += "</body></html>";
    return page;
}

Result<SourceDocument> SourceDocument::Make(const Item& item, const platform::WideString& title) {
    SourceDocument document;
    const Outcome made = !item.selectionHtml.empty() ? document.UseSelection(item, title)
                         : item.sourceIsTemporary    ? document.UseCapture(item)
                                                     : document.UseAddress(ToUtf8(item.source));
    if (!made) return made.GetError();
    if (document.body_ && document.body_->size() > chromium::kLargestBody) {
        return Error{"The page is too large for the browser: " +
                     std::to_string(document.body_->size() >> 20) + " MiB, of " +
                     std::to_string(chromium::kLargestBody >> 20) + " that it takes."};
    }
    return document;
}

Outcome SourceDocument::UseSelection(const Item& item, const platform::WideString& title) {
    // Relative addresses of the selection start at the page that it comes from.
    if (!UseAddress(ToUtf8(item.source))) url_ = kNoAddress;
    if (!local_ && !IsWebUrl(url_)) url_ = kNoAddress;
    body_ = WrapSelection(DropNoscript(ToUtf8(item.selectionHtml)), ToUtf8(title));
    return Done{};
}

Outcome SourceDocument::UseCapture(const Item& item) {
    const std::string path = RealPath(HostPath(item.source));
    if (path.empty() || !IsRegularFile(path)) {
        return Error{"The captured page " + ToUtf8(item.source) + " is missing."};
    }
    local_ = true;
    url_ = FileUrlOf(path);
    const std::string stem = path.substr(0, path.rfind(".html"));
    folder_ = RealPath(stem + "_files");
    if (folder_.empty()) folder_ = RealPath(stem + ".files");
    body_ = DropNoscript(ReadFile(path));
    if (!folder_.empty()) {
        hasSheets_ = true;
        body_ = RedirectSheets(*body_, NameOf(folder_));
        DropIntegrity(*body_);
    }
    if (!NamesLocalFiles()) {
        local_ = false;
        url_ = kCopy;
    }
    return Done{};
}

/// Whether the captured page or one of its sheets has the address of a file that is not its own, as
/// copies of local pages do.
bool SourceDocument::NamesLocalFiles() const {
    const auto names = [](std::string_view text) {
        return text.find("file:/") != std::string_view::npos;
    };
    if (names(*body_)) return true;
    std::error_code code;
    for (const auto& entry : std::filesystem::directory_iterator(folder_, code)) {
        const std::string path = entry.path().string();
        if (IsRegularFile(path) && names(RedirectSheets(ReadFile(path), NameOf(folder_))))
            return true;
    }
    return false;
}

Outcome SourceDocument::UseAddress(const std::string& source) {
    if (IsWebUrl(source)) {
        url_ = source;
        return Done{};
    }
    std::string path;
    if (const auto filePath = PathOfFileUrl(source)) {
        path = *filePath;
        const std::size_t fragment = source.find('#');
        url_ = FileUrlOf(path) + (fragment == std::string::npos ? "" : source.substr(fragment));
    } else if (source.starts_with("about:") || source.starts_with("data:")) {
        url_ = source;
        return Done{};
    } else {
        path = RealPath(HostPath(platform::FromUtf8(source)));
        url_ = FileUrlOf(path);
    }
    if (path.empty() || RealPath(path).empty()) {
        return Error{"There is no page at \"" + source + "\"."};
    }
    local_ = true;
    folder_ = FolderOf(RealPath(path));
    return Done{};
}

Answer SourceDocument::Decide(const Request& request, const std::string& mainFrame) {
    const bool document = request.type == "Document";
    if (document && request.frame == mainFrame) {
        if (sealed_) return Answer::Refuse();
        if (body_) {
            // By order and not by address, which the browser may spell in another way.
            const bool first = !std::exchange(served_, true);
            return first ? Serve(std::move(*body_), "text/html; charset=utf-8") : Answer::Refuse();
        }
        // Page and server may lead on to the web; only a local page also to files, and only to
        // those that it could show in a frame.
        if (!std::exchange(served_, true) || IsWebUrl(request.url)) return Answer::Continue();
        return local_ ? DecideLocal(request) : Answer::Refuse();
    }
    if (!document && !IsPassive(request.type)) return Answer::Refuse();
    if (hasSheets_ && request.url.starts_with(kSheets)) return ServeSheet(request);
    if (IsWebUrl(request.url)) return Answer::Continue();
    return local_ ? DecideLocal(request) : Answer::Refuse();
}

Answer SourceDocument::DecideLocal(const Request& request) const {
    const auto named = PathOfFileUrl(request.url);
    const std::string path = named ? RealPath(*named) : std::string();
    if (path.empty() || !IsRegularFile(path)) return Answer::Refuse();
    if (request.type == "Document" && !LiesIn(path, folder_)) return Answer::Refuse();
    return Answer::Continue();
}

Answer SourceDocument::ServeSheet(const Request& request) const {
    const std::string name = request.url.substr(kSheets.size());
    const std::string path = RealPath(folder_ + "/" + name);
    if (request.type != "Stylesheet" || !LiesIn(path, folder_) || !IsRegularFile(path)) {
        return Answer::Refuse();
    }
    return Serve(RedirectSheets(ReadFile(path), NameOf(folder_)), "text/css; charset=utf-8");
}

}  // namespace converter
