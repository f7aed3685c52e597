#pragma once

/// JSON as the browser's protocol carries it: a read-only tree and a writer of parameters. The
/// parser behind it stays in one source file, since it is slow to compile.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "chromium/result.h"

namespace chromium {

/// A value of a parsed text. Copies are cheap and share the whole tree, which lives as long as any
/// of them. Asking for what is not there gives a null value, so that a path can be followed
/// without a check at each step.
class Json {
public:
    /// Null.
    Json() noexcept = default;

    /// Parses one text (RFC 8259). An escape that stands for one half of a surrogate pair, which
    /// pages may hold, becomes U+FFFD first.
    static Result<Json> Parse(std::string text);

    [[nodiscard]] bool IsNull() const noexcept;
    [[nodiscard]] bool IsText() const noexcept;
    [[nodiscard]] bool IsObject() const noexcept;
    [[nodiscard]] bool IsArray() const noexcept;

    /// The member of an object; null if this is no object or has no such member.
    [[nodiscard]] Json operator[](std::string_view name) const;
    /// The element of an array; null if this is no array or is shorter.
    [[nodiscard]] Json At(std::size_t index) const;
    /// The number of members or elements; 0 for anything else.
    [[nodiscard]] std::size_t Size() const noexcept;

    /// The text, UTF-8; empty if this is none. Valid as long as the tree.
    [[nodiscard]] const std::string& Text() const noexcept;
    [[nodiscard]] double Number(double otherwise = 0) const noexcept;
    [[nodiscard]] bool Flag(bool otherwise = false) const noexcept;

    /// The value as JSON text.
    [[nodiscard]] std::string Write() const;

private:
    explicit Json(std::shared_ptr<const void> node) noexcept : node_(std::move(node)) {}

    std::shared_ptr<const void> node_;  // points at the value, owns the tree; null stands for null
};

/// Writes the members of one object. `name` is plain ASCII.
class Params {
public:
    /// Text that is not well-formed UTF-8 is repaired with U+FFFD.
    Params& Text(std::string_view name, std::string_view utf8);
    Params& Number(std::string_view name, double value);
    Params& Flag(std::string_view name, bool value);
    /// Any bytes, as base64 text.
    Params& Base64(std::string_view name, std::string_view bytes);
    /// `json` is written as it stands.
    Params& Raw(std::string_view name, std::string_view json);

    /// The object as JSON text, behind what `out` holds.
    void WriteTo(std::string& out) const;

private:
    void Name(std::string_view name);

    std::string members_;
};

/// A text as a JSON literal, quotes included; also a literal of the page's script language.
std::string QuoteJson(std::string_view utf8);

/// Base64 (RFC 4648) without line breaks, as the protocol carries bytes. Decoding refuses a
/// character outside the alphabet and a broken end.
std::string EncodeBase64(std::string_view bytes);
Result<std::string> DecodeBase64(std::string_view text);

}  // namespace chromium
