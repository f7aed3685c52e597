#pragma once

#include "options/option_page.h"

/// The permissions of encryption level 0, in the page of passwords.
class Permissions40Panel final : public OptionPage {
public:
    Permissions40Panel() noexcept;

    /// Without the password that protects the permissions they mean nothing.
    void Enable(bool isProtected) noexcept;

private:
    void OnInit() noexcept override {}
    void Show(ConversionSettings& settings) noexcept override;
    void Store(ConversionSettings& settings) noexcept override;
};

/// The permissions of all other levels. A number in the record that no row has selects none; then
/// row 0, which allows nothing, is stored.
class Permissions128Panel final : public OptionPage {
public:
    Permissions128Panel() noexcept;

    /// The encryption of the metadata needs no permissions.
    /// \param isSecure     The document is protected at all.
    /// \param isProtected  A password protects the permissions, too.
    void Enable(bool isSecure, bool isProtected) noexcept;

private:
    void OnInit() noexcept override {}
    void Show(ConversionSettings& settings) noexcept override;
    void Store(ConversionSettings& settings) noexcept override;
};
