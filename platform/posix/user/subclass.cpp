#include <algorithm>
#include <memory>
#include <vector>

#include "platform/posix/user/subclass_calls.h"
#include "platform/posix/user/window.h"

namespace platform::user {

struct Subclass {
    SUBCLASSPROC procedure;
    UINT_PTR id;
    DWORD_PTR data;
    bool isRemoved = false;
};

/// The procedures of a window, the one asked first at the end. Those that are removed while a
/// message is on its way stay until it has come back, so that the places stay good.
struct SubclassChain {
    WNDPROC base = nullptr;
    std::vector<Subclass> entries;
    unsigned depth = 0;  // messages on their way

    Subclass* Find(SUBCLASSPROC procedure, UINT_PTR id) {
        for (Subclass& entry : entries) {
            const bool isSame = entry.procedure == procedure && entry.id == id;
            if (isSame && !entry.isRemoved) return &entry;
        }
        return nullptr;
    }
};

namespace {

/// A message on its way through a chain.
struct Call {
    HWND window;
    std::shared_ptr<SubclassChain> chain;
    std::size_t next;  // how many procedures are left
    Call* outer;
};
thread_local Call* innermost = nullptr;

std::shared_ptr<SubclassChain> ChainOf(HWND handle) {
    const Lock lock(UserLock());
    const Window* window = FindWindow(handle);
    return window ? window->subclasses : nullptr;
}

LRESULT AskNext(Call& call, UINT message, WPARAM wParam, LPARAM lParam) {
    SubclassChain& chain = *call.chain;
    while (call.next > 0) {
        const Subclass entry = chain.entries[--call.next];
        if (entry.isRemoved) continue;
        return entry.procedure(call.window, message, wParam, lParam, entry.id, entry.data);
    }
    return CallWindowProcW(chain.base, call.window, message, wParam, lParam);
}

LRESULT CALLBACK AskAll(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

/// Takes out what has been removed; after the last one the window has its own procedure again, if
/// nobody else has put one in front.
void Clean(HWND handle, SubclassChain& chain) {
    std::erase_if(chain.entries, [](const Subclass& entry) { return entry.isRemoved; });
    if (!chain.entries.empty()) return;
    const Lock lock(UserLock());
    Window* window = FindWindow(handle);
    if (!window || window->procedure != AskAll) return;
    window->procedure = chain.base;
    window->subclasses = nullptr;
}

LRESULT CALLBACK AskAll(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    Call call{window, ChainOf(window), 0, innermost};
    if (!call.chain) return DefWindowProcW(window, message, wParam, lParam);
    SubclassChain& chain = *call.chain;
    call.next = chain.entries.size();
    innermost = &call;
    ++chain.depth;
    const LRESULT result = AskNext(call, message, wParam, lParam);
    if (--chain.depth == 0) Clean(window, chain);
    innermost = call.outer;
    return result;
}

}  // namespace
}  // namespace platform::user

using namespace platform::user;

BOOL SetWindowSubclass(HWND handle, SUBCLASSPROC procedure, UINT_PTR id, DWORD_PTR data) noexcept {
    const Lock lock(UserLock());
    Window* window = FindWindow(handle);
    if (!window || window->thread != &ThisThread() || !procedure) return FALSE;
    if (!window->subclasses) {
        window->subclasses = std::make_shared<SubclassChain>();
        window->subclasses->base = window->procedure;
        window->procedure = AskAll;
    }
    if (Subclass* known = window->subclasses->Find(procedure, id)) {
        known->data = data;
    } else {
        window->subclasses->entries.push_back({procedure, id, data});
    }
    return TRUE;
}

BOOL RemoveWindowSubclass(HWND window, SUBCLASSPROC procedure, UINT_PTR id) noexcept {
    const std::shared_ptr<SubclassChain> chain = ChainOf(window);
    Subclass* known = chain ? chain->Find(procedure, id) : nullptr;
    if (!known) return FALSE;
    known->isRemoved = true;
    if (chain->depth == 0) Clean(window, *chain);
    return TRUE;
}

LRESULT DefSubclassProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    for (Call* call = innermost; call; call = call->outer) {
        if (call->window != window) continue;
        // What the next one asks about begins where this one stands.
        const std::size_t next = call->next;
        const LRESULT result = AskNext(*call, message, wParam, lParam);
        call->next = next;
        return result;
    }
    return 0;
}
