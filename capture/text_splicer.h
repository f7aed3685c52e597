#pragma once

#include "foundation/wstring.h"

/// Builds an output out of a source text, by copying stretches of it and adding new pieces. The
/// source is borrowed and must outlive the run; the output is owned. Places are pointers into the
/// source, or the one behind its last character, and never lie before the cursor. Not thread-safe.
///
/// Memory that runs out is remembered: from then on the output stays as it is, and IsComplete()
/// gives false until the next Clear().
class TextSplicer {
public:
    /// Forgets the source and empties Output.
    void Clear() noexcept;

    /// Sets the source, which is not empty, and the cursor on its beginning. Output stays.
    /// \param end  The last character, not the place behind it.
    void Init(const WCHAR* begin, const WCHAR* end) noexcept;

    /// Sets aside the room that a whole rewritten source takes as a rule, so that Output seldom
    /// moves. What is not written of it takes no memory of the machine, and no room is no failure.
    void ExpectWholeSource() noexcept;

    /// Adds the source from the cursor up to, not including, `place`, where the cursor then stands.
    void CopyUpTo(const WCHAR* place) noexcept {
        Append({Cursor, static_cast<std::size_t>(place - Cursor)});
        Cursor = place;
    }

    /// Moves the cursor; what it passes over is left out.
    void SkipTo(const WCHAR* place) noexcept { Cursor = place; }

    /// Adds a text; the cursor stays.
    void Append(AUX::WStringView text) noexcept {
        if (isComplete_ && !(HasRoom(text.size()) && Output.Append(text))) isComplete_ = false;
    }

    /// Has the processor fetch the memory behind Output's text, to where so many more units (2 KB
    /// at most) will go, while something else is done.
    void FetchRoom(std::size_t units) const noexcept;

    /// Tells whether everything asked for is in Output.
    [[nodiscard]] bool IsComplete() const noexcept { return isComplete_; }

    /// Notes that a piece of the output could not be made.
    void Fail() noexcept { isComplete_ = false; }

    const WCHAR* Begin = nullptr;
    const WCHAR* End = nullptr;  ///< The last character.
    const WCHAR* Cursor = nullptr;
    AUX::WString Output;

private:
    bool HasRoom(std::size_t units) noexcept {
        return units <= Output.Capacity() - Output.Length() || Grow(units);
    }
    bool Grow(std::size_t units) noexcept;

    bool isComplete_ = true;
};
