#pragma once

/// Sizes in pixels for the resolution of the screen, which is read once and kept for the life of
/// the process. For any thread.
class ScreenScale {
public:
    /// \param dpi  Dots an inch. 96 and below leave sizes as they are.
    explicit constexpr ScreenScale(int dpi) noexcept : dpi_(dpi) {}

    /// The scale of this screen.
    [[nodiscard]] static ScreenScale OfScreen() noexcept;

    /// A size of `n` pixels at 96 dots an inch, rounded.
    [[nodiscard]] int Scale(int n) const noexcept;

    /// The distance of the button's picture from the button's edge, in pixels.
    [[nodiscard]] int Margin() const noexcept;

    /// Has the resolution read again, after a test has changed it.
    static void Forget() noexcept;

private:
    int dpi_;
};

/// The same for this screen.
[[nodiscard]] int Scale(int n) noexcept;
