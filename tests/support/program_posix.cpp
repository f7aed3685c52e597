#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "tests/support/program.h"

namespace test_support {

struct Program::State {
    pid_t process = -1;
    int output = -1;  // our end of the pipe; does not block
    std::string read;
    int code = -1;
};

Program::Program(std::unique_ptr<State> state) : state_(std::move(state)) {}

Program::~Program() {
    Kill();
    (void)Wait();
    close(state_->output);
}

std::unique_ptr<Program> Program::Start(const std::filesystem::path& path,
                                        const std::vector<std::string>& arguments) {
    // A pipe and no file, so that a limit on the size of files leaves it alone.
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return nullptr;
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);
    std::vector<std::string> texts = arguments;
    texts.insert(texts.begin(), path.string());
    std::vector<char*> pointers;
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    auto state = std::make_unique<State>();
    state->output = ends[0];
    const int error =
        posix_spawnp(&state->process, path.c_str(), &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    if (error != 0) {
        close(ends[0]);
        return nullptr;
    }
    return std::unique_ptr<Program>(new Program(std::move(state)));
}

int Program::Wait(std::chrono::milliseconds limit) {
    const auto until = std::chrono::steady_clock::now() + limit;
    while (state_->process > 0) {
        int status = 0;
        const pid_t ended = waitpid(state_->process, &status, WNOHANG);
        if (ended == state_->process) {
            state_->process = -1;
            state_->code = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
        } else if (std::chrono::steady_clock::now() >= until) {
            return -1;
        } else {
            (void)Output();  // A full pipe would hold the program up.
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }
    return state_->code;
}

void Program::Kill() {
    if (state_->process > 0) kill(state_->process, SIGKILL);
}

int Program::Id() const { return state_->process; }

std::string Program::Output() {
    char bytes[4096];
    ssize_t got = 0;
    while ((got = read(state_->output, bytes, sizeof bytes)) > 0) {
        state_->read.append(bytes, static_cast<std::size_t>(got));
    }
    return state_->read;
}

}  // namespace test_support
