// What a new tab costs: the objects that the browser makes of the add-in, up to a toolbar that is
// laid out, and their end.

#include <benchmark/benchmark.h>

#include "host/addin_list.h"
#include "host/system.h"
#include "host/tab.h"
#include "platform/com_library.h"

namespace {

void OpenATab(benchmark::State& state) {
    if (FAILED(CoInitialize(nullptr))) return state.SkipWithError("no COM");
    std::string error;
    {
        host::AddinList addins;
        if (!addins.TakeModule(host::ProgramFolder() / "QVDIEaddin.x64.dll", error)) {
            state.SkipWithError(error.c_str());
        }
        for (auto _ : state) {
            host::Tab tab(addins);
            if (!tab.Open(nullptr, error)) state.SkipWithError(error.c_str());
        }
    }
    CoUninitialize();
}
BENCHMARK(OpenATab)->Unit(benchmark::kMicrosecond)->Iterations(10)->Repetitions(3);

}  // namespace
