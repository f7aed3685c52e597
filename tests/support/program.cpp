#include "tests/support/program.h"

namespace test_support {

Finished RunProgram(const std::filesystem::path& path, const std::vector<std::string>& arguments) {
    const std::unique_ptr<Program> program = Program::Start(path, arguments);
    if (!program) return {-1, "cannot start " + path.string()};
    const int code = program->Wait();
    return {code, program->Output()};
}

}  // namespace test_support
