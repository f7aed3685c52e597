#include "platform/dialogs.h"
#include "platform/testing.h"

namespace platform::testing {

// One hook of each kind serves all recorders and scripts of a thread: the oldest one owns it.
struct MessageBoxRecorder::State {
    int answer;
    State* older;
    HHOOK hook;
    HWND last;  // the box that was answered last, since a box may be activated again
    std::vector<ShownMessage> shown;
};

struct SaveDialogScript::State {
    std::optional<WideString> path;
    State* older;
    HHOOK hook;
    HHOOK boxHook;
    HWND dialog;  // the dialog that was answered last; a window while it runs
    std::vector<SaveDialogRequest> asked;
};

namespace {

constexpr int kMessageTextId = 0xFFFF;
constexpr int kFileNameId = 0x047C;  // cmb13 of dlgs.h, the file dialog's combo box

thread_local MessageBoxRecorder::State* newestRecorder = nullptr;
thread_local SaveDialogScript::State* newestScript = nullptr;

WideString TextOfWindow(HWND window) {
    WideString text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, 0);
    const int length = GetWindowTextW(window, text.data(), static_cast<int>(text.size()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

WideString TextOf(LPCWSTR text) { return text ? WideString(text) : WideString(); }

bool IsMessageBox(HWND window) {
    WCHAR name[16] = {};
    GetClassNameW(window, name, 16);
    return WideView(name) == TEXT("#32770") && GetDlgItem(window, kMessageTextId);
}

/// The MB_ICON flag whose picture the box shows; 0 for none.
UINT IconOf(HWND box) {
    struct Row {
        LPCWSTR name;
        UINT flag;
    };
    const Row rows[] = {{IDI_HAND, MB_ICONERROR},
                        {IDI_EXCLAMATION, MB_ICONEXCLAMATION},
                        {IDI_QUESTION, MB_ICONQUESTION},
                        {IDI_ASTERISK, MB_ICONINFORMATION}};
    for (HWND child = GetWindow(box, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        if ((GetWindowLongW(child, GWL_STYLE) & SS_TYPEMASK) != SS_ICON) continue;
        const auto icon = reinterpret_cast<HICON>(SendMessageW(child, STM_GETICON, 0, 0));
        for (const Row& row : rows) {
            if (icon && icon == LoadIconW(nullptr, row.name)) return row.flag;
        }
    }
    return 0;
}

UINT ButtonsOf(HWND box) {
    const auto has = [box](int id) {
        const HWND button = GetDlgItem(box, id);
        return button && IsWindowVisible(button);
    };
    if (has(IDYES)) return has(IDCANCEL) ? MB_YESNOCANCEL : MB_YESNO;
    return has(IDOK) && has(IDCANCEL) ? MB_OKCANCEL : MB_OK;
}

void Press(HWND dialog, int button) {
    PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(button, BN_CLICKED),
                 reinterpret_cast<LPARAM>(GetDlgItem(dialog, button)));
}

void AnswerBox(HWND box) {
    if (newestScript && IsWindow(newestScript->dialog)) {
        Press(box, IDYES);  // The dialog asks whether the file may be replaced.
        return;
    }
    MessageBoxRecorder::State* recorder = newestRecorder;
    if (!recorder || recorder->last == box) return;
    recorder->last = box;
    recorder->shown.push_back({GetWindow(box, GW_OWNER),
                               TextOfWindow(GetDlgItem(box, kMessageTextId)), TextOfWindow(box),
                               IconOf(box) | ButtonsOf(box)});
    Press(box, recorder->answer);
}

LRESULT CALLBACK OnActivation(int code, WPARAM wParam, LPARAM lParam) {
    const auto window = reinterpret_cast<HWND>(wParam);
    if (code == HCBT_ACTIVATE && IsMessageBox(window)) AnswerBox(window);
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

/// Pairs of texts; an empty one ends them.
WideString FilterOf(LPCWSTR pairs) {
    WideString filter;
    while (pairs && *pairs) {
        const WideView text(pairs);
        filter.append(text).push_back(0);
        pairs += text.size() + 1;
    }
    return filter;
}

void AnswerDialog(HWND dialog, const OPENFILENAMEW& request, SaveDialogScript::State& script) {
    script.dialog = dialog;
    script.asked.push_back({request.hwndOwner, TextOf(request.lpstrTitle),
                            TextOf(request.lpstrFile), FilterOf(request.lpstrFilter),
                            TextOf(request.lpstrDefExt), request.Flags, request.nMaxFile,
                            request.nMaxFileTitle});
    const bool hasName = script.path && (!script.path->empty() || *request.lpstrFile);
    if (hasName && !script.path->empty())
        SetDlgItemTextW(dialog, kFileNameId, script.path->c_str());
    Press(dialog, hasName ? IDOK : IDCANCEL);
}

LRESULT CALLBACK OnSentMessage(int code, WPARAM wParam, LPARAM lParam) {
    const auto* sent = reinterpret_cast<const CWPSTRUCT*>(lParam);
    if (code == HC_ACTION && newestScript && sent->message == WM_NOTIFY) {
        const auto* note = reinterpret_cast<const OFNOTIFYW*>(sent->lParam);
        if (note->hdr.code == static_cast<UINT>(CDN_INITDONE)) {
            AnswerDialog(GetParent(sent->hwnd), *note->lpOFN, *newestScript);
        }
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

HHOOK Hook(int kind, HOOKPROC procedure, bool isNeeded) {
    return isNeeded ? SetWindowsHookExW(kind, procedure, nullptr, GetCurrentThreadId()) : nullptr;
}

void Unhook(HHOOK hook) {
    if (hook) UnhookWindowsHookEx(hook);
}

}  // namespace

MessageBoxRecorder::MessageBoxRecorder(int answer)
    : state_(new State{answer, newestRecorder, nullptr, nullptr, {}}) {
    state_->hook = Hook(WH_CBT, OnActivation, !newestRecorder);
    newestRecorder = state_.get();
}

MessageBoxRecorder::~MessageBoxRecorder() {
    Unhook(state_->hook);
    newestRecorder = state_->older;
}

const std::vector<ShownMessage>& MessageBoxRecorder::Shown() const { return state_->shown; }

SaveDialogScript::SaveDialogScript(std::optional<WideString> path)
    : state_(new State{std::move(path), newestScript, nullptr, nullptr, nullptr, {}}) {
    state_->hook = Hook(WH_CALLWNDPROC, OnSentMessage, !newestScript);
    state_->boxHook = Hook(WH_CBT, OnActivation, !newestScript);
    newestScript = state_.get();
}

SaveDialogScript::~SaveDialogScript() {
    Unhook(state_->hook);
    Unhook(state_->boxHook);
    newestScript = state_->older;
}

const std::vector<SaveDialogRequest>& SaveDialogScript::Asked() const { return state_->asked; }

}  // namespace platform::testing
