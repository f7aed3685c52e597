#include "platform/posix/file_dialogs.h"

#include <cstdio>
#include <cstdlib>

#include "platform/posix/faults.h"
#include "platform/posix/module_table.h"
#include "platform/posix/paths.h"
#include "platform/testing.h"

namespace platform {

namespace testing {

struct SaveDialogScript::State {
    std::optional<WideString> path;
    State* older;
    std::vector<SaveDialogRequest> asked;
};

namespace {
thread_local SaveDialogScript::State* newest = nullptr;
}

SaveDialogScript::SaveDialogScript(std::optional<WideString> path)
    : state_(new State{std::move(path), newest, {}}) {
    newest = state_.get();
}

SaveDialogScript::~SaveDialogScript() { newest = state_->older; }

const std::vector<SaveDialogRequest>& SaveDialogScript::Asked() const { return state_->asked; }

}  // namespace testing

namespace {

WideString TextOf(LPCWSTR text) { return text ? WideString(text) : WideString(); }

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

SaveAnswer EnvironmentAnswer() {
    const char* path = std::getenv("QUVADA_SAVE_AS");
    if (!path || !*path) return {};
    return {SaveAnswer::Kind::Chosen, FromUtf8(path)};
}

SaveAnswer FindAnswer(const OPENFILENAMEW& dialog) {
    SaveAnswer answer = ScriptedAnswer(dialog);
    if (answer.kind == SaveAnswer::Kind::None) answer = EnvironmentAnswer();
    if (answer.kind == SaveAnswer::Kind::None) answer = TerminalAnswer(dialog);
    if (answer.kind == SaveAnswer::Kind::None) {
        std::fputs("No file was chosen: set QUVADA_SAVE_AS, or run on a terminal.\n", stderr);
    }
    return answer;
}

/// Fills the dialog's fields with the path; false if it does not fit.
bool Deliver(OPENFILENAMEW& dialog, const WideString& path) {
    const std::size_t name = path.find_last_of('\\') + 1;
    const std::size_t dot = path.find_last_of('.');
    if (path.size() >= dialog.nMaxFile) return false;
    dialog.lpstrFile[path.copy(dialog.lpstrFile, path.size())] = 0;
    dialog.nFileOffset = static_cast<WORD>(name);
    const bool hasExtension = dot != WideString::npos && dot > name;
    dialog.nFileExtension = static_cast<WORD>(hasExtension ? dot + 1 : 0);
    if (dialog.lpstrFileTitle && dialog.nMaxFileTitle > path.size() - name) {
        dialog.lpstrFileTitle[path.copy(dialog.lpstrFileTitle, path.size() - name, name)] = 0;
    }
    return true;
}

}  // namespace

SaveAnswer ScriptedAnswer(const OPENFILENAMEW& dialog) {
    using testing::newest;
    if (!newest) return {};
    newest->asked.push_back({dialog.hwndOwner, TextOf(dialog.lpstrTitle), TextOf(dialog.lpstrFile),
                             FilterOf(dialog.lpstrFilter), TextOf(dialog.lpstrDefExt), dialog.Flags,
                             dialog.nMaxFile, dialog.nMaxFileTitle});
    if (!newest->path) return {SaveAnswer::Kind::Cancelled, {}};
    return {SaveAnswer::Kind::Chosen, *newest->path};
}

bool CompleteSavePath(const OPENFILENAMEW& dialog, const WideString& typed, WideString& path) {
    WideString name = typed.empty() ? TextOf(dialog.lpstrFile) : typed;
    std::string host;
    if (name.empty() || name.back() == '/' || name.back() == '\\') return false;
    // A path of the host is one as it stands; all else is Windows' form and made whole.
    if (name.front() == '/' && !(name.size() > 1 && name[1] == '/')) {
        if (!ToWindowsPath(ToUtf8(name), path)) return false;
        name = path;
    }
    if (ToHostPath(name.c_str(), host) != 0) return false;
    if (!ToWindowsPath(host, path)) return false;
    const WideString extension = TextOf(dialog.lpstrDefExt);
    const bool hasExtension = BaseNameOf(path).find('.') != WideView::npos;
    if (!hasExtension && !extension.empty()) path.append(1, '.').append(extension);
    return true;
}

namespace {

bool IsAnswerable(const OPENFILENAMEW& dialog) {
    return dialog.lStructSize == sizeof(OPENFILENAMEW) && dialog.lpstrFile;
}

/// Fills the dialog's fields with the answer. False if there is none or it is no path.
bool Accept(OPENFILENAMEW& dialog, const SaveAnswer& answer) {
    if (answer.kind != SaveAnswer::Kind::Chosen) return false;
    WideString path;
    if (CompleteSavePath(dialog, answer.path, path) && Deliver(dialog, path)) return true;
    std::fprintf(stderr, "%s is no name for a file.\n", ToUtf8(answer.path).c_str());
    return false;
}

}  // namespace
}  // namespace platform

BOOL GetSaveFileNameW(LPOPENFILENAMEW dialog) noexcept {
    using namespace platform;
    if (InjectFault("GetSaveFileNameW")) return FALSE;
    return IsAnswerable(*dialog) && Accept(*dialog, FindAnswer(*dialog));
}

BOOL GetOpenFileNameW(LPOPENFILENAMEW dialog) noexcept {
    using namespace platform;
    if (InjectFault("GetOpenFileNameW")) return FALSE;
    return IsAnswerable(*dialog) && Accept(*dialog, ScriptedAnswer(*dialog));
}
