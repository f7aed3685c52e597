#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "foundation/format_text.h"
#include "foundation/wstring_view.h"

namespace AUX {

/// An owned text of 16-bit or 8-bit units: see WString and AString. Owns its block; movable, not
/// copyable, since a copy can fail: `Assign` says so. May be moved and zeroed as raw bytes. Not
/// thread-safe, though any thread may free it.
///
/// An operation that gives a Boolean gives false when memory runs out or the text would pass
/// kMaxLength, and leaves the string as it was. Lengths count units, without the terminator that
/// always stands behind the text. A negative length means that the text runs to its terminator, a
/// null text is an empty one, and a text may be a part of the string that it is given to.
template <class Char>
class BasicString {
public:
    using View = BasicStringView<Char>;

    static constexpr std::uint32_t kMaxLength = 0xFFFFFFFE;

    constexpr BasicString() noexcept = default;
    BasicString(BasicString&& other) noexcept
        : data(std::exchange(other.data, nullptr)),
          length(std::exchange(other.length, 0)),
          capacity(std::exchange(other.capacity, 0)) {}
    BasicString& operator=(BasicString&& other) noexcept {
        BasicString taken(std::move(other));
        Swap(taken);
        return *this;
    }
    ~BasicString() { Free(); }

    /// Replaces the content; the capacity becomes the length exactly. An empty text gives the
    /// block back. Of the string's own `Text()` only a shorter length has an effect: the string is
    /// cut there and keeps its block.
    [[nodiscard]] bool Assign(const Char* text, std::int64_t textLength = -1) noexcept;
    [[nodiscard]] bool Assign(View text) noexcept {
        return Assign(text.data(), static_cast<std::int64_t>(text.size()));
    }

    /// Adds a text at the end.
    [[nodiscard]] bool Append(const Char* text, std::int64_t textLength = -1) noexcept {
        return Append(MakeView(text, textLength));
    }
    [[nodiscard]] bool Append(View text) noexcept {
        if (text.empty()) return true;
        if (text.size() > capacity - length) return AppendGrowing(text);
        AppendInPlace(text);
        return true;
    }

    /// Adds `count` copies of a character at the end.
    [[nodiscard]] bool AppendRepeated(Char character, std::uint32_t count) noexcept;

    /// Inserts one character; a position past the end means the end.
    [[nodiscard]] bool InsertAt(std::uint32_t position, Char character) noexcept;

    /// Sets the length. New characters are undefined until someone fills them: size the string,
    /// fill `Data()`, then set the length that was filled.
    [[nodiscard]] bool SetLength(std::uint32_t newLength) noexcept;

    /// Makes the capacity at least `wanted`; the length stays.
    [[nodiscard]] bool Reserve(std::uint32_t wanted) noexcept;

    /// Replaces the content with a formatted text: %d %i %u %x %X %f, a text as %ls (%s in an
    /// AString), %%, each with width, precision and the flags '-', '+', ' ' and '0'. Integers take
    /// the size of their argument, so length letters change nothing. The locale is not asked: the
    /// decimal sign is '.'. Format and arguments may be parts of this string. A literal that does
    /// not fit its arguments does not compile.
    template <class... Arguments>
    [[nodiscard]] bool Format(FormatText<Char, std::type_identity_t<Arguments>...> format,
                              const Arguments&... arguments) noexcept {
        const FormatArgument<Char> list[] = {FormatArgument<Char>(arguments)..., 0};
        return FormatList(format.Get(), list, sizeof...(Arguments));
    }

    /// The same for a format that is known at run time only. \return false also, with the content
    /// unchanged, if the format is null, has an unknown conversion or does not fit its arguments.
    [[nodiscard]] bool FormatList(const Char* format, const FormatArgument<Char>* arguments,
                                  std::size_t count) noexcept;

    /// The terminated text; never null.
    [[nodiscard]] const Char* Text() const noexcept { return data ? data : kEmpty; }

    /// The block itself, with room for Capacity() units and a terminator; null if there is none.
    [[nodiscard]] Char* Data() noexcept { return data; }

    [[nodiscard]] std::uint32_t Length() const noexcept { return length; }
    [[nodiscard]] std::uint32_t Capacity() const noexcept { return capacity; }
    [[nodiscard]] bool IsEmpty() const noexcept { return length == 0; }
    operator View() const noexcept { return View(data, length); }
    Char operator[](std::size_t index) const noexcept {
        assert(index < length);
        return data[index];
    }

    /// Empties the string; the block stays.
    void Clear() noexcept {
        length = 0;
        if (data) data[0] = 0;
    }

    /// Empties the string and gives its block back.
    void Free() noexcept;

    void Swap(BasicString& other) noexcept {
        std::swap(data, other.data);
        std::swap(length, other.length);
        std::swap(capacity, other.capacity);
    }

    friend bool operator==(const BasicString& a, const BasicString& b) noexcept {
        return View(a) == View(b);
    }
    friend bool operator==(const BasicString& a, View b) noexcept { return View(a) == b; }

private:
    // The shared empty text.
    static const Char kEmpty[];

    static View MakeView(const Char* text, std::int64_t textLength) noexcept {
        return textLength < 0 ? View(text) : View(text, static_cast<std::size_t>(textLength));
    }
    // Not inline: compilers warn of a copy from a literal that is known to be too short for it,
    // where they do not see that its length keeps them from getting there.
    static void MoveUnits(Char* to, View text) noexcept;
    bool AppendGrowing(View text) noexcept;
    void AppendInPlace(View text) noexcept {
        if (text.size() == 1) {
            data[length] = text[0];  // The most frequent case needs no call.
        } else {
            MoveUnits(data + length, text);
        }
        length += static_cast<std::uint32_t>(text.size());
        data[length] = 0;
    }
    bool Owns(const Char* text) const noexcept;
    bool GrowRounded(std::uint64_t newLength) noexcept;
    bool AssignPart(View part) noexcept;

    Char* data = nullptr;
    std::uint32_t length = 0;
    std::uint32_t capacity = 0;
};

extern template class BasicString<WCHAR>;
extern template class BasicString<char>;

static_assert(sizeof(BasicString<WCHAR>) == 16 && sizeof(BasicString<char>) == 16);
static_assert(std::is_standard_layout_v<BasicString<WCHAR>>);

}  // namespace AUX
