#pragma once

#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

#include "chromium/private_folder.h"
#include "chromium/result.h"

namespace chromium {

/// The browser's program: `wanted`, else the environment's QUVADA_CHROMIUM, else where Debian puts
/// it. An error says what was looked for and how to get a browser.
Result<std::string> FindBrowser(const std::string& wanted);

/// The running browser with its folder. Ends it, with force, at the end of this object.
class BrowserProcess {
public:
    /// Starts `program` in a process group of its own and gives our ends of its two channels.
    static Result<BrowserProcess> Start(const std::string& program,
                                        const std::vector<std::string>& flags, int& readEnd,
                                        int& writeEnd);
    ~BrowserProcess();
    BrowserProcess(BrowserProcess&& other) noexcept;
    BrowserProcess& operator=(BrowserProcess&&) = delete;

    /// Waits up to `graceMs` for it to end by itself, kills what is left of its group, removes the
    /// folder. May be repeated.
    void End(int graceMs);

    /// The last lines that the browser wrote to its log; for error texts.
    [[nodiscard]] std::string LogTail() const;

    [[nodiscard]] const std::string& Folder() const noexcept { return folder_.Path(); }

private:
    explicit BrowserProcess(PrivateFolder folder) noexcept : folder_(std::move(folder)) {}

    PrivateFolder folder_;
    pid_t pid_ = -1;
};

}  // namespace chromium
