#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/end_to_end/host_test.h"
#include "tests/end_to_end/processes.h"

namespace end_to_end {

Process::Process(const std::filesystem::path& path, const std::vector<std::string>& arguments) {
    // A pipe and no file, so that a full disk leaves it alone.
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return;
    output_ = ends[0];
    fcntl(output_, F_SETFL, O_NONBLOCK);
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
    if (posix_spawnp(&process_, path.c_str(), &actions, nullptr, pointers.data(), environ) != 0) {
        process_ = -1;
    }
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
}

Process::~Process() {
    Signal(SIGKILL);
    (void)Wait();
    close(output_);
}

Finished Process::Wait() {
    int status = 0;
    const bool ended = process_ > 0 && Eventually([&] {
                           (void)Output();  // A full pipe would hold the program up.
                           return waitpid(process_, &status, WNOHANG) == process_;
                       });
    if (!ended) return {-1, Output()};
    process_ = -1;
    return {WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status), Output()};
}

const std::string& Process::Output() {
    char bytes[4096];
    for (ssize_t got = 0; (got = read(output_, bytes, sizeof bytes)) > 0;) {
        text_.append(bytes, static_cast<std::size_t>(got));
    }
    return text_;
}

void Process::Signal(int number) const {
    if (process_ > 0) kill(process_, number);
}

Finished RunProgram(const std::filesystem::path& path, const std::vector<std::string>& arguments) {
    return Process(path, arguments).Wait();
}

std::vector<std::string> ProcessesNaming(const std::string& text) {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const std::string line = ReadFile(entry.path() / "cmdline");
        if (line.find(text) != line.npos) found.push_back(line);
    }
    return found;
}

}  // namespace end_to_end
