#include <algorithm>
#include <vector>

#include "platform/posix/last_error.h"
#include "platform/posix/user/dialog_calls.h"
#include "platform/posix/user/window.h"

namespace platform::user {
namespace {

bool CanTakeFocus(const Window& window) {
    return (window.style & (WS_VISIBLE | WS_DISABLED)) == WS_VISIBLE;
}

/// The controls in their order; of a window that stands for its children these, unless the walk
/// begins at it. Hidden and disabled ones are kept, since the walk may begin there.
void AppendControls(const Window& parent, const Window* from, std::vector<Window*>& controls) {
    for (Window* child : parent.children) {
        if (!(child->exStyle & WS_EX_CONTROLPARENT) || child == from) {
            controls.push_back(child);
        } else if (CanTakeFocus(*child)) {
            AppendControls(*child, from, controls);
        }
    }
}

/// The place of a control, or of the nearest window above it that is one; the end if none is.
std::size_t PlaceOf(const std::vector<Window*>& controls, const Window* control) {
    for (; control; control = control->parent) {
        const auto found = std::find(controls.begin(), controls.end(), control);
        if (found != controls.end()) return static_cast<std::size_t>(found - controls.begin());
    }
    return controls.size();
}

/// The next one that fits, round in a ring from a place; the one at the place comes last.
template <class Test>
Window* NextInRing(const std::vector<Window*>& ring, std::size_t place, bool isBackwards,
                   Test fits) {
    const std::size_t count = ring.size();
    if (place == count) place = isBackwards ? 0 : count - 1;  // just outside, as it were
    for (std::size_t step = 1; step <= count; ++step) {
        Window* window = ring[(isBackwards ? place + count - step : place + step) % count];
        if (fits(*window)) return window;
    }
    return nullptr;
}

/// The controls beside one, from the nearest WS_GROUP to the next.
std::vector<Window*> GroupOf(const std::vector<Window*>& siblings, const Window* control) {
    const auto begins = [](const Window* window) { return (window->style & WS_GROUP) != 0; };
    const auto at = std::find(siblings.begin(), siblings.end(), control);
    if (at == siblings.end()) return siblings;
    auto first = at;
    while (first != siblings.begin() && !begins(*first)) --first;
    return {first, std::find_if(at + 1, siblings.end(), begins)};
}

}  // namespace
}  // namespace platform::user

using namespace platform::user;

HWND GetNextDlgTabItem(HWND dialog, HWND control, BOOL previous) noexcept {
    const Lock lock(UserLock());
    const Window* above = FindWindow(dialog);
    const Window* from = control ? FindWindow(control) : nullptr;
    if (!above || (control && (!from || !IsInside(*above, from)))) return nullptr;
    std::vector<Window*> ring;
    AppendControls(*above, from, ring);
    if (ring.empty()) return control;
    const Window* next = NextInRing(
        ring, PlaceOf(ring, from), previous != FALSE,
        [](const Window& window) { return CanTakeFocus(window) && window.style & WS_TABSTOP; });
    return next ? next->handle : control;
}

HWND GetNextDlgGroupItem(HWND dialog, HWND control, BOOL previous) noexcept {
    const Lock lock(UserLock());
    const Window* above = FindWindow(dialog);
    const Window* from = control ? FindWindow(control) : nullptr;
    if (!above || (control && (!from || !IsInside(*above, from)))) return nullptr;
    if (from == above) from = nullptr;
    const Window* parent = from ? from->parent : above;
    if (parent->children.empty()) return control;
    const std::vector<Window*> ring =
        GroupOf(parent->children, from ? from : parent->children.front());
    const Window* next = NextInRing(ring, PlaceOf(ring, from), previous != FALSE, CanTakeFocus);
    return next ? next->handle : control;
}
