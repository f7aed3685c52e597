#pragma once

/// What tests and the host may do with windows beyond what the code does. Feature code never
/// includes this.

#include <cstdint>
#include <string>
#include <vector>

#include "platform/text.h"
#include "platform/user.h"

namespace platform::testing {

/// While it lives, the screen has another resolution. On Windows only calls of the program itself
/// see it.
class ScreenResolution {
public:
    /// \param dpi  Dots an inch.
    explicit ScreenResolution(int dpi);
    ~ScreenResolution();
    ScreenResolution(const ScreenResolution&) = delete;
    ScreenResolution& operator=(const ScreenResolution&) = delete;

private:
    int old_;
};

/// What a window shows.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;  // 0x00RRGGBB, row by row from the top

    [[nodiscard]] std::uint32_t At(int x, int y) const {
        return pixels[static_cast<std::size_t>(y * width + x)];
    }
    /// The bytes of a picture file (BMP) with these pixels.
    [[nodiscard]] std::string FileBytes() const;
};

/// The picture of a window that is no child, its frame included. What has to be painted should be
/// painted before: see RunMessages.
Picture PictureOf(HWND window);

/// Runs what lies in the calling thread's queue until it is empty.
void RunMessages();

/// The windows and drawing objects that the process holds.
struct GuiObjects {
    std::size_t windows;
    std::size_t drawing;
};
GuiObjects CountGuiObjects();

}  // namespace platform::testing
