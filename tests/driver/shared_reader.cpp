#include "tests/driver/shared_reader.h"

#include "platform/memory.h"

namespace driver_test {

std::string ReadShared(std::size_t bytes) {
    const platform::MappingHandle mapping(
        OpenFileMappingW(FILE_MAP_READ, FALSE, TEXT("QVD:IEP:HTMLData")));
    if (!mapping) return {};
    const platform::MappedView view(MapViewOfFile(mapping.Get(), FILE_MAP_READ, 0, 0, bytes));
    if (!view) return {};
    return {static_cast<const char*>(view.Get()), bytes};
}

}  // namespace driver_test
