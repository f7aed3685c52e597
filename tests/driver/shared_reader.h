#pragma once

#include <cstddef>
#include <string>

namespace driver_test {

/// The first bytes of the shared memory object, opened by its name; empty if there is none.
std::string ReadShared(std::size_t bytes);

}  // namespace driver_test
