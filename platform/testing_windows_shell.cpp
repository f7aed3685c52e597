#include <cstring>

#include "platform/modules.h"
#include "platform/shell.h"
#include "platform/testing.h"

// The slots of the program's import table, by way of which it calls these functions.
extern "C" {
extern void* __imp_ShellExecuteExW;
extern void* __imp_ShellExecuteW;
extern void* __imp_GetProcAddress;
}

namespace platform::testing {

struct ShellRecorder::State {
    std::vector<bool> answers;
    State* older;
    std::vector<ShellRequest> requests;
};

namespace {

thread_local ShellRecorder::State* newest = nullptr;

WideString TextOf(LPCWSTR text) { return text ? WideString(text) : WideString(); }

bool Answer(ShellRequest request) {
    request.cursor = GetCursor();
    const std::size_t count = newest->requests.size();
    newest->requests.push_back(std::move(request));
    const bool isDone = count >= newest->answers.size() || newest->answers[count];
    if (!isDone) SetLastError(ERROR_NO_ASSOCIATION);
    return isDone;
}

WideString PathOf(LPCITEMIDLIST list) {
    WCHAR path[MAX_PATH] = {};
    SHGetPathFromIDListW(list, path);
    return path;
}

BOOL WINAPI RecordExecuteEx(SHELLEXECUTEINFOW* asked) {
    return Answer({"ShellExecuteExW",
                   TextOf(asked->lpVerb),
                   TextOf(asked->lpFile),
                   TextOf(asked->lpParameters),
                   asked->fMask,
                   {},
                   nullptr});
}

HINSTANCE WINAPI RecordExecute(HWND, LPCWSTR verb, LPCWSTR file, LPCWSTR parameters, LPCWSTR, INT) {
    const bool isDone =
        Answer({"ShellExecuteW", TextOf(verb), TextOf(file), TextOf(parameters), 0, {}, nullptr});
    return reinterpret_cast<HINSTANCE>(INT_PTR{isDone ? 42 : SE_ERR_NOASSOC});
}

HRESULT WINAPI RecordSelection(LPCITEMIDLIST folder, UINT count, LPCITEMIDLIST* items, DWORD) {
    ShellRequest request{"SHOpenFolderAndSelectItems", {}, PathOf(folder), {}, 0, {}, nullptr};
    for (UINT i = 0; i < count; ++i) request.items.push_back(PathOf(items[i]));
    return Answer(std::move(request)) ? S_OK : HRESULT_FROM_WIN32(SE_ERR_NOASSOC);
}

decltype(&GetProcAddress) realGetProcAddress = nullptr;

FARPROC WINAPI FindProcedure(HMODULE module, LPCSTR name) {
    const bool isNamed = reinterpret_cast<ULONG_PTR>(name) > 0xFFFF;
    if (isNamed && std::strcmp(name, "SHOpenFolderAndSelectItems") == 0) {
        return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&RecordSelection));
    }
    return realGetProcAddress(module, name);
}

struct Patch {
    void** slot;
    void* replacement;
    void* original;
};
Patch patches[] = {
    {&__imp_ShellExecuteExW, reinterpret_cast<void*>(&RecordExecuteEx), nullptr},
    {&__imp_ShellExecuteW, reinterpret_cast<void*>(&RecordExecute), nullptr},
    {&__imp_GetProcAddress, reinterpret_cast<void*>(&FindProcedure), nullptr},
};

void Write(void** slot, void* value) {
    DWORD protection = 0;
    VirtualProtect(slot, sizeof value, PAGE_READWRITE, &protection);
    *slot = value;
    VirtualProtect(slot, sizeof value, protection, &protection);
}

}  // namespace

// The oldest recorder of the thread owns the patches.
ShellRecorder::ShellRecorder(std::vector<bool> answers)
    : state_(new State{std::move(answers), newest, {}}) {
    if (!newest) {
        realGetProcAddress = &GetProcAddress;
        for (Patch& patch : patches) {
            patch.original = *patch.slot;
            Write(patch.slot, patch.replacement);
        }
    }
    newest = state_.get();
}

ShellRecorder::~ShellRecorder() {
    newest = state_->older;
    if (newest) return;
    for (const Patch& patch : patches) Write(patch.slot, patch.original);
}

const std::vector<ShellRequest>& ShellRecorder::Requests() const { return state_->requests; }

}  // namespace platform::testing
