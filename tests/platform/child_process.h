#pragma once

#include <cerrno>
#include <csignal>
#include <gtest/gtest.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

/// A second process of the native tests, killed at the latest by the destructor.
class ChildProcess {
public:
    explicit ChildProcess(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), SECOND_PROCESS);
        std::vector<char*> argv;
        for (std::string& argument : arguments) argv.push_back(argument.data());
        argv.push_back(nullptr);
        int input[2];
        int output[2];
        EXPECT_EQ(pipe(input) | pipe(output), 0);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
        for (const int end : {input[0], input[1], output[0], output[1]}) {
            posix_spawn_file_actions_addclose(&actions, end);
        }
        EXPECT_EQ(posix_spawn(&id_, SECOND_PROCESS, &actions, nullptr, argv.data(), environ), 0);
        posix_spawn_file_actions_destroy(&actions);
        close(input[0]);
        close(output[1]);
        input_ = input[1];
        output_ = output[0];
    }
    ~ChildProcess() {
        Kill();
        close(input_);
        close(output_);
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Waits for the first line of its output; empty if it ended without one.
    std::string ReadLine() const {
        std::string line;
        char c = 0;
        while (read(output_, &c, 1) == 1 && c != '\n') line += c;
        return line;
    }

    /// Kills it where it stands and waits for the end.
    void Kill() {
        if (id_ > 0) kill(id_, SIGKILL);
        (void)Wait();
    }

    /// Waits for the end. \return the exit code, -1 if it was killed or is gone already.
    int Wait() {
        int status = 0;
        const bool waited = id_ > 0 && waitpid(id_, &status, 0) == id_;
        id_ = -1;
        return waited && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    pid_t id_ = -1;
    int input_ = -1;
    int output_ = -1;
};
