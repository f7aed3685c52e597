#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace test_support {

/// A program that a test has started; it inherits the test's environment. Killed at the end of this
/// object if it still runs.
class Program {
public:
    /// \param arguments  UTF-8, without the program's name.
    /// \return null if it cannot be started.
    static std::unique_ptr<Program> Start(const std::filesystem::path& path,
                                          const std::vector<std::string>& arguments);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// Waits for the end. \return the exit code, natively 128 + the signal for a killed one; -1 if
    /// it still runs when the time is over.
    int Wait(std::chrono::milliseconds limit = std::chrono::seconds(60));

    /// Ends it by force, at once, without a chance to tidy up. Of its children none ends.
    void Kill();

    /// The system's number for it.
    [[nodiscard]] int Id() const;

    /// What it has written so far, to both outputs.
    std::string Output();

private:
    struct State;
    explicit Program(std::unique_ptr<State> state);

    std::unique_ptr<State> state_;
};

struct Finished {
    int code = -1;
    std::string output;
};

/// Runs a program to its end.
Finished RunProgram(const std::filesystem::path& path, const std::vector<std::string>& arguments);

}  // namespace test_support
