#include "chromium/browser_process.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>

extern char** environ;

namespace chromium {
namespace {

constexpr const char* kPlaces[] = {"/usr/lib/chromium/chromium-headless-shell",
                                   "/usr/lib/chromium/chromium"};
constexpr const char* kFlags[] = {"--headless=new",
                                  "--disable-gpu",
                                  "--disable-quic",
                                  "--no-first-run",
                                  "--disable-background-networking",
                                  "--disable-component-update",
                                  "--disable-sync",
                                  "--font-render-hinting=none",
                                  "--log-level=3",
                                  "--disable-dev-shm-usage",
                                  "--remote-debugging-pipe"};
constexpr int kFirstFreeFd = 10;        // above those that the browser is given
constexpr std::size_t kLogTail = 2000;  // bytes
constexpr const char* kLogName = "/log";

bool IsProgram(const std::string& path) {
    struct stat about {};
    return stat(path.c_str(), &about) == 0 && S_ISREG(about.st_mode) &&
           access(path.c_str(), X_OK) == 0;
}

/// The environment with everything that the browser writes led into its own folder. Fonts of the
/// user stay where they are found.
std::vector<std::string> MakeEnvironment(const std::string& folder) {
    std::vector<std::string> values;
    std::string userData;
    for (char** value = environ; *value; ++value) {
        const std::string_view text(*value);
        if (text.starts_with("HOME=") && userData.empty()) {
            userData = std::string(text.substr(5)) + "/.local/share";
        }
        if (text.starts_with("XDG_DATA_HOME=")) userData = text.substr(14);
        if (text.starts_with("HOME=") || text.starts_with("XDG_CONFIG_HOME=") ||
            text.starts_with("XDG_DATA_HOME=") || text.starts_with("TMPDIR=")) {
            continue;
        }
        values.emplace_back(text);
    }
    if (!userData.empty()) values.push_back("XDG_DATA_HOME=" + userData);
    values.push_back("HOME=" + folder);
    values.push_back("XDG_CONFIG_HOME=" + folder + "/config");
    values.push_back("TMPDIR=" + folder);
    return values;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// A pair of connected sockets. Unlike pipes they can be written without the risk of a signal.
/// \param theirs  Lies above the numbers that the browser's ends get.
bool MakeChannel(int& ours, int& theirs) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) return false;
    ours = ends[0];
    theirs = fcntl(ends[1], F_DUPFD_CLOEXEC, kFirstFreeFd);
    close(ends[1]);
    if (theirs < 0) close(ours);
    return theirs >= 0;
}

int Spawn(pid_t& pid, const std::string& program, std::vector<std::string>& arguments,
          std::vector<std::string>& environment, const std::string& log, int input, int output) {
    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&files);
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_addopen(&files, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&files, 1, log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_adddup2(&files, 1, 2);
    posix_spawn_file_actions_adddup2(&files, input, 3);
    posix_spawn_file_actions_adddup2(&files, output, 4);
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &all);
    posix_spawnattr_setpgroup(&attributes, 0);
    posix_spawnattr_setflags(
        &attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    const int error = posix_spawn(&pid, program.c_str(), &files, &attributes,
                                  Pointers(arguments).data(), Pointers(environment).data());
    posix_spawn_file_actions_destroy(&files);
    posix_spawnattr_destroy(&attributes);
    return error;
}

/// Whether the process has ended; it is not collected yet, so that its number stays its own.
bool HasEnded(pid_t pid) {
    siginfo_t about{};
    return waitid(P_PID, static_cast<id_t>(pid), &about, WEXITED | WNOHANG | WNOWAIT) != 0 ||
           about.si_pid == pid;
}

}  // namespace

Result<std::string> FindBrowser(const std::string& wanted) {
    const char* set = std::getenv("QUVADA_CHROMIUM");
    const std::string named = !wanted.empty() ? wanted : set ? set : "";
    if (!named.empty()) {
        if (IsProgram(named)) return named;
        return Error{"There is no browser at " + named +
                     (wanted.empty() ? ", which QUVADA_CHROMIUM names." : ".")};
    }
    for (const char* place : kPlaces) {
        if (IsProgram(place)) return std::string(place);
    }
    return Error{std::string("No browser was found: neither ") + kPlaces[0] + " nor " + kPlaces[1] +
                 " is there. Install the package chromium-headless-shell, or name a Chromium in "
                 "QUVADA_CHROMIUM."};
}

Result<BrowserProcess> BrowserProcess::Start(const std::string& program,
                                             const std::vector<std::string>& flags, int& readEnd,
                                             int& writeEnd) {
    Result<PrivateFolder> folder = PrivateFolder::Create();
    if (!folder) return folder.GetError();
    BrowserProcess process(std::move(*folder));

    std::vector<std::string> arguments{program};
    arguments.insert(arguments.end(), std::begin(kFlags), std::end(kFlags));
    // Root can't have the browser's sandbox; anyone else gets it.
    if (geteuid() == 0) arguments.emplace_back("--no-sandbox");
    arguments.push_back("--user-data-dir=" + process.Folder() + "/profile");
    arguments.insert(arguments.end(), flags.begin(), flags.end());
    std::vector<std::string> environment = MakeEnvironment(process.Folder());

    int theirInput = -1;
    int theirOutput = -1;
    if (!MakeChannel(writeEnd, theirInput)) {
        return Error{std::string("No channel to the browser: ") + std::strerror(errno) + "."};
    }
    if (!MakeChannel(readEnd, theirOutput)) {
        const int error = errno;
        close(writeEnd);
        close(theirInput);
        return Error{std::string("No channel from the browser: ") + std::strerror(error) + "."};
    }
    const int error = Spawn(process.pid_, program, arguments, environment,
                            process.Folder() + kLogName, theirInput, theirOutput);
    close(theirInput);
    close(theirOutput);
    if (error != 0) {
        process.pid_ = -1;
        close(readEnd);
        close(writeEnd);
        return Error{program + " can't be started: " + std::strerror(error) + "."};
    }
    return process;
}

BrowserProcess::BrowserProcess(BrowserProcess&& other) noexcept
    : folder_(std::move(other.folder_)), pid_(std::exchange(other.pid_, -1)) {}

BrowserProcess::~BrowserProcess() { End(0); }

void BrowserProcess::End(int graceMs) {
    if (pid_ > 0) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(graceMs);
        while (!HasEnded(pid_) && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        kill(-pid_, SIGKILL);
        while (waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
        }
        pid_ = -1;
    }
    folder_.Remove();
}

std::string BrowserProcess::LogTail() const {
    std::ifstream log(Folder() + kLogName, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(log), std::istreambuf_iterator<char>()};
    if (text.size() > kLogTail) {
        const std::size_t line = text.find('\n', text.size() - kLogTail);
        text.erase(0, line == std::string::npos ? text.size() - kLogTail : line + 1);
    }
    while (!text.empty() && text.back() == '\n') text.pop_back();
    return text;
}

}  // namespace chromium
