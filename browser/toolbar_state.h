#pragma once

#include "platform/base.h"
#include "platform/sync.h"

class BandWindow;

/// What the tabs of the process share: whether the toolbar is shown, and the band that was last
/// seen active. Usable from any thread; each accessor holds the lock for one read or one write.
class ToolbarState {
public:
    ToolbarState() noexcept = default;
    ToolbarState(const ToolbarState&) = delete;
    ToolbarState& operator=(const ToolbarState&) = delete;

    /// Makes the lock and reads the flag that the current user's registry holds: 1 if it holds
    /// none, or no number. Called once, when the module is loaded.
    /// \return false if the lock cannot be made; nothing else may be called then.
    [[nodiscard]] bool Load() noexcept;

    /// Writes the flag back and ends the lock. Called when the module is unloaded: the process that
    /// ends last decides. A failure to write is ignored; the old flag stays.
    void Store() noexcept;

    /// 0 is hidden, anything else shown.
    [[nodiscard]] DWORD IsShown() noexcept;
    void SetShown(DWORD shown) noexcept;

    /// Null at the start and once any band has ended. To be compared, not used: it may belong to
    /// another thread.
    [[nodiscard]] BandWindow* GetActive() noexcept;
    void SetActive(BandWindow* band) noexcept;

private:
    DWORD ShowToolbar = 1;
    BandWindow* ActiveWindow = nullptr;
    CRITICAL_SECTION lock_ = {};
};

/// The one of the process.
[[nodiscard]] ToolbarState& SharedToolbarState() noexcept;
