/// A program that tests start. It writes to the file QUVADA_TEST_REPORT, line by line, its command
/// line and the error code of opening the file QUVADA_TEST_OPEN. Its exit code is 7.

#include <cstdlib>
#include <string>

#include "platform/files.h"
#include "platform/shell.h"
#include "platform/text.h"
#include "tests/support/test_profile.h"

int main() {
    using namespace platform;
    const WideString line = GetCommandLineW();
    const char* target = std::getenv("QUVADA_TEST_OPEN");
    DWORD error = ERROR_SUCCESS;
    if (target) {
        const FileHandle file(CreateFileW(FromUtf8(target).c_str(), GENERIC_READ, FILE_SHARE_READ,
                                          nullptr, OPEN_EXISTING, 0, nullptr));
        if (!file) error = GetLastError();
    }
    const char* report = std::getenv("QUVADA_TEST_REPORT");
    if (!report) return 1;
    const std::string text = ToUtf8(line) + "\n" + std::to_string(error) + "\n";
    return test_support::WriteWholeFile(FromUtf8(report), text) ? 7 : 2;
}
