#include "tests/end_to_end/processes.h"

#include <algorithm>
#include <filesystem>
#include <unistd.h>

#include "tests/end_to_end/host_test.h"

namespace end_to_end {

std::vector<std::string> ProcessesNaming(const std::string& text) {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const std::string id = entry.path().filename().string();
        if (id.find_first_not_of("0123456789") != id.npos || id == std::to_string(getpid())) {
            continue;
        }
        std::string line = ReadFile(entry.path() / "cmdline");
        std::replace(line.begin(), line.end(), '\0', ' ');
        if (line.find(text) != line.npos) found.push_back(line);
    }
    return found;
}

}  // namespace end_to_end
