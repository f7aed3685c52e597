#pragma once

#include "cab/data_item.h"

/// Places in a tree, by a text of names and indices such as `options.pages[3].title`.
///
/// A '.' ends a name; '[' ends a name and opens an index, which ']' closes. An index has decimal
/// digits only, none are 0, and the largest is 2147483647. A '.' directly behind ']' adds no empty
/// name, and neither does a '[' at the start; any other empty name is a name of length 0. Empty
/// paths, an unclosed '[', a ']' without '[', and more than kMaxPathParts parts are invalid.
namespace AUX::CAB {

inline constexpr std::uint32_t kMaxPathParts = 1000;

/// Walks down. An index on a dictionary counts in the order of keys.
/// \return null if nothing is there, or the path is invalid.
[[nodiscard]] DataItem* FindPath(DataItem& item, WStringView path) noexcept;

enum class KindMatch : std::uint8_t {
    AnyPresent,  ///< An item that is there already may be of any kind.
    Strict,
};

/// What was added to a tree, so that it can be taken back while nothing else has changed there.
struct Growth {
    DataItem* parent = nullptr;  ///< Where the first item was added; null if none was.
    std::uint32_t oldFlags = 0;  ///< The parent's, from before.
    std::int64_t index = -1;     ///< Of an element; -1 for the child of a key.
    bool hasFilled = false;      ///< It was put at an empty place.
    WStringView key;             ///< A part of the path that it was made for.

    /// Takes back that item with all that was made below it. The change count stays risen.
    void Undo() noexcept;
};

/// Walks down and makes what is missing: dictionaries where a name follows, arrays where an index
/// does, and at the end an item of `kind`. An index past the end of an array adds one element.
/// With Kind::None the item itself is only looked up, unless it is an array's next one; containers
/// on the way to it are made, and stay.
/// \param growth  Gets what was made; may be null.
/// \return null if that cannot be; what was made is then gone again, though the change count has
///         risen if something had been.
[[nodiscard]] DataItem* MakePath(DataItem& item, WStringView path, Kind kind,
                                 KindMatch match = KindMatch::AnyPresent,
                                 Growth* growth = nullptr) noexcept;

}  // namespace AUX::CAB
