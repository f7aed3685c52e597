#include "platform/posix/shell_recorder.h"

#include "platform/shell.h"
#include "platform/user.h"

namespace platform {
namespace testing {

struct ShellRecorder::State {
    std::vector<bool> answers;
    State* older;
    std::vector<ShellRequest> requests;
};

namespace {
thread_local ShellRecorder::State* newest = nullptr;
}  // namespace

ShellRecorder::ShellRecorder(std::vector<bool> answers)
    : state_(new State{std::move(answers), newest, {}}) {
    newest = state_.get();
}

ShellRecorder::~ShellRecorder() { newest = state_->older; }

const std::vector<ShellRequest>& ShellRecorder::Requests() const { return state_->requests; }

}  // namespace testing

std::optional<DWORD> AnswerOfRecorder(ShellRequest& request) {
    using testing::newest;
    if (!newest) return std::nullopt;
    request.cursor = SetCursor(nullptr);
    SetCursor(request.cursor);
    const std::size_t count = newest->requests.size();
    newest->requests.push_back(std::move(request));
    const bool isDone = count >= newest->answers.size() || newest->answers[count];
    return isDone ? DWORD{ERROR_SUCCESS} : DWORD{SE_ERR_NOASSOC};
}

}  // namespace platform
