#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "converter/command_line.h"
#include "converter/source_document.h"

namespace converter {

/// The sheet in points, turned for landscape.
struct Sheet {
    double width = 0;
    double height = 0;
};
Sheet SheetOf(const CommandLine& line);

/// What a piece of work may use of the world around it.
struct Surroundings {
    const std::atomic<bool>* cancel = nullptr;         // borrowed; may be null
    std::function<void(const std::string&)> note;      // what the user should know
    std::function<void(const std::string&)> progress;  // what is being done
};

/// Loads the document in a browser of its own and prints it at the target width.
/// \return the bytes of the PDF as the browser made it, or why there is none.
Result<std::string> PrintPage(SourceDocument document, const CommandLine& line,
                              const Surroundings& around);

}  // namespace converter
