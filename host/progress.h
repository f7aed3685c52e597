#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace host {

/// What is going on, on the standard error output. On a terminal one line that shows the step and,
/// when it takes longer, its seconds; else, if asked for, a line for each step; else nothing.
class Progress {
public:
    enum class Mode { Silent, Lines, Terminal };

    explicit Progress(Mode mode);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Begins a step.
    void Step(const std::string& text);

    /// Says something that stays: an error or a warning, in every mode.
    void Say(const std::string& text);

private:
    void Draw();   // with the lock held
    void Clear();  // with the lock held
    void Run();

    const Mode mode_;
    std::mutex lock_;
    std::condition_variable changed_;
    std::string step_;
    std::chrono::steady_clock::time_point began_;
    bool ended_ = false;
    std::thread ticker_;  // last: it uses the others
};

}  // namespace host
