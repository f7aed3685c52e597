#pragma once

#include "browser/script_text.h"

/// Carries out a registration script in the registry.
class ScriptRunner {
public:
    enum class Mode { Register, Remove };

    /// The script is expanded already, and borrowed.
    explicit ScriptRunner(AUX::WStringView script) noexcept : words_(script) {}
    ScriptRunner(const ScriptRunner&) = delete;
    ScriptRunner& operator=(const ScriptRunner&) = delete;

    /// Does what the script says. Of a root block that cannot be registered, all is removed again
    /// that the script names there; the blocks before it stay.
    /// Decided here: a key's name is never empty, nor one of `{`, `}`, `=` and the keywords; the
    /// block of a `Delete` entry is passed over as well; blocks nest at most as deep as keys may.
    /// \return DISP_E_EXCEPTION for a script that is malformed, E_FAIL for an odd count of
    ///         hexadecimal digits, what VarUI4FromStr says of a number, E_OUTOFMEMORY, or the
    ///         registry's error as 0x8007xxxx.
    [[nodiscard]] HRESULT Run(Mode mode) noexcept;

private:
    /// What stands before the name of an entry.
    enum class Prefix { None, NoRemove, ForceRemove, Delete };

    [[nodiscard]] HRESULT NextWord() noexcept;
    [[nodiscard]] HRESULT NextKeyName() noexcept;
    [[nodiscard]] bool TakeWord(AUX::WStringView word) noexcept;
    [[nodiscard]] HRESULT ReadPrefix(Prefix& prefix) noexcept;
    [[nodiscard]] bool IsKeyName() const noexcept;

    [[nodiscard]] HRESULT RegisterBody(HKEY parent, unsigned depth) noexcept;
    [[nodiscard]] HRESULT RegisterKey(HKEY parent, unsigned depth) noexcept;
    [[nodiscard]] HRESULT SetValue(HKEY key, const WCHAR* name) noexcept;

    [[nodiscard]] HRESULT RemoveBody(HKEY parent, unsigned depth) noexcept;
    [[nodiscard]] HRESULT RemoveKey(HKEY parent, bool stays, unsigned depth) noexcept;
    [[nodiscard]] HRESULT RemoveValue(HKEY parent, bool stays) noexcept;
    [[nodiscard]] HRESULT PassAssignment() noexcept;

    ScriptWords words_;
};
