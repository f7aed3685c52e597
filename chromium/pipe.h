#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

namespace chromium {

/// Both directions of the protocol: messages that each end in one zero byte. Owns its two file
/// descriptors, which do not block. One poll serves both, since a browser that waits for us to
/// read does not read itself.
class Pipe {
public:
    /// \param readEnd, writeEnd  Sockets; owned from here on.
    Pipe(int readEnd, int writeEnd);
    ~Pipe();
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    /// Queues a message; the next `Exchange` sends it.
    void Queue(std::string message);

    /// Sends and receives what it can, waiting at most until `until` for something to move.
    /// \return false at the end of file or on an error: nothing more will come.
    bool Exchange(std::chrono::steady_clock::time_point until);

    /// The next whole message. \return false if there is none.
    bool Next(std::string& message);

    void Close();

private:
    bool Write();
    bool Read();

    int readEnd_;
    int writeEnd_;
    std::string out_;
    std::size_t sent_ = 0;  // of out_
    std::string in_;
    std::size_t taken_ = 0;     // of in_: given out as messages
    std::size_t searched_ = 0;  // of in_: holds no end of message beyond taken_
};

}  // namespace chromium
