#include <cstdio>

#include "platform/testing.h"
#include "platform/user.h"

namespace platform::testing {

struct MessageBoxRecorder::State {
    int answer;
    State* older;
    std::vector<ShownMessage> shown;
};

namespace {
thread_local MessageBoxRecorder::State* newest = nullptr;

WideString TextOf(LPCWSTR text) { return text ? WideString(text) : WideString(); }
}  // namespace

MessageBoxRecorder::MessageBoxRecorder(int answer) : state_(new State{answer, newest, {}}) {
    newest = state_.get();
}

MessageBoxRecorder::~MessageBoxRecorder() { newest = state_->older; }

const std::vector<ShownMessage>& MessageBoxRecorder::Shown() const { return state_->shown; }

}  // namespace platform::testing

int MessageBoxW(HWND owner, LPCWSTR text, LPCWSTR caption, UINT type) noexcept {
    using namespace platform::testing;
    if (newest) {
        newest->shown.push_back({owner, TextOf(text), TextOf(caption), type});
        return newest->answer;
    }
    std::fprintf(stderr, "%s\n", platform::ToUtf8(TextOf(text)).c_str());
    return IDOK;
}
