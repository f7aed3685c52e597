#pragma once

#include "chromium/result.h"

namespace converter {

using chromium::Done;
using chromium::Error;
using chromium::Outcome;
using chromium::Result;

/// How the program ends; scripts may rely on the numbers.
enum class ExitCode {
    Done = 0,
    Failed = 1,          // something else, such as a lack of memory
    BadCommandLine = 2,  // also an option of our own that is unknown
    BadJob = 3,          // the block is missing, unreadable or malformed
    NoOutputName = 4,    // nobody gave the PDF a name
    PageFailed = 5,      // no browser, or the page can't be loaded or printed
    PdfFailed = 6,       // the PDF can't be finished, protected as asked, or written
    AppFailed = 7,       // the PDF is in its place, but the application can't be started
    Cancelled = 8,       // ended by a signal
};

}  // namespace converter
