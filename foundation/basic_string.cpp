#include "foundation/basic_string.h"

#include <algorithm>
#include <cstring>
#include <functional>

#include "foundation/memory.h"

namespace AUX {
namespace {

// The room of the rounded rule, in units with the terminator: at least one unit of slack, and
// always a multiple of 32. In 64 bits, since the largest lengths round up to 2^32.
constexpr std::uint64_t RoundedRoom(std::uint64_t length) noexcept {
    return (length + 32) & ~std::uint64_t{31};
}

template <class Char>
Char* Reallocate(Char* block, std::uint64_t units) noexcept {
    if (units > kMaxRequest / sizeof(Char)) return nullptr;
    return static_cast<Char*>(Realloc(block, static_cast<std::size_t>(units) * sizeof(Char)));
}

}  // namespace

template <class Char>
const Char BasicString<Char>::kEmpty[1] = {};

template <class Char>
bool BasicString<Char>::Owns(const Char* text) const noexcept {
    // std::less orders any two pointers; the terminator belongs to the block.
    const std::less<const Char*> isBefore;
    return data && !isBefore(text, data) && !isBefore(data + capacity, text);
}

template <class Char>
bool BasicString<Char>::GrowRounded(std::uint64_t newLength) noexcept {
    if (newLength > kMaxLength) return false;
    const std::uint64_t room = RoundedRoom(newLength);
    Char* const block = Reallocate(data, room);
    if (!block) return false;
    if (!data) block[0] = 0;
    data = block;
    capacity = static_cast<std::uint32_t>(std::min<std::uint64_t>(room - 1, kMaxLength));
    return true;
}

template <class Char>
bool BasicString<Char>::Assign(const Char* text, std::int64_t textLength) noexcept {
    const View source = MakeView(text, textLength);
    if (source.empty()) {
        Free();
        return true;
    }
    if (source.data() == data) {
        if (source.size() < length) {
            length = static_cast<std::uint32_t>(source.size());
            data[length] = 0;
        }
        return true;
    }
    if (source.size() > kMaxLength) return false;
    if (Owns(source.data())) return AssignPart(source);
    const std::uint32_t newLength = static_cast<std::uint32_t>(source.size());
    if (!data || capacity != newLength) {
        Char* const block = Reallocate(data, std::uint64_t{newLength} + 1);
        if (!block) return false;
        data = block;
        capacity = newLength;
    }
    std::memmove(data, source.data(), source.size() * sizeof(Char));
    length = newLength;
    data[length] = 0;
    return true;
}

// A smaller block could cut off the part before it is copied, so a new block takes it.
template <class Char>
bool BasicString<Char>::AssignPart(View part) noexcept {
    BasicString taken;
    if (!taken.Assign(part)) return false;
    Swap(taken);
    return true;
}

// The text may be a part of the string and reach behind its end.
template <class Char>
void BasicString<Char>::MoveUnits(Char* to, View text) noexcept {
    std::memmove(to, text.data(), text.size() * sizeof(Char));
}

template <class Char>
bool BasicString<Char>::AppendGrowing(View text) noexcept {
    const bool isOwn = Owns(text.data());
    const std::size_t offset = isOwn ? static_cast<std::size_t>(text.data() - data) : 0;
    if (text.size() > kMaxLength || !GrowRounded(std::uint64_t{length} + text.size())) return false;
    AppendInPlace(isOwn ? View(data + offset, text.size()) : text);
    return true;
}

template <class Char>
bool BasicString<Char>::AppendRepeated(Char character, std::uint32_t count) noexcept {
    if (count == 0) return true;
    if (count > capacity - length && !GrowRounded(std::uint64_t{length} + count)) return false;
    std::fill_n(data + length, count, character);
    length += count;
    data[length] = 0;
    return true;
}

template <class Char>
bool BasicString<Char>::InsertAt(std::uint32_t position, Char character) noexcept {
    if (length == capacity && !GrowRounded(std::uint64_t{length} + 1)) return false;
    Char* const place = data + std::min(position, length);
    const std::size_t behind = static_cast<std::size_t>(data + length - place);
    std::memmove(place + 1, place, behind * sizeof(Char));
    *place = character;
    data[++length] = 0;
    return true;
}

template <class Char>
bool BasicString<Char>::SetLength(std::uint32_t newLength) noexcept {
    if (newLength > capacity && !GrowRounded(newLength)) return false;
    length = newLength;
    if (data) data[length] = 0;
    return true;
}

template <class Char>
bool BasicString<Char>::Reserve(std::uint32_t wanted) noexcept {
    return wanted <= capacity || GrowRounded(wanted);
}

template <class Char>
bool BasicString<Char>::FormatList(const Char* format, const FormatArgument<Char>* arguments,
                                   std::size_t count) noexcept {
    std::uint64_t measured = 0;
    if (!format || !PrintFormat<Char>(nullptr, measured, format, arguments, count)) return false;
    if (measured > kMaxLength) return false;
    if (measured == 0) {
        Clear();
        return true;
    }
    // What is printed over must not be read any more: then a new block of the same room takes it.
    const bool readsItself =
        Owns(format) || std::any_of(arguments, arguments + count, [&](const auto& argument) {
            return argument.kind == FormatKind::Text && Owns(argument.text.data());
        });
    if (readsItself) {
        BasicString taken;
        if (!taken.Reserve(std::max(capacity, static_cast<std::uint32_t>(measured)))) return false;
        if (!taken.FormatList(format, arguments, count)) return false;
        Swap(taken);
        return true;
    }
    if (!Reserve(static_cast<std::uint32_t>(measured))) return false;
    (void)PrintFormat(data, measured, format, arguments, count);  // It was accepted above.
    length = static_cast<std::uint32_t>(measured);
    data[length] = 0;
    return true;
}

template <class Char>
void BasicString<Char>::Free() noexcept {
    AUX::Free(data);
    data = nullptr;
    length = 0;
    capacity = 0;
}

template class BasicString<WCHAR>;
template class BasicString<char>;

}  // namespace AUX
