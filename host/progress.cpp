#include "host/progress.h"

#include <cstdio>

namespace host {
namespace {

constexpr std::chrono::seconds kTick{1};
constexpr auto kShowSecondsAfter = 2;

void Print(const std::string& text) {
    std::fputs(text.c_str(), stderr);
    std::fflush(stderr);
}

/// In one call, so that a line does not mix with another program's.
void PrintLine(const std::string& text) {
    std::string line = "quvada-host: ";
    line += text;
    line += '\n';
    Print(line);
}

}  // namespace

Progress::Progress(Mode mode) : mode_(mode) {
    if (mode_ == Mode::Terminal) ticker_ = std::thread([this] { Run(); });
}

Progress::~Progress() {
    {
        const std::lock_guard hold(lock_);
        ended_ = true;
        Clear();
    }
    changed_.notify_all();
    if (ticker_.joinable()) ticker_.join();
}

void Progress::Step(const std::string& text) {
    const std::lock_guard hold(lock_);
    step_ = text;
    began_ = std::chrono::steady_clock::now();
    if (mode_ == Mode::Lines) PrintLine(text);
    Draw();
}

void Progress::Say(const std::string& text) {
    const std::lock_guard hold(lock_);
    Clear();
    PrintLine(text);
    Draw();
}

void Progress::Draw() {
    if (mode_ != Mode::Terminal || step_.empty()) return;
    const auto seconds =
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - began_)
            .count();
    std::string line = "\r\x1b[K";
    line += step_;
    line += " ...";
    if (seconds >= kShowSecondsAfter) {
        line += ' ';
        line += std::to_string(seconds);
        line += " s";
    }
    Print(line);
}

void Progress::Clear() {
    if (mode_ == Mode::Terminal && !step_.empty()) Print("\r\x1b[K");
}

void Progress::Run() {
    std::unique_lock hold(lock_);
    while (!changed_.wait_for(hold, kTick, [this] { return ended_; })) Draw();
}

}  // namespace host
