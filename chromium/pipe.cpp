#include "chromium/pipe.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace chromium {
namespace {

constexpr std::size_t kReadBytes = 256 * 1024;
constexpr std::size_t kLargestMessage = std::size_t{1} << 30;  // more is a browser gone mad

bool IsTransient(int error) { return error == EAGAIN || error == EWOULDBLOCK || error == EINTR; }

void CloseEnd(int& end) {
    if (end >= 0) close(end);
    end = -1;
}

}  // namespace

Pipe::Pipe(int readEnd, int writeEnd) : readEnd_(readEnd), writeEnd_(writeEnd) {
    fcntl(readEnd_, F_SETFL, O_NONBLOCK);
    fcntl(writeEnd_, F_SETFL, O_NONBLOCK);
}

Pipe::~Pipe() { Close(); }

void Pipe::Close() {
    CloseEnd(readEnd_);
    CloseEnd(writeEnd_);
}

void Pipe::Queue(std::string message) {
    message.push_back('\0');
    if (sent_ < out_.size()) {
        out_ += message;
        return;
    }
    out_ = std::move(message);
    sent_ = 0;
}

bool Pipe::Write() {
    while (sent_ < out_.size()) {
        const ssize_t count =
            send(writeEnd_, out_.data() + sent_, out_.size() - sent_, MSG_NOSIGNAL);
        if (count < 0) return IsTransient(errno);
        sent_ += static_cast<std::size_t>(count);
    }
    if (sent_ > kReadBytes) {  // A large message is not kept for ever.
        out_ = {};
        sent_ = 0;
    }
    return true;
}

bool Pipe::Read() {
    if (taken_ > 0) {
        in_.erase(0, taken_);
        searched_ -= taken_;
        taken_ = 0;
    }
    const std::size_t held = in_.size();
    in_.resize(held + std::max(kReadBytes, std::min(held, kReadBytes * 16)));
    const ssize_t count = recv(readEnd_, in_.data() + held, in_.size() - held, 0);
    const int error = errno;
    in_.resize(held + (count > 0 ? static_cast<std::size_t>(count) : 0));
    if (count < 0) return IsTransient(error);
    return count > 0 && in_.size() <= kLargestMessage;
}

bool Pipe::Exchange(std::chrono::steady_clock::time_point until) {
    using std::chrono::milliseconds;
    if (readEnd_ < 0 || !Write()) return false;
    const auto left = std::chrono::ceil<milliseconds>(until - std::chrono::steady_clock::now());
    const auto wait = std::clamp(left, milliseconds(0), milliseconds(3'600'000));
    pollfd ends[] = {{readEnd_, POLLIN, 0}, {writeEnd_, POLLOUT, 0}};
    const nfds_t watched = sent_ < out_.size() ? 2 : 1;
    const int ready = poll(ends, watched, static_cast<int>(wait.count()));
    if (ready < 0) return errno == EINTR;
    if (ends[0].revents != 0 && !Read()) return false;
    return watched == 1 || ends[1].revents == 0 || Write();
}

bool Pipe::Next(std::string& message) {
    const std::size_t end = in_.find('\0', searched_);
    if (end == std::string::npos) {
        searched_ = in_.size();
        return false;
    }
    if (taken_ == 0 && end + 1 == in_.size()) {
        // The usual case; a large message, such as a PDF, needs no second copy then.
        in_.pop_back();
        message = std::exchange(in_, {});
        searched_ = 0;
        return true;
    }
    message.assign(in_, taken_, end - taken_);
    taken_ = searched_ = end + 1;
    return true;
}

}  // namespace chromium
