// The converter's reader of job blocks, and the printing of what it has read.

#include <cstddef>
#include <cstdint>

#include "converter/explain.h"
#include "converter/job_block.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto job = converter::ReadJobBlock({data, size});
    if (job) (void)converter::Explain(*job, converter::ShowPasswords::Yes);
    return 0;
}
