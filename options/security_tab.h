#pragma once

#include "options/permission_panels.h"

/// The page of passwords, encryption level and permissions. All of it is stored, also what is
/// disabled, so that it is there when it is wanted again. A level in the record that no row has
/// selects none and counts as row 0; that is then stored.
class SecurityTab final : public OptionPage {
public:
    SecurityTab() noexcept;

    /// Whether what is shown may be stored; says why not, in a message box. Changes nothing. A
    /// password of which memory does not suffice for a copy counts as empty.
    [[nodiscard]] bool Validate() noexcept;

private:
    void OnInit() noexcept override;
    void Show(ConversionSettings& settings) noexcept override;
    void Store(ConversionSettings& settings) noexcept override;
    bool OnCommand(int id, UINT code) noexcept override;

    void ShowPanel() noexcept;
    void ApplyEnabling() noexcept;

    POINT panelPlace_{};
    Permissions40Panel permissions40_;
    Permissions128Panel permissions128_;
};
