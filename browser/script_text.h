#pragma once

#include <span>

#include "foundation/wstring.h"

/// Registration scripts as text: what is done to them before their words are read. Free of the
/// registry.

/// A name that a script may hold between two '%', and what stands for it. Borrowed.
struct ScriptVariable {
    AUX::WStringView name;  ///< Found whatever the case of its letters.
    AUX::WStringView value;
};

/// For whom a server is registered.
enum class ScriptScope {
    Machine,
    User,  ///< What a script puts below HKCR goes to the classes of the current user.
};

/// Puts the values of a script's variables in their places: %NAME% becomes the value of the first
/// variable with that name, wherever it stands, and %% a single '%'. Values are not looked through
/// again. In the scope of a user each block that begins with "HKCR", outside of all braces and
/// quotes, becomes one of HKCU with the keys Software and Classes around it; "HKEY_CLASSES_ROOT" is
/// left alone.
/// \param output  Gets the result; of no use after a failure.
/// \return DISP_E_EXCEPTION for an unknown name or a '%' without a partner, E_FAIL for a name of 32
///         characters or more, E_OUTOFMEMORY.
[[nodiscard]] HRESULT ExpandScript(AUX::WStringView script,
                                   std::span<const ScriptVariable> variables, ScriptScope scope,
                                   AUX::WString& output) noexcept;

/// The words of a script, one after the other: runs of characters between blanks, tabs and line
/// ends, or texts between single quotes, in which two quotes stand for one. The text is borrowed.
class ScriptWords {
public:
    explicit ScriptWords(AUX::WStringView text) noexcept : text_(text) {}

    enum class Found { Word, End, Malformed };

    /// Reads the next word into Word(). Malformed: a quote has no end, or a word has more than 4094
    /// characters; nothing is read then.
    [[nodiscard]] Found Next() noexcept;

    [[nodiscard]] AUX::WStringView Word() const noexcept { return {word_, length_}; }
    /// The word, terminated.
    [[nodiscard]] const WCHAR* Text() const noexcept { return word_; }
    /// Compares the word without regard to the case of A to Z.
    [[nodiscard]] bool Is(AUX::WStringView other) const noexcept;

    /// A place in the text, to read from it again.
    [[nodiscard]] std::size_t Place() const noexcept { return place_; }
    void Return(std::size_t place) noexcept { place_ = place; }

private:
    static constexpr std::size_t kMaxLength = 4094;

    [[nodiscard]] bool Add(WCHAR unit) noexcept;
    [[nodiscard]] bool ReadQuoted() noexcept;
    [[nodiscard]] bool ReadPlain() noexcept;

    AUX::WStringView text_;
    std::size_t place_ = 0;
    std::size_t length_ = 0;
    WCHAR word_[kMaxLength + 1] = {};
};

/// Compares two texts without regard to the case of A to Z.
[[nodiscard]] bool IsSameWord(AUX::WStringView a, AUX::WStringView b) noexcept;
