#include <cstdlib>

#include "browser/script_runner.h"
#include "fuzz/exact_text.h"
#include "fuzz/own_registry.h"

/// Any text is a script that is carried out or refused, for registering and for removing, and one
/// without variables expands to itself.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::OwnRegistry registry;
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
