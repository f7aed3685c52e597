#pragma once

/// What tests and the host may do with windows beyond what the code does. Feature code never
/// includes this.

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
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

/// The first window of the calling thread that passes a test, made the active one; null if none
/// does. For Windows, where another program's window may have become the active one; natively it is
/// always null, as no other program's windows are there.
HWND ActivateOwnWindow(bool (*isSought)(HWND window));

/// While it lives, it works on the dialogs of its thread in place of a user: whenever a dialog is
/// active and nothing else is left to do, the next step runs inside the dialog's own message loop.
/// A dialog that is still there after the last step is ended with the result -1. Message boxes are
/// not its concern. Made and ended on one thread; of several the newest works.
class DialogScript {
public:
    using Step = std::function<void(HWND dialog)>;

    explicit DialogScript(std::vector<Step> steps);
    ~DialogScript();
    DialogScript(const DialogScript&) = delete;
    DialogScript& operator=(const DialogScript&) = delete;

    /// Whether every step has run.
    [[nodiscard]] bool IsDone() const;

    struct State;

private:
    std::unique_ptr<State> state_;
};

/// While it lives, a key is down for the calling thread (GetKeyState).
class HeldKey {
public:
    explicit HeldKey(int key);
    ~HeldKey();
    HeldKey(const HeldKey&) = delete;
    HeldKey& operator=(const HeldKey&) = delete;

private:
    std::array<BYTE, 256> before_;
};

/// Posts a key, down and up, to the window that has the focus at this moment.
void PostKey(WPARAM key);
/// Sends the characters of a text to the window that has the focus.
void SendText(WideView text);

struct ShownMenuItem {
    UINT command;  // 0 for a separator
    WideString text;
    bool isEnabled;
};

struct ShownMenu {
    HWND owner;
    POINT at;  // on the screen
    UINT flags;
    std::vector<ShownMenuItem> items;
};

/// What a menu offers at this moment.
std::vector<ShownMenuItem> ItemsOf(HMENU menu);

/// While it lives, in the pop-up menus of its thread one command is chosen, and they are noted.
/// Made and ended on one thread; of several the newest chooses. On Windows it sees the menus that
/// the program itself opens, not those of its modules.
class MenuChoice {
public:
    /// \param command  0, one that is not in the menu or one that is greyed gives the menu up.
    explicit MenuChoice(UINT command);
    ~MenuChoice();
    MenuChoice(const MenuChoice&) = delete;
    MenuChoice& operator=(const MenuChoice&) = delete;

    [[nodiscard]] const std::vector<ShownMenu>& Shown() const;

    struct State;

private:
    std::unique_ptr<State> state_;
};

/// What the process holds.
struct GuiObjects {
    std::size_t windows;  // and menus
    std::size_t drawing;  // bitmaps, device contexts
    std::size_t handles;  // of the kernel
    std::size_t bytes;    // of memory
};
GuiObjects CountGuiObjects();

}  // namespace platform::testing
