#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "chromium/json.h"
#include "chromium/result.h"

namespace chromium {

class BrowserProcess;
class Pipe;

using Milliseconds = std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

/// What one call may take unless its caller says otherwise.
inline constexpr Milliseconds kCallLimit{30'000};

/// Off: no script of any page runs, in no frame. Our own `Page::Evaluate` does.
enum class Scripts { On, Off };

/// AsOne: a page may use the fonts and style sheets of any site, as if they were its own, which a
/// copy of the page that lies elsewhere needs. Only for pages whose scripts are off, and behind a
/// request filter: it also lifts the browser's own rule against local files in pages of the web.
enum class Sites { Apart, AsOne };

struct LaunchOptions {
    /// The browser's program; empty: the environment's QUVADA_CHROMIUM, then the places where
    /// Debian puts `chromium-headless-shell` and `chromium`.
    std::string program;
    /// For the whole browser: set for each page, it would reach the frames of other sites too late
    /// now and then.
    Scripts scripts = Scripts::On;
    Sites sites = Sites::Apart;
    /// Time until the browser must answer its first call.
    Milliseconds startLimit{30'000};
    /// When it becomes true, every wait ends soon with an error. Borrowed; may be null. A signal
    /// handler may set it.
    const std::atomic<bool>* cancel = nullptr;
};

/// Something that the browser tells of its own accord. `session` is empty for the browser itself.
struct Event {
    std::string session;
    std::string method;
    Json params;
};

/// Hears events. It is called from inside the browser's waits, on the same thread; it may `Post`,
/// but neither `Call` nor wait.
class EventListener {
public:
    virtual void OnEvent(const Event& event) = 0;

protected:
    ~EventListener() = default;
};

/// A headless browser of our own: one process group, one fresh profile in a private temporary
/// folder, one pair of pipes. Owns all of it; closing ends the browser and removes the folder.
/// Should this process die first, the closed pipe ends the browser, and the next start clears the
/// folder. Used by one thread. No call waits without a limit.
class Browser {
public:
    /// Finds and starts the browser and waits for its first answer.
    static Result<std::unique_ptr<Browser>> Launch(const LaunchOptions& options = {});

    ~Browser();
    Browser(const Browser&) = delete;
    Browser& operator=(const Browser&) = delete;

    /// Calls one method and gives its result. Fails when the browser refuses the call, does not
    /// answer within the limit (it may then be asked other things), has died, talks nonsense, when
    /// the session's page crashes, or when the call is larger than the browser can take.
    /// \param session  The target's session; empty for the browser itself.
    Result<Json> Call(std::string_view session, std::string_view method, const Params& params = {},
                      Milliseconds limit = kCallLimit);

    /// Sends a call whose result nobody waits for. \return false if it is larger than the browser
    /// can take, or the browser is gone.
    bool Post(std::string_view session, std::string_view method, const Params& params = {});

    /// Takes in what the browser says until `done` holds. \return whether `done` holds; an error
    /// when the browser is gone or the wait was cancelled.
    Result<bool> WaitUntil(const std::function<bool()>& done, Milliseconds limit);

    /// Listeners are borrowed, told in the order of their adding, and removed before they end.
    void AddListener(EventListener& listener);
    void RemoveListener(EventListener& listener);

    /// Ends the browser, with force after some seconds, and removes its folder. May be repeated.
    void Close();

    /// The browser's private folder, which goes with it.
    [[nodiscard]] const std::string& Folder() const noexcept;

private:
    struct Waiting {
        std::string session;
        bool answered = false;
        Json result;
        std::string error;  // not empty: the call failed
    };

    Browser(std::unique_ptr<BrowserProcess> process, std::unique_ptr<Pipe> pipe,
            const std::atomic<bool>* cancel);

    std::uint64_t Send(std::string_view session, std::string_view method, const Params& params);
    bool Pump(Clock::time_point until);
    void Take(std::string message);
    void TellListeners();
    void FailSession(const std::string& session, const char* why);
    Error Broken() const;

    std::unique_ptr<BrowserProcess> process_;
    std::unique_ptr<Pipe> pipe_;
    const std::atomic<bool>* cancel_;
    std::uint64_t lastId_ = 0;
    std::map<std::uint64_t, Waiting> waiting_;
    std::vector<Event> events_;  // taken from the pipe, not yet told
    std::vector<EventListener*> listeners_;
    std::string broken_;  // why the browser can't be used any more
};

}  // namespace chromium
