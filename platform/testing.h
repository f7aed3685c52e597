#pragma once

/// What tests and the host may install in place of a user, a clock or a healthy machine. Feature
/// code never includes this.

#include <memory>
#include <optional>
#include <vector>

#include "platform/text.h"

namespace platform::testing {

/// Whether calls can be made to fail, the clock be held and the integrity level be set: only where
/// the operating system is our own layer.
#ifdef _WIN32
inline constexpr bool kOwnsTheSystem = false;
#else
inline constexpr bool kOwnsTheSystem = true;
#endif

struct ShownMessage {
    HWND owner;
    WideString text;
    WideString caption;
    UINT type;  // MB_ flags; of Windows' own boxes only the icon and the buttons are known
};

/// While it lives, the message boxes of its thread are answered at once, and noted. Made and ended
/// on one thread; of several the newest answers.
class MessageBoxRecorder {
public:
    /// \param answer  The button that is pressed, such as IDOK.
    explicit MessageBoxRecorder(int answer = 1);
    ~MessageBoxRecorder();
    MessageBoxRecorder(const MessageBoxRecorder&) = delete;
    MessageBoxRecorder& operator=(const MessageBoxRecorder&) = delete;

    [[nodiscard]] const std::vector<ShownMessage>& Shown() const;

    struct State;

private:
    std::unique_ptr<State> state_;
};

struct SaveDialogRequest {
    HWND owner;
    WideString title;
    WideString suggestedName;
    WideString filter;  // the pairs, each text with its terminator, without the last one
    WideString defaultExtension;
    DWORD flags;
    DWORD maxFile;       // units of the name's buffer
    DWORD maxFileTitle;  // units of the title's buffer
};

/// While it lives, the dialogs of its thread that ask for a file are answered at once, and noted.
/// Made and ended on one thread; of several the newest answers. A question about overwriting is
/// answered with yes.
class SaveDialogScript {
public:
    /// \param path  What the user types, in Windows' form; nothing cancels. An empty text takes the
    ///              suggested name.
    explicit SaveDialogScript(std::optional<WideString> path);
    ~SaveDialogScript();
    SaveDialogScript(const SaveDialogScript&) = delete;
    SaveDialogScript& operator=(const SaveDialogScript&) = delete;

    [[nodiscard]] const std::vector<SaveDialogRequest>& Asked() const;

    struct State;

private:
    std::unique_ptr<State> state_;
};

/// What the shell was asked to open.
struct ShellRequest {
    const char* call;  // "ShellExecuteExW", "ShellExecuteW" or "SHOpenFolderAndSelectItems"
    WideString verb;
    WideString file;  // of the last call the folder
    WideString parameters;
    DWORD mask;                     // of ShellExecuteExW
    std::vector<WideString> items;  // of SHOpenFolderAndSelectItems, their paths
    HICON cursor;                   // the thread's cursor during the call
};

/// While it lives, what its thread asks the shell to open is noted and not opened. Made and ended
/// on one thread; of several the newest answers. On Windows it sees the calls of the program
/// itself, not of its modules.
class ShellRecorder {
public:
    /// \param answers  Whether the first call, the second and so on succeed; later ones do.
    explicit ShellRecorder(std::vector<bool> answers = {});
    ~ShellRecorder();
    ShellRecorder(const ShellRecorder&) = delete;
    ShellRecorder& operator=(const ShellRecorder&) = delete;

    [[nodiscard]] const std::vector<ShellRequest>& Requests() const;

    struct State;

private:
    std::unique_ptr<State> state_;
};

/// Makes calls of the platform fail while it lives, on any thread. Several may live at a time.
/// Without effect where kOwnsTheSystem is false.
class InjectedFault {
public:
    /// \param call   The name, such as "WriteFile"; "*" counts all calls that can be made to fail.
    ///               Borrowed. A "Sleep" that fails returns at once.
    /// \param nth    1 is the next such call.
    /// \param error  What GetLastError gives then, or the call's own result code.
    /// \param count  How many calls fail, from that one on.
    InjectedFault(const char* call, unsigned nth, DWORD error, unsigned count = 1);
    ~InjectedFault();
    InjectedFault(const InjectedFault&) = delete;
    InjectedFault& operator=(const InjectedFault&) = delete;

    /// Whether the call was reached: a walk over all calls ends with the first fault that was not.
    [[nodiscard]] bool HasFired() const { return Times() > 0; }
    /// The calls that failed.
    [[nodiscard]] unsigned Times() const;

    struct State;

private:
    std::unique_ptr<State> state_;
};

/// Holds the system's clock at a time in UTC while it lives. Without effect where kOwnsTheSystem is
/// false.
class HeldClock {
public:
    explicit HeldClock(const SYSTEMTIME& time);
    ~HeldClock();
    HeldClock(const HeldClock&) = delete;
    HeldClock& operator=(const HeldClock&) = delete;
};

/// Sets the integrity level of the process, such as SECURITY_MANDATORY_LOW_RID; 0 takes it from the
/// environment again. Without effect where kOwnsTheSystem is false.
void SetIntegrityLevel(DWORD level);

/// Sets the title that this process was started with; an empty one is none. Without effect where
/// kOwnsTheSystem is false.
void SetStartTitle(const WideString& title);

enum class Programs { Ended, StillRunning };

/// Waits until the programs that this process started by ShellExecuteW have ended.
/// \param exitCode  May be null. Gets the code of the program that started last; stays as it was if
/// none
///                  was started since the last call, or (on Windows) if it ended before the call.
Programs WaitForStartedPrograms(DWORD timeoutMs, DWORD* exitCode);

/// How many programs this process has started by ShellExecuteW, ended ones included. On Windows
/// they are counted from the first call on, with all other programs.
unsigned CountStartedPrograms();

/// Sets a variable of this process's environment, for itself and the programs that it starts; null
/// removes it.
void SetEnvironment(const char* name, const char* value);

/// Makes `folder` (Windows' form, existing) the place of all lasting state: natively the profile
/// folder and the temporary folder below it, on Windows the temporary folder, with the current
/// user's registry root replaced by an empty one of this process's own.
void EnterProfile(const WideString& folder);
/// Takes back EnterProfile and removes that registry root.
void LeaveProfile();

/// Forgets what the layer knows of the profile folder, after QUVADA_HOME changed. No key, no file
/// and no mapping may be open.
void ResetProfile();

}  // namespace platform::testing
