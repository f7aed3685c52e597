#include <cstdio>
#include <exception>
#include <iostream>

#include "host/options.h"
#include "host/run.h"
#include "host/system.h"

int main(int count, char** arguments) {
    try {
        host::Options options;
        const auto ended = host::ParseOptions(host::ProgramArguments(count, arguments), options,
                                              std::cout, std::cerr);
        return static_cast<int>(ended ? *ended : host::Run(options));
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "quvada-host: %s\n", failure.what());
        return static_cast<int>(host::ExitCode::Usage);
    }
}
