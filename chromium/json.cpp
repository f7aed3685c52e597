#include "chromium/json.h"

#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>

namespace chromium {
namespace {

using Tree = nlohmann::json;

const Tree& TreeOf(const std::shared_ptr<const void>& node) {
    static const Tree kNull;
    return node ? *static_cast<const Tree*>(node.get()) : kNull;
}

/// The unit of the escape `\uXXXX` at `at`, or -1.
int EscapedUnit(std::string_view text, std::size_t at) {
    if (text.size() < 6 || at > text.size() - 6 || text[at] != '\\' || text[at + 1] != 'u') {
        return -1;
    }
    int unit = 0;
    const char* end = text.data() + at + 6;
    const auto read = std::from_chars(text.data() + at + 2, end, unit, 16);
    return read.ptr == end && read.ec == std::errc() && unit >= 0 ? unit : -1;
}

/// Parsers refuse half a surrogate pair. Backslashes are taken in pairs, so that an escaped
/// backslash before a "u" is no escape.
void RepairSurrogates(std::string& text) {
    for (std::size_t i = text.find('\\'); i != std::string::npos && i + 1 < text.size();
         i = text.find('\\', i)) {
        const int unit = EscapedUnit(text, i);
        if (unit < 0) {
            i += 2;
            continue;
        }
        const bool high = unit >= 0xD800 && unit <= 0xDBFF;
        const bool low = unit >= 0xDC00 && unit <= 0xDFFF;
        const int next = high ? EscapedUnit(text, i + 6) : -1;
        if (high && next >= 0xDC00 && next <= 0xDFFF) {
            i += 12;
            continue;
        }
        if (high || low) text.replace(i, 6, "\\ufffd");
        i += 6;
    }
}

constexpr std::string_view kBase64 =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

void AppendBase64(std::string_view bytes, std::string& out) {
    out.reserve(out.size() + (bytes.size() + 2) / 3 * 4 + 2);  // and a closing quote
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const auto byte = [&](std::size_t k) {
            return k < bytes.size() ? static_cast<std::uint8_t>(bytes[k]) : std::uint8_t{0};
        };
        const std::uint32_t group = static_cast<std::uint32_t>(byte(i)) << 16 |
                                    static_cast<std::uint32_t>(byte(i + 1)) << 8 | byte(i + 2);
        out += kBase64[group >> 18];
        out += kBase64[group >> 12 & 63];
        out += i + 1 < bytes.size() ? kBase64[group >> 6 & 63] : '=';
        out += i + 2 < bytes.size() ? kBase64[group & 63] : '=';
    }
}

}  // namespace

Result<Json> Json::Parse(std::string text) {
    RepairSurrogates(text);
    auto tree = std::make_shared<Tree>(Tree::parse(text, nullptr, false));
    if (tree->is_discarded()) return Error{"The text is not well-formed JSON."};
    return Json(std::move(tree));
}

bool Json::IsNull() const noexcept { return TreeOf(node_).is_null(); }
bool Json::IsText() const noexcept { return TreeOf(node_).is_string(); }
bool Json::IsObject() const noexcept { return TreeOf(node_).is_object(); }
bool Json::IsArray() const noexcept { return TreeOf(node_).is_array(); }

Json Json::operator[](std::string_view name) const {
    const Tree& tree = TreeOf(node_);
    if (!tree.is_object()) return {};
    const auto found = tree.find(name);
    return found == tree.end() ? Json() : Json(std::shared_ptr<const void>(node_, &*found));
}

Json Json::At(std::size_t index) const {
    const Tree& tree = TreeOf(node_);
    if (!tree.is_array() || index >= tree.size()) return {};
    return Json(std::shared_ptr<const void>(node_, &tree[index]));
}

std::size_t Json::Size() const noexcept {
    return IsObject() || IsArray() ? TreeOf(node_).size() : 0;
}

const std::string& Json::Text() const noexcept {
    static const std::string kEmpty;
    return IsText() ? TreeOf(node_).get_ref<const std::string&>() : kEmpty;
}

double Json::Number(double otherwise) const noexcept {
    const Tree& tree = TreeOf(node_);
    return tree.is_number() ? tree.get<double>() : otherwise;
}

bool Json::Flag(bool otherwise) const noexcept {
    const Tree& tree = TreeOf(node_);
    return tree.is_boolean() ? tree.get<bool>() : otherwise;
}

std::string Json::Write() const {
    return TreeOf(node_).dump(-1, ' ', false, Tree::error_handler_t::replace);
}

std::string QuoteJson(std::string_view utf8) {
    return Tree(utf8).dump(-1, ' ', false, Tree::error_handler_t::replace);
}

void Params::WriteTo(std::string& out) const { out.append("{").append(members_).append("}"); }

void Params::Name(std::string_view name) {
    if (!members_.empty()) members_ += ',';
    members_.append("\"").append(name).append("\":");
}

Params& Params::Text(std::string_view name, std::string_view utf8) {
    return Raw(name, QuoteJson(utf8));
}

Params& Params::Number(std::string_view name, double value) {
    char digits[32];
    const auto end =
        std::to_chars(digits, digits + sizeof digits, std::isfinite(value) ? value : 0);
    return Raw(name, std::string_view(digits, static_cast<std::size_t>(end.ptr - digits)));
}

Params& Params::Flag(std::string_view name, bool value) {
    return Raw(name, value ? "true" : "false");
}

Params& Params::Base64(std::string_view name, std::string_view bytes) {
    Name(name);
    members_ += '"';
    AppendBase64(bytes, members_);
    members_ += '"';
    return *this;
}

Params& Params::Raw(std::string_view name, std::string_view json) {
    Name(name);
    members_ += json;
    return *this;
}

std::string EncodeBase64(std::string_view bytes) {
    std::string out;
    AppendBase64(bytes, out);
    return out;
}

Result<std::string> DecodeBase64(std::string_view text) {
    static constexpr auto kValues = [] {
        struct {
            std::uint8_t of[256];
        } table{};
        for (std::uint8_t& value : table.of) value = 64;
        for (std::size_t k = 0; k < kBase64.size(); ++k) {
            table.of[static_cast<std::uint8_t>(kBase64[k])] = static_cast<std::uint8_t>(k);
        }
        return table;
    }();
    while (!text.empty() && text.back() == '=') text.remove_suffix(1);
    if (text.size() % 4 == 1) return Error{"The base64 text is cut off."};
    std::string out;
    out.reserve(text.size() / 4 * 3 + 2);
    std::uint32_t bits = 0;
    int count = 0;
    for (const char c : text) {
        const std::uint8_t value = kValues.of[static_cast<std::uint8_t>(c)];
        if (value == 64) return Error{"The base64 text holds a character outside its alphabet."};
        bits = bits << 6 | value;
        count += 6;
        if (count >= 8) {
            count -= 8;
            out += static_cast<char>(bits >> count & 0xFF);
        }
    }
    return out;
}

}  // namespace chromium
