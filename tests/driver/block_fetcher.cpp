/// The second process of the driver's tests, in the place of the converter: fetches the job's block
/// by the way that its command line tells, writes it to the file that QUVADA_FETCHED_BLOCK names,
/// and ends with 0 if it found one.

#include <cstdlib>
#include <cstring>

#include "platform/shell.h"
#include "tests/driver/shared_reader.h"
#include "tests/support/test_profile.h"

namespace {

std::string FetchBlock(platform::WideView line) {
    constexpr platform::WideView kStored = TEXT("\\bp ");
    const std::size_t stored = line.find(kStored);
    if (stored != platform::WideView::npos) {
        const platform::WideView path = line.substr(stored + kStored.size());
        return test_support::ReadWholeFile(platform::WideString(path.substr(0, path.size() - 1)));
    }
    if (line.find(TEXT("\\sm QVD:IEP:HTMLData ")) == platform::WideView::npos) return {};
    const std::string start = driver_test::ReadShared(4);
    if (start.empty()) return {};
    DWORD size = 0;
    std::memcpy(&size, start.data(), sizeof size);
    return driver_test::ReadShared(size);
}

}  // namespace

int main() {
    const std::string block = FetchBlock(GetCommandLineW());
    const char* const target = std::getenv("QUVADA_FETCHED_BLOCK");
    if (block.empty() || !target) return 1;
    return test_support::WriteWholeFile(platform::FromUtf8(target), block) ? 0 : 2;
}
