#pragma once

#include <cstdint>
#include <functional>

#include "converter/result.h"
#include "platform/text.h"

namespace converter {

/// What the add-in's command line says. Lengths of the sheet are in tenths of a point.
struct CommandLine {
    platform::WideString firstText;  // the two texts at the start; both have no meaning here
    platform::WideString secondText;
    bool landscape = false;            // \l
    bool background = false;           // \b
    bool links = false;                // \h
    bool runApp = false;               // \r
    bool hidden = false;               // \hi
    std::int32_t width = 0;            // \iw, CSS pixels
    std::int32_t height = 0;           // \ih, CSS pixels
    std::int32_t loadDelayMs = 0;      // \ld
    std::int32_t pdfVersion = 0;       // \is, 0x10000 + minor version
    std::int32_t compression = 0;      // \ic, 0 to 2
    std::int32_t pageWidth = 0;        // \pw
    std::int32_t pageHeight = 0;       // \ph
    std::int32_t marginTop = 0;        // \mt
    std::int32_t marginBottom = 0;     // \mb
    std::int32_t marginLeft = 0;       // \ml
    std::int32_t marginRight = 0;      // \mr
    platform::WideString storageFile;  // \bp; empty if the job is in shared memory
    platform::WideString sharedName;   // \sm; empty if the job is in a file
    platform::WideString extra;        // \ce; has no meaning here
};

/// The text behind the program's name: behind its closing quote, or behind the first blank.
platform::WideView SkipProgramName(platform::WideView line);

/// Reads the text of the arguments. The two quoted texts come first; the switches follow in any
/// order, each at most once and every one with a value exactly once. `\bp` or `\sm` comes behind
/// the others, since their values are not quoted: a value of `\bp` is the whole rest of the line if
/// `exists` knows such a file, else it ends before ` \ce `. Blanks between the pieces don't count.
/// \return what is wrong with the line: an unknown, repeated or missing switch, a value that is
///         missing, no number or out of its range.
Result<CommandLine> ParseCommandLine(
    platform::WideView text, const std::function<bool(const platform::WideString&)>& exists);

}  // namespace converter
