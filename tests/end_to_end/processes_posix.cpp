#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/end_to_end/host_test.h"

namespace end_to_end {

Process::Process(const std::filesystem::path& path, const std::vector<std::string>& arguments) {
    // A pipe and no file, so that a full disk leaves it alone.
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return;
    output_ = ends[0];
    fcntl(output_, F_SETFL, O_NONBLOCK);
    std::vector<std::string> texts = arguments;
    texts.insert(texts.begin(), path.string());
    std::vector<char*> pointers;
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    process_ = fork();
    if (process_ == 0) {
        dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
        dup2(ends[1], STDOUT_FILENO);
        dup2(ends[1], STDERR_FILENO);
        execvp(path.c_str(), pointers.data());
        _exit(127);
    }
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
