// The converter's reader of its command line. The first byte says whether a path counts as a file.

#include <cstddef>
#include <cstdint>

#include "converter/command_line.h"
#include "converter/explain.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const bool exists = (data[0] & 1) != 0;
    const platform::WideString text =
        platform::FromUtf8({reinterpret_cast<const char*>(data + 1), size - 1});
    const auto line = converter::ParseCommandLine(
        converter::SkipProgramName(text), [&](const platform::WideString&) { return exists; });
    if (line) (void)converter::Explain(*line);
    return 0;
}
