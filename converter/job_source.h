#pragma once

#include <cstdint>
#include <vector>

#include "converter/command_line.h"

namespace converter {

/// The bytes of the job that the line names: of the storage file, whole, or of the shared memory
/// object, as many as the block says it has, since an object is rounded up to whole pages. What
/// they hold is not looked at.
/// \return why there is no such block; also when its length and the number of bytes disagree.
Result<std::vector<std::uint8_t>> FetchJobBlock(const CommandLine& line);

/// The bytes of a storage file.
Result<std::vector<std::uint8_t>> ReadStorageFile(const platform::WideString& path);

}  // namespace converter
