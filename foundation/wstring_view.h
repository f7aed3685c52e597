#pragma once

#include <cstddef>
#include <string_view>

#include "platform/base.h"

namespace AUX {

/// A text that is only read: pointer and length, nothing owned. It is the standard's view with two
/// differences: a null pointer is an empty text, and `substr` never fails. The strings of this
/// library and literals turn into it by themselves. Not terminated: the platform's calls get
/// WString::Text().
template <class Char>
class BasicStringView : public std::basic_string_view<Char> {
    using Base = std::basic_string_view<Char>;

public:
    constexpr BasicStringView() noexcept = default;
    constexpr BasicStringView(Base text) noexcept : Base(text) {}
    /// A terminated text, or null.
    constexpr BasicStringView(const Char* text) noexcept : Base(text ? Base(text) : Base()) {}
    constexpr BasicStringView(const Char* text, std::size_t length) noexcept
        : Base(text, text ? length : 0) {}

    /// The part from `start`, at most `count` units; empty when it begins behind the end.
    [[nodiscard]] constexpr BasicStringView substr(std::size_t start,
                                                   std::size_t count = Base::npos) const noexcept {
        if (start >= this->size()) return {};
        const std::size_t rest = this->size() - start;
        return {this->data() + start, count < rest ? count : rest};
    }
};

using WStringView = BasicStringView<WCHAR>;
using AStringView = BasicStringView<char>;

}  // namespace AUX
