#include <cstdlib>
#include <filesystem>
#include <string>

#include "browser/script_runner.h"
#include "fuzz/exact_text.h"

namespace {

/// A registry of this process's own, in memory if there is a place for files there. It goes with
/// the process.
class OwnRegistry {
public:
    OwnRegistry() {
        std::error_code none;
        const std::filesystem::path memory = "/dev/shm";
        const bool hasMemory = std::filesystem::is_directory(memory, none);
        std::string name =
            (hasMemory ? memory : std::filesystem::temp_directory_path()) / "quvada-fuzz-XXXXXX";
        if (!mkdtemp(name.data())) std::abort();
        folder_ = name;
        setenv("QUVADA_HOME", name.c_str(), 1);
    }
    ~OwnRegistry() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

private:
    std::filesystem::path folder_;
};

}  // namespace

/// Any text is a script that is carried out or refused, for registering and for removing, and one
/// without variables expands to itself.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const OwnRegistry registry;
    const auto exact = fuzz::ExactText(data, size);
    const AUX::WStringView text(exact.get());
    const ScriptVariable variables[] = {{TEXT("Module"), TEXT("C:\\a''b.dll")}};
    for (const ScriptScope scope : {ScriptScope::Machine, ScriptScope::User}) {
        AUX::WString expanded;
        if (FAILED(ExpandScript(text, variables, scope, expanded))) continue;
        if (scope == ScriptScope::Machine && text.find(TEXT('%')) == AUX::WStringView::npos &&
            !(AUX::WStringView(expanded) == text)) {
            std::abort();
        }
        // Each key that is written takes its time; what is long repeats what is short.
        constexpr std::uint32_t kWritten = 200;
        if (expanded.Length() <= kWritten) {
            (void)ScriptRunner(expanded).Run(ScriptRunner::Mode::Register);
        }
        (void)ScriptRunner(expanded).Run(ScriptRunner::Mode::Remove);
    }
    return 0;
}
